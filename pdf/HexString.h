#pragma once

#include <string>

#include "JobParser/Export.h"
#include "pdf/ByteString.h"

namespace Pdf
{

/// A hexadecimal string as it is written: the characters between the angle brackets, not decoded.
struct JOBPARSER_EXPORT HexString {
    /// The characters in their brackets.
    std::string serialize() const;

    bool operator==(const HexString&) const = default;

    ByteString text; ///< Any bytes.
};

} // namespace Pdf
