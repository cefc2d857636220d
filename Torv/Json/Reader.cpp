#include "Torv/Json/Reader.h"

#include <algorithm>
#include <simdjson.h>

#include "Torv/Json/Json.h"

namespace Torv::Json
{
namespace
{

/// The deepest nesting of a JSON text; what lies below `limit` is not looked at. Means nothing if the text is
/// no JSON.
int nesting(std::string_view text, int limit)
{
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    for (std::size_t index = 0; index < text.size() && deepest <= limit; ++index) {
        const char byte = text[index];
        if (byte == '"')
            inString = !inString;
        else if (byte == '\\')
            ++index;
        else if (!inString && (byte == '[' || byte == '{'))
            deepest = std::max(deepest, ++depth);
        else if (!inString && (byte == ']' || byte == '}'))
            --depth;
    }
    return deepest;
}

/// `text` has the padding behind it that simdjson wants.
simdjson::error_code parseInto(simdjson::dom::document& document, std::string_view text, int depth)
{
    simdjson::dom::parser parser;
    const auto error = parser.allocate(text.size(), static_cast<std::size_t>(depth));
    if (error != simdjson::SUCCESS)
        return error;
    return parser.parse_into_document(document, text.data(), text.size(), false).error();
}

/// The depth of simdjson counts the document itself as one level, but an array or object that is empty as
/// none: a given depth accepts as many levels if the last one is empty, and one less if not. So what passes
/// with maxDepth is never too deep, and what does not is counted.
simdjson::error_code parseLimited(simdjson::dom::document& document, std::string_view text)
{
    const auto error = parseInto(document, text, maxDepth);
    if (error != simdjson::DEPTH_ERROR || nesting(text, maxDepth) > maxDepth)
        return error;
    return parseInto(document, text, maxDepth + 1);
}

} // namespace

const char* readDocument(simdjson::dom::document& document, std::string_view text)
{
    const auto error = parseLimited(document, text);
    return error == simdjson::SUCCESS ? nullptr : simdjson::error_message(error);
}

} // namespace Torv::Json

const char* torvReadJsonDocument(simdjson::dom::document* document, const char* text, std::size_t size)
{
    return Torv::Json::readDocument(*document, {text, size});
}
