#pragma once

#include <string>
#include <string_view>

namespace Corpus
{

/// The job as saving has to give it where its PJL is plain: blocks of `@PJL` lines, each directly behind a
/// UEL or another line, up to an `ENTER`. Each line gets one blank behind its command word, no white space at
/// its end, and CR LF. All other bytes stay.
std::string withPjlRewritten(std::string_view job);

} // namespace Corpus
