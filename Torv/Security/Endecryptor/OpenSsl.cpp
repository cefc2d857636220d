#include "Torv/Security/Endecryptor/OpenSsl.h"

#include <dlfcn.h>
#include <openssl/opensslv.h>
#include <string>

#include "Torv/GenericException.h"

namespace Torv::Security::Endecryptor
{
namespace
{

[[noreturn]] void throwCannotLoad()
{
    const char* const reason = dlerror();
    throw GenericException(std::string("Cannot load the cipher library | error=") +
                           (reason != nullptr ? reason : "unknown"));
}

template <typename Function> void find(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr)
        throwCannotLoad();
}

OpenSsl load()
{
    // The version whose headers we were built with; another one may have other functions.
    const std::string name = "libcrypto.so." + std::to_string(OPENSSL_SHLIB_VERSION);
    void* const library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throwCannotLoad();
    OpenSsl functions{};
    find(library, "EVP_aes_128_cbc", functions.aes128Cbc);
    find(library, "EVP_aes_256_cbc", functions.aes256Cbc);
    find(library, "EVP_aes_128_ctr", functions.aes128Ctr);
    find(library, "EVP_aes_256_ctr", functions.aes256Ctr);
    find(library, "EVP_CIPHER_CTX_new", functions.newContext);
    find(library, "EVP_CIPHER_CTX_free", functions.freeContext);
    find(library, "EVP_CIPHER_CTX_set_padding", functions.setPadding);
    find(library, "EVP_DecryptInit_ex", functions.decryptInit);
    find(library, "EVP_DecryptUpdate", functions.decryptUpdate);
    find(library, "EVP_DecryptFinal_ex", functions.decryptFinal);
    find(library, "ERR_clear_error", functions.clearErrors);
    return functions;
}

} // namespace

const OpenSsl& openSsl()
{
    static const OpenSsl functions = load();
    return functions;
}

} // namespace Torv::Security::Endecryptor
