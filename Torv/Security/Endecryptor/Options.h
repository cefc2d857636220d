#pragma once

#include <cstdint>
#include <string>

#include "Torv/Export.h"

namespace Torv::Security::Endecryptor
{

/// Ciphers of encrypted files. The numbers are told to worker processes.
enum class Algorithm : std::int32_t { Aes128Cbc = 1, Aes256Cbc = 2, Aes128Ctr = 3, Aes256Ctr = 4 };

/// How a file is encrypted.
struct TORV_EXPORT Options {
    Algorithm algorithm = Algorithm::Aes128Cbc;
    std::string key; ///< Raw bytes.
    std::string iv;  ///< Raw bytes.

    /// An object with "algorithm", "key" and "iv", the last two in base 64.
    std::string toJson() const;
};

} // namespace Torv::Security::Endecryptor
