#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

#include "Torv/Export.h"
#include "Torv/Variant.h"

namespace Torv::Json
{

/// The deepest nesting of arrays and objects that parse accepts.
inline constexpr int maxDepth = 64;

/// Reads a JSON text. Throws GenericException for text that is no JSON or nests deeper than maxDepth.
TORV_EXPORT Variant parse(std::string text);

/// The JSON form of a string of any bytes, quotation marks included. Always valid UTF-8; Variant::toString
/// gives the same bytes back.
TORV_EXPORT std::string _encodeString(std::string_view bytes);

/// Appends what _encodeString gives.
TORV_EXPORT void appendString(std::string& out, std::string_view bytes);

/// Appends the same without the quotation marks, for a string that comes in pieces. No UTF-8 sequence may
/// reach over the end of one.
TORV_EXPORT void appendCharacters(std::string& out, std::string_view bytes);

/// Appends the decimal digits of a number.
template <std::integral T> void appendNumber(std::string& out, T number)
{
    std::array<char, 20> digits; // -9223372036854775808 and 18446744073709551615 have 20.
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

} // namespace Torv::Json
