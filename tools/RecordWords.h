#pragma once

#include <optional>
#include <string>
#include <vector>

namespace JobParser
{
class JobInfo;
}

namespace JobParser::Tool
{

/// One fact of a record, for people.
struct RecordWord {
    const char* label;
    std::optional<std::string> text; ///< Absent if the fact is not known.
};

/// A record in words, in the order in which people ask. Numbers without a name stay numbers.
std::vector<RecordWord> recordWords(const JobInfo& info);

} // namespace JobParser::Tool
