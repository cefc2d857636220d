#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/Torv/TemporaryDirectory.h"

#include "Torv/Security/Endecryptor/Options.h"

/// A file that the program openssl encrypted, with the options that decrypt it. It goes when the object does.
class EncryptedFile
{
public:
    using Algorithm = Torv::Security::Endecryptor::Algorithm;

    EncryptedFile(Algorithm algorithm, std::string_view bytes)
    {
        const std::string plain = m_directory.file("plain", std::string(bytes));
        const bool isLong = algorithm == Algorithm::Aes256Cbc || algorithm == Algorithm::Aes256Ctr;
        const std::string keyHex = isLong ? keyHex128 + keyHex128 : keyHex128;
        const std::string command = "openssl enc -" + nameOf(algorithm) + " -K " + keyHex + " -iv " + ivHex +
                                    " -in '" + plain + "' -out '" + path() + "'";
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("This failed: " + command);
        options.algorithm = algorithm;
        options.key = isLong ? key128 + key128 : key128;
        options.iv = iv;
    }

    static std::string nameOf(Algorithm algorithm)
    {
        switch (algorithm) {
        case Algorithm::Aes128Cbc: return "aes-128-cbc";
        case Algorithm::Aes256Cbc: return "aes-256-cbc";
        case Algorithm::Aes128Ctr: return "aes-128-ctr";
        case Algorithm::Aes256Ctr: return "aes-256-ctr";
        }
        return {};
    }

    std::string path() const { return m_directory.path("encrypted"); }

    Torv::Security::Endecryptor::Options options;

private:
    inline static const std::string key128 = "0123456789abcdef";
    inline static const std::string keyHex128 = "30313233343536373839616263646566";
    inline static const std::string iv = std::string(14, '\xFF') + "\xFE\xFD";
    inline static const std::string ivHex = "fffffffffffffffffffffffffffffefd";

    Torv::Test::TemporaryDirectory m_directory;
};

/// Bytes without a pattern that views or blocks could repeat.
inline std::string numberedBytes(std::size_t size)
{
    std::string bytes(size, '\0');
    unsigned state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}
