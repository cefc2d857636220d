#pragma once

#include <cstddef>
#include <string_view>

#include "Torv/Export.h"

namespace simdjson::dom
{
class document;
}

namespace Torv::Json
{

/// Reads a JSON text into a document. Behind the text stands the padding that simdjson wants. Returns null,
/// or what is wrong with the text, which nests deeper than maxDepth or is no JSON; that text is a constant.
///
/// A function apart from Json.cpp, since a program that seldom reads JSON may bring one of its own that loads
/// simdjson when it is first called.
const char* readDocument(simdjson::dom::document& document, std::string_view text);

} // namespace Torv::Json

/// readDocument for a program that has one of its own, and gets this one out of the shared library. Private
/// to programs of the same build: the document is passed as it lies in memory.
extern "C" TORV_EXPORT const char* torvReadJsonDocument(simdjson::dom::document* document, const char* text,
                                                        std::size_t size);
