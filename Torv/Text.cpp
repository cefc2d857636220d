#include "Torv/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>

#include "Torv/Ascii.h"

namespace Torv
{
namespace
{

constexpr std::uint32_t replacementCharacter = 0xFFFD;
constexpr std::uint32_t firstHighSurrogate = 0xD800;
constexpr std::uint32_t firstLowSurrogate = 0xDC00;
constexpr std::uint32_t endOfSurrogates = 0xE000;
constexpr std::uint32_t firstOfPairs = 0x10000;

std::uint8_t byteOf(char character)
{
    return static_cast<std::uint8_t>(character);
}

bool equalIgnoringCase(char a, char b)
{
    return a == b || Ascii::toLower(byteOf(a)) == Ascii::toLower(byteOf(b));
}

template <typename Convert> std::string mapped(std::string_view text, Convert convert)
{
    std::string result(text);
    for (char& character : result)
        character = static_cast<char>(convert(byteOf(character)));
    return result;
}

bool isHighSurrogate(std::uint32_t unit)
{
    return unit >= firstHighSurrogate && unit < firstLowSurrogate;
}

bool isLowSurrogate(std::uint32_t unit)
{
    return unit >= firstLowSurrogate && unit < endOfSurrogates;
}

/// Takes one character off the front of a text that is not empty.
std::uint32_t takeCharacter(std::u16string_view& text)
{
    const std::uint32_t unit = text.front();
    text.remove_prefix(1);
    if (isHighSurrogate(unit) && !text.empty() && isLowSurrogate(text.front())) {
        const std::uint32_t low = text.front();
        text.remove_prefix(1);
        return firstOfPairs + ((unit - firstHighSurrogate) << 10) + (low - firstLowSurrogate);
    }
    return isHighSurrogate(unit) || isLowSurrogate(unit) ? replacementCharacter : unit;
}

void appendByte(std::string& out, std::uint32_t byte)
{
    out += static_cast<char>(static_cast<std::uint8_t>(byte));
}

void appendContinuation(std::string& out, std::uint32_t bits)
{
    appendByte(out, 0x80 | (bits & 0x3F));
}

void appendCharacter(std::string& out, std::uint32_t character)
{
    if (character < 0x80) {
        appendByte(out, character);
    } else if (character < 0x800) {
        appendByte(out, 0xC0 | character >> 6);
        appendContinuation(out, character);
    } else if (character < firstOfPairs) {
        appendByte(out, 0xE0 | character >> 12);
        appendContinuation(out, character >> 6);
        appendContinuation(out, character);
    } else {
        appendByte(out, 0xF0 | character >> 18);
        appendContinuation(out, character >> 12);
        appendContinuation(out, character >> 6);
        appendContinuation(out, character);
    }
}

} // namespace

bool iequals(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && istartsWith(a, b);
}

bool istartsWith(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(), equalIgnoringCase);
}

bool icontains(std::string_view text, std::string_view word)
{
    return word.empty() ||
           std::search(text.begin(), text.end(), word.begin(), word.end(), equalIgnoringCase) != text.end();
}

std::string toLower(std::string_view text)
{
    return mapped(text, Ascii::toLower);
}

std::string toUpper(std::string_view text)
{
    return mapped(text, Ascii::toUpper);
}

std::string_view trim(std::string_view text)
{
    text = trimLeft(text);
    while (!text.empty() && Ascii::isSpace(byteOf(text.back())))
        text.remove_suffix(1);
    return text;
}

std::string_view trimLeft(std::string_view text)
{
    while (!text.empty() && Ascii::isSpace(byteOf(text.front())))
        text.remove_prefix(1);
    return text;
}

std::string narrow(std::u16string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty())
        appendCharacter(result, takeCharacter(text));
    return result;
}

std::vector<std::string> explode(std::string_view text, std::string_view delimiters, std::size_t limit,
                                 bool dropEmpty)
{
    std::vector<std::string> parts;
    while (parts.size() < limit) {
        if (dropEmpty) {
            text.remove_prefix(std::min(text.find_first_not_of(delimiters), text.size()));
            if (text.empty())
                break;
        }
        const bool isLast = parts.size() + 1 == limit;
        const std::size_t size = isLast ? text.npos : text.find_first_of(delimiters);
        parts.emplace_back(text.substr(0, size));
        if (size == text.npos)
            break;
        text.remove_prefix(size + 1);
    }
    return parts;
}

bool tryParseInt(std::string_view text, int& value)
{
    text = trim(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return false;
    }
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end)
        return false;
    value = number;
    return true;
}

} // namespace Torv
