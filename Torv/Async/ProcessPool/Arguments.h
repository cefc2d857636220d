#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Torv::Async::ProcessPool
{

/// Splits a command line at blanks outside double quotes. Inside them a backslash makes the next byte
/// literal; the quotes go, and may stand anywhere in a word: `-d"a \"b\"" ""` is `-da "b"` and an empty word.
/// A quote that is never closed reaches to the end.
std::vector<std::string> splitArguments(std::string_view text);

} // namespace Torv::Async::ProcessPool
