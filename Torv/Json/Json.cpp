#include "Torv/Json/Json.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <simdjson.h>
#include <utility>

#include "Torv/EightBytes.h"
#include "Torv/Encoding.h"
#include "Torv/GenericException.h"
#include "Torv/Json/Reader.h"

namespace Torv::Json
{
namespace
{

[[noreturn]] void rejectText(const char* error)
{
    throw GenericException(std::string("Json::parse(): The text is no JSON | error=") + error);
}

/// Marks what does not stand for itself in a JSON string.
std::uint64_t markSpecial(std::uint64_t word)
{
    const std::uint64_t control = word - EightBytes::filledWith(0x20);
    const std::uint64_t quote = (word ^ EightBytes::filledWith('"')) - EightBytes::filledWith(1);
    const std::uint64_t backslash = (word ^ EightBytes::filledWith('\\')) - EightBytes::filledWith(1);
    return (word | control | quote | backslash) & EightBytes::highBits;
}

bool isBeyondAscii(char character)
{
    return static_cast<std::uint8_t>(character) >= 0x80;
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
    appendCharacters(out, bytes);
    out += '"';
}

void appendCharacters(std::string& out, std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t plain = EightBytes::countUnmarked(bytes.data(), bytes.size(), markSpecial);
        out += bytes.substr(0, plain);
        bytes.remove_prefix(plain);
        if (bytes.empty())
            break;
        if (!isBeyondAscii(bytes.front())) {
            appendEscape(out, bytes.front());
            bytes.remove_prefix(1);
            continue;
        }
        // No UTF-8 sequence reaches into a stretch of ASCII or out of it.
        const auto end = std::find_if_not(bytes.begin(), bytes.end(), isBeyondAscii);
        const auto size = static_cast<std::size_t>(end - bytes.begin());
        Encoding::appendAsUtf8(out, bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
}

} // namespace Torv::Json
