#pragma once

#include <span>
#include <string_view>

#include "JobParser/model/RewriteStep.h"

namespace JobParser::Tool
{

/// A kind of step, as it stands on the command line.
struct RewriteStepRow {
    const char* name;      ///< Behind the two dashes.
    const char* first;     ///< The argument, for the help; null if there is none.
    const char* second;    ///< A second argument; null if there is none.
    std::string_view help; ///< One line.
    bool (*read)(
        RewriteStep& step); ///< Reads the arguments into the texts of the step; false if they make no sense.
    RewriteStep::Kind kind;
};

/// All kinds of steps, in the order of the help.
std::span<const RewriteStepRow> rewriteStepRows();

} // namespace JobParser::Tool
