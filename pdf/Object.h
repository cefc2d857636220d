#pragma once

#include <string>
#include <string_view>

#include "JobParser/Export.h"
#include "pdf/Reference.h"
#include "pdf/Value.h"

namespace Pdf
{

/// An indirect object.
struct JOBPARSER_EXPORT Object {
    /// Replaces the stream and stores its length as "Length" of the value. Throws std::bad_variant_access if
    /// the value is neither a dictionary nor None.
    void setStream(std::string_view bytes);
    /// Appends to the stream, in the same way.
    void append2Stream(std::string_view bytes);

    /// The object as PDF text. The text of the value ends at a NUL byte.
    ///
    /// Throws as Value::serialize does; with a stream also JobParser::JobParserException if "Length" is not
    /// its length, and std::bad_variant_access if "Length" is no number.
    std::string serialize() const;

    Reference reference;
    Value value;
    std::string stream; ///< Empty as a rule: reading a PDF keeps no streams.
};

} // namespace Pdf
