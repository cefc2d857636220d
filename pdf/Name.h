#pragma once

#include <array>
#include <string>
#include <string_view>

#include "JobParser/Export.h"
#include "pdf/ByteString.h"

namespace Pdf
{
namespace Detail
{

constexpr std::array<bool, 256> flagsOf(std::string_view bytes, bool flag)
{
    std::array<bool, 256> flags{};
    flags.fill(!flag);
    for (const char byte : bytes)
        flags[static_cast<unsigned char>(byte)] = flag;
    return flags;
}

} // namespace Detail

/// Which bytes a name holds as they are; the others end it. The number sign is one of them.
inline constexpr std::array<bool, 256> isNameCharacter =
    Detail::flagsOf(std::string_view("\0\t\n\f\r %()/<>[]{}", 16), false);

/// A PDF name, decoded and without its solidus.
struct JOBPARSER_EXPORT Name {
    /// The name as PDF text, as in `/A#20B`. A number sign goes out as it is.
    std::string serialize() const;

    bool operator==(const Name& other) const { return text == other.text; }
    bool operator==(std::string_view other) const { return text == other; }

    ByteString text; ///< Any bytes.
};

} // namespace Pdf
