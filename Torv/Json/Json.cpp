#include "Torv/Json/Json.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <simdjson.h>
#include <utility>

#include "Torv/Encoding.h"
#include "Torv/GenericException.h"
#include "Torv/Json/Reader.h"

namespace Torv::Json
{
namespace
{

constexpr std::uint64_t ofEachByte = 0x0101010101010101U;
constexpr std::uint64_t highBits = ofEachByte * 0x80;

[[noreturn]] void rejectText(const char* error)
{
    throw GenericException(std::string("Json::parse(): The text is no JSON | error=") + error);
}

/// Whether eight bytes are all ASCII that stands for itself in a JSON string. A borrow of the subtractions
/// begins only at a byte that is found anyway.
bool isPlain(std::uint64_t word)
{
    const std::uint64_t control = word - ofEachByte * 0x20;
    const std::uint64_t quote = (word ^ ofEachByte * '"') - ofEachByte;
    const std::uint64_t backslash = (word ^ ofEachByte * '\\') - ofEachByte;
    return ((word | control | quote | backslash) & highBits) == 0;
}

bool isPlain(char character)
{
    const auto byte = static_cast<std::uint8_t>(character);
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

bool isBeyondAscii(char character)
{
    return static_cast<std::uint8_t>(character) >= 0x80;
}

std::size_t plainSize(std::string_view text)
{
    std::size_t size = 0;
    for (std::uint64_t word = 0; text.size() - size >= sizeof word; size += sizeof word) {
        std::memcpy(&word, text.data() + size, sizeof word);
        if (!isPlain(word))
            break;
    }
    while (size < text.size() && isPlain(text[size]))
        ++size;
    return size;
}

void appendEscape(std::string& out, char byte)
{
    switch (byte) {
    case '"': out += "\\\""; break;
    case '\\': out += "\\\\"; break;
    case '\b': out += "\\b"; break;
    case '\f': out += "\\f"; break;
    case '\n': out += "\\n"; break;
    case '\r': out += "\\r"; break;
    case '\t': out += "\\t"; break;
    default:
        const auto value = static_cast<std::uint8_t>(byte);
        out += "\\u00";
        out += Encoding::hexEncode({&value, 1});
    }
}

} // namespace

Variant parse(std::string text)
{
    const std::size_t size = text.size();
    text.reserve(size + simdjson::SIMDJSON_PADDING);
    text.append(simdjson::SIMDJSON_PADDING, '\0');

    // The document holds all of its strings, so the text may go.
    const auto document = std::make_shared<simdjson::dom::document>();
    if (const char* error = readDocument(*document, std::string_view(text).substr(0, size)))
        rejectText(error);
    return Variant::fromPlace(document, std::bit_cast<Variant::Place>(document->root()));
}

std::string _encodeString(std::string_view bytes)
{
    std::string result;
    appendString(result, bytes);
    return result;
}

void appendString(std::string& out, std::string_view bytes)
{
    out += '"';
    while (!bytes.empty()) {
        const std::size_t plain = plainSize(bytes);
        out += bytes.substr(0, plain);
        bytes.remove_prefix(plain);
        if (bytes.empty())
            break;
        // No UTF-8 sequence reaches into a stretch of ASCII or out of it.
        const auto end = std::find_if_not(bytes.begin(), bytes.end(), isBeyondAscii);
        const auto size = static_cast<std::size_t>(end - bytes.begin());
        if (size != 0)
            Encoding::appendAsUtf8(out, bytes.substr(0, size));
        else
            appendEscape(out, bytes.front());
        bytes.remove_prefix(std::max<std::size_t>(size, 1));
    }
    out += '"';
}

} // namespace Torv::Json
