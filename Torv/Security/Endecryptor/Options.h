#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Torv/Export.h"

namespace Torv
{
class Variant;
}

namespace Torv::Security::Endecryptor
{

/// Ciphers of encrypted files. The numbers are told to worker processes.
enum class Algorithm : std::int32_t { Aes128Cbc = 1, Aes256Cbc = 2, Aes128Ctr = 3, Aes256Ctr = 4 };

/// The cipher of a name as OpenSSL writes it, `aes-128-cbc`, in any case. Nothing for any other name.
TORV_EXPORT std::optional<Algorithm> algorithmByName(std::string_view name);

/// How a file is encrypted.
struct TORV_EXPORT Options {
    Algorithm algorithm = Algorithm::Aes128Cbc;
    std::string key; ///< Raw bytes.
    std::string iv;  ///< Raw bytes.

    /// An object with "algorithm", "key" and "iv", the last two in base 64.
    std::string toJson() const;

    /// Reads what toJson wrote. Throws VariantInvalidOperationException for a missing key or a value of
    /// another kind; whether the values make sense is told by Decryptor.
    static Options fromJson(const Variant& object);
};

} // namespace Torv::Security::Endecryptor
