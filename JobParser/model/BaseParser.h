#pragma once

#include <string_view>

namespace JobParser
{

class Job;
class JobFile;
class PaperSizeManager;

/// What all parsers of a job share: the job that they fill, the file that they read, and the papers. All
/// three outlive the parsers.
class BaseParser
{
public:
    BaseParser(Job& theJob, JobFile& theFile, PaperSizeManager& papers)
        : job(theJob), file(theFile), paperList(papers)
    {
    }

    /// Whether the pattern stands at the position of the file. If so the position moves behind it, unless
    /// `peek`; otherwise it stays. With `upcase` letters of the file match in either case; the pattern is
    /// written in capitals then.
    bool match(std::string_view pattern, bool peek, bool upcase);

    /// Whether a universal exit language sequence (UEL, nine bytes) stands at the position. If so the
    /// position moves behind it; otherwise it stays. Throws UnexpectedEndOfFileException at the end of the
    /// data.
    bool matchUel();

    /// The text without the quote bytes `q` at both ends. Throws JobParserException for a text without them.
    static std::string_view unQuote(std::string_view s, char q);

    Job& job;
    JobFile& file;
    PaperSizeManager& paperList;
};

/// The universal exit language sequence.
inline constexpr std::string_view uel = "\x1B%-12345X";

} // namespace JobParser
