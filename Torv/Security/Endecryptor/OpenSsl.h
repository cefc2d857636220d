#pragma once

#include <openssl/evp.h>

namespace Torv::Security::Endecryptor
{

/// The functions of OpenSSL that decrypting needs.
///
/// The library is loaded at the first call of openSsl and stays: hardly any process decrypts, and all would
/// pay for loading it.
struct OpenSsl {
    decltype(&EVP_aes_128_cbc) aes128Cbc;
    decltype(&EVP_aes_256_cbc) aes256Cbc;
    decltype(&EVP_aes_128_ctr) aes128Ctr;
    decltype(&EVP_aes_256_ctr) aes256Ctr;
    decltype(&EVP_CIPHER_CTX_new) newContext;
    decltype(&EVP_CIPHER_CTX_free) freeContext;
    decltype(&EVP_CIPHER_CTX_set_padding) setPadding;
    decltype(&EVP_DecryptInit_ex) decryptInit;
    decltype(&EVP_DecryptUpdate) decryptUpdate;
    decltype(&EVP_DecryptFinal_ex) decryptFinal;
    void (*clearErrors)();
};

/// Any thread may call it. Throws GenericException if the library cannot be loaded, at each call anew.
const OpenSsl& openSsl();

} // namespace Torv::Security::Endecryptor
