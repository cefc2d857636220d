#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Torv/Export.h"
#include "Torv/Security/Endecryptor/Options.h"

namespace Torv::Security::Endecryptor
{

/// Decrypts any stretch of a file on its own, as `openssl enc -K -iv` wrote it: the bytes of the cipher and
/// nothing in front of them.
///
/// Never changes, so that any thread may use it.
class TORV_EXPORT Decryptor
{
public:
    static constexpr std::size_t blockSize = 16; ///< Of all ciphers, in bytes.

    /// A stretch of the encrypted file.
    struct Stretch {
        std::int64_t offset = 0;                 ///< In the file; a multiple of blockSize.
        std::span<const std::uint8_t> bytes;     ///< Padded ciphers: whole blocks.
        std::span<const std::uint8_t> precedent; ///< The block before; empty at offset 0 and if not isPadded.
        bool isLast = false;                     ///< It ends with the file.
    };

    /// Throws GenericException for an unknown algorithm and for a key or a vector of the wrong length.
    explicit Decryptor(Options options);
    ~Decryptor();

    /// Whether the cipher is CBC: the file is whole blocks, the last of which holds padding, so that there
    /// are 1 to 16 bytes of data less.
    bool isPadded() const;

    /// Writes the data of the stretch to `out`, which has room for stretch.bytes.size(), and gives their
    /// number: less where padding is cut off, otherwise all.
    ///
    /// Throws GenericException if the padding is wrong, which most wrong keys show themselves by, if a padded
    /// stretch is no whole blocks, and if OpenSSL cannot be loaded or refuses.
    std::size_t decrypt(const Stretch& stretch, std::uint8_t* out) const;

private:
    Options m_options;
};

} // namespace Torv::Security::Endecryptor
