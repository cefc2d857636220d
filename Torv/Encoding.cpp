#include "Torv/Encoding.h"

#include <algorithm>
#include <boost/beast/core/detail/base64.hpp>
#include <cstddef>

#include "Torv/Ascii.h"

namespace Torv::Encoding
{
namespace
{

namespace Base64 = boost::beast::detail::base64;

constexpr std::string_view hexDigits = "0123456789abcdef";

// The characters U+EF80 to U+EFFF stand for the bytes 80 to FF. In UTF-8 they are EE BE or EE BF and a byte
// with six more bits.
constexpr std::uint8_t standInFirst = 0xEE;
constexpr std::uint8_t standInLow = 0xBE;
constexpr std::uint8_t standInHigh = 0xBF;
constexpr std::size_t standInSize = 3;

std::uint8_t byteAt(std::string_view text, std::size_t index)
{
    return static_cast<std::uint8_t>(text[index]);
}

bool isBetween(std::uint8_t byte, std::uint8_t first, std::uint8_t last)
{
    return byte >= first && byte <= last;
}

/// Leading bytes and what may follow them directly; every later byte is 80 to BF. This leaves out overlong
/// forms, surrogates and what lies above U+10FFFF.
struct SequenceForm {
    std::uint8_t firstLead;
    std::uint8_t lastLead;
    std::size_t size;
    std::uint8_t firstSecond;
    std::uint8_t lastSecond;
};
constexpr SequenceForm sequenceForms[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool hasForm(std::string_view text, const SequenceForm& form)
{
    if (text.size() < form.size || !isBetween(byteAt(text, 1), form.firstSecond, form.lastSecond))
        return false;
    for (std::size_t index = 2; index < form.size; ++index) {
        if (!isBetween(byteAt(text, index), 0x80, 0xBF))
            return false;
    }
    return true;
}

/// Bytes of the well-formed sequence that a text begins with; 0 if there is none. The text is not empty.
std::size_t sequenceSize(std::string_view text)
{
    const std::uint8_t lead = byteAt(text, 0);
    if (lead < 0x80)
        return 1;
    for (const SequenceForm& form : sequenceForms) {
        if (isBetween(lead, form.firstLead, form.lastLead))
            return hasForm(text, form) ? form.size : 0;
    }
    return 0;
}

bool isStandIn(std::string_view text)
{
    return text.size() >= standInSize && byteAt(text, 0) == standInFirst &&
           isBetween(byteAt(text, 1), standInLow, standInHigh);
}

void appendStandIn(std::string& out, char byte)
{
    const auto value = static_cast<std::uint8_t>(byte);
    out += static_cast<char>(standInFirst);
    out += static_cast<char>(value < 0xC0 ? standInLow : standInHigh);
    out += static_cast<char>(static_cast<std::uint8_t>(0x80 | (value & 0x3F)));
}

char byteOfStandIn(std::string_view text)
{
    const int upperBits = byteAt(text, 1) == standInLow ? 0x80 : 0xC0;
    return static_cast<char>(static_cast<std::uint8_t>(upperBits | (byteAt(text, 2) & 0x3F)));
}

bool isBase64(std::uint8_t byte)
{
    return Ascii::isLetter(byte) || Ascii::isDigit(byte) || byte == '+' || byte == '/';
}

/// The digits of a base 64 text up to its end, its padding or what is no digit.
std::string base64Digits(std::string_view text)
{
    std::string digits;
    digits.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<std::uint8_t>(character);
        if (isBase64(byte))
            digits += character;
        else if (!Ascii::isSpace(byte))
            break;
    }
    return digits;
}

} // namespace

std::string base64Encode(std::string_view bytes)
{
    std::string text(Base64::encoded_size(bytes.size()), '\0');
    text.resize(Base64::encode(text.data(), bytes.data(), bytes.size()));
    return text;
}

std::string base64Decode(std::string_view text)
{
    constexpr std::size_t digitsInGroup = 4;
    constexpr std::size_t bytesInGroup = 3;

    std::string digits = base64Digits(text);
    // Each digit has three quarters of a byte.
    const std::size_t size = digits.size() / digitsInGroup * bytesInGroup +
                             digits.size() % digitsInGroup * bytesInGroup / digitsInGroup;
    // The decoder writes whole groups, so it gets whole groups.
    while (digits.size() % digitsInGroup != 0)
        digits += 'A';
    std::string bytes(digits.size() / digitsInGroup * bytesInGroup, '\0');
    Base64::decode(bytes.data(), digits.data(), digits.size());
    bytes.resize(size);
    return bytes;
}

std::string hexEncode(std::span<const std::uint8_t> bytes)
{
    constexpr unsigned lowDigit = 0xF;

    std::string text;
    text.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        text += hexDigits[static_cast<unsigned>(byte) >> 4];
        text += hexDigits[byte & lowDigit];
    }
    return text;
}

void appendAsUtf8(std::string& out, std::string_view bytes)
{
    std::size_t runSize = 0;
    while (runSize < bytes.size()) {
        const std::string_view rest = bytes.substr(runSize);
        const std::size_t size = sequenceSize(rest);
        if (size != 0 && !isStandIn(rest)) {
            runSize += size;
            continue;
        }
        out += bytes.substr(0, runSize);
        for (const char byte : rest.substr(0, size == 0 ? 1 : size))
            appendStandIn(out, byte);
        bytes = rest.substr(size == 0 ? 1 : size);
        runSize = 0;
    }
    out += bytes;
}

std::string bytesFromUtf8(std::string_view text)
{
    std::size_t plain = text.find(static_cast<char>(standInFirst));
    if (plain == text.npos)
        return std::string(text);

    std::string bytes;
    bytes.reserve(text.size());
    for (; plain != text.npos; plain = text.find(static_cast<char>(standInFirst))) {
        bytes += text.substr(0, plain);
        text.remove_prefix(plain);
        const bool standsIn = isStandIn(text);
        bytes += standsIn ? byteOfStandIn(text) : text.front();
        text.remove_prefix(standsIn ? standInSize : 1);
    }
    bytes += text;
    return bytes;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t size = sequenceSize(text);
        if (size == 0)
            return false;
        text.remove_prefix(size);
    }
    return true;
}

} // namespace Torv::Encoding
