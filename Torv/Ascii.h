#pragma once

#include <cstdint>

/// Byte classes of ASCII. Unlike <cctype> they follow no locale and take any byte.
namespace Torv::Ascii
{

constexpr bool isUpper(std::uint8_t byte)
{
    return byte >= 'A' && byte <= 'Z';
}

constexpr bool isLower(std::uint8_t byte)
{
    return byte >= 'a' && byte <= 'z';
}

constexpr bool isLetter(std::uint8_t byte)
{
    return isUpper(byte) || isLower(byte);
}

constexpr bool isDigit(std::uint8_t byte)
{
    return byte >= '0' && byte <= '9';
}

/// Bytes 9 to 13 and blank.
constexpr bool isSpace(std::uint8_t byte)
{
    return (byte >= 9 && byte <= 13) || byte == ' ';
}

constexpr std::uint8_t toUpper(std::uint8_t byte)
{
    return isLower(byte) ? static_cast<std::uint8_t>(byte - 32) : byte;
}

constexpr std::uint8_t toLower(std::uint8_t byte)
{
    return isUpper(byte) ? static_cast<std::uint8_t>(byte + 32) : byte;
}

} // namespace Torv::Ascii
