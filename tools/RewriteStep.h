#pragma once

#include <span>
#include <string>
#include <string_view>

namespace JobParser
{
class Job;
}

namespace JobParser::Tool
{

/// One change to a job, as `jobparser rewrite` takes it from the command line.
struct RewriteStep {
    void (*apply)(Job& job, const RewriteStep& step) = nullptr;
    std::string first;  ///< A name, a prefix or a text.
    std::string second; ///< The value or whatever else goes with it.
};

/// A kind of step, as it stands on the command line.
struct RewriteStepRow {
    const char* name;      ///< Behind the two dashes.
    const char* first;     ///< The argument, for the help; null if there is none.
    const char* second;    ///< A second argument; null if there is none.
    std::string_view help; ///< One line.
    bool (*read)(
        RewriteStep& step); ///< Reads the arguments into what `apply` takes; false if they make no sense.
    void (*apply)(Job& job, const RewriteStep& step);
};

/// All kinds of steps, in the order of the help.
std::span<const RewriteStepRow> rewriteStepRows();

} // namespace JobParser::Tool
