#pragma once

#include <cstdint>
#include <string>

#include "JobParser/Export.h"

namespace JobParser
{

/// The identifiers of attributes. Those that are read have a name here; attrName knows them all.
enum class attribute_t : std::uint8_t {
    MediaSize = 37,
    Orientation = 40,
    PageCopies = 49,
    SimplexPageMode = 52,
    DuplexPageMode = 53,
    CommentData = 129,
    ErrorReport = 143,
    FontName = 168
};

/// The name of an attribute in capitals, as in `MEDIASIZE`; empty for a number that is none.
JOBPARSER_EXPORT std::string attrName(attribute_t attribute);

} // namespace JobParser
