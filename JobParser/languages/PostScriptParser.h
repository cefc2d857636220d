#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "JobParser/JobInfo.h"
#include "JobParser/languages/PaperOrientationParser.h"
#include "JobParser/model/BaseParser.h"

namespace JobParser::Pjl
{
class Parser;
}
namespace JobParser::Prescribe
{
class Parser;
}

namespace JobParser::PostScript
{

/// What Parser::getPsToken found.
enum class PsToken : int {
    Comment = 0,   ///< A `%%` comment with its line ends; Parser::comment holds it.
    Uel = 1,       ///< A UEL, which stays unread.
    EndOfFile = 2, ///< The end of the data, at the start of a line.
    Prescribe = 3, ///< A line begins `%%!R! `; the file stands on the `!`.
    Line = 4,      ///< Any other line.
    Control = 5,   ///< A byte 4, or a byte 1 with the `M` that may follow it.
};

/// What the body of a feature is collected for.
enum FeatureKind : std::int32_t {
    NoFeature = 0,
    PageSizeFeature = 1,
    StapleFeature = 2,
    PunchFeature = 3,
    HpStapleFeature = 4,
    HpPunchFeature = 5,
};

/// Cuts a PostScript body into its `%%` comments and the raw data between them, without interpreting it. The
/// comments around features tell duplex, stapling and punching; the whole tells the orientation.
///
/// Starts at the position of the file and ends at a UEL, which stays unread, or at the end of the data. The
/// members are set by the owner; those behind the pointers outlive the parser. Belongs to the thread that
/// parses the job.
class Parser : public BaseParser
{
public:
    /// Walks one body. Facts go to `info`, those of features of HP drivers to the record of `pjl`.
    ///
    /// Throws JobParserException if the data ends inside a line, and what the parser of PRESCRIBE and
    /// orientationParser throw. The chunks appended so far stay; the raw data behind them is lost.
    void parse(JobInfo& info);

    /// Reads one token. Throws JobParserException if the data ends inside a line.
    PsToken getPsToken();

    /// Acts on `comment`.
    void parseComment(JobInfo& info);

    /// Appends to featureText if a feature is open whose body is collected.
    void toFeature(char character);

    /// Acts on featureText, the body of a feature of the kind featureKind.
    void parseFeatureDefinition(JobInfo& info);

    /// Takes the staple of featureText.
    void parseStapleFeatureDefinition(JobInfo& info);

    Prescribe::Parser* prescribe = nullptr;
    Pjl::Parser* pjl = nullptr;
    PaperOrientationParser orientationParser;
    std::string comment;          ///< The comment read last, with its line ends.
    std::string featureText;      ///< The body of the feature, as far as it can matter.
    std::int32_t featureKind = 0; ///< What the body is collected for, a FeatureKind; 0 if it is not.

private:
    PsToken control();
    PsToken percent();
    PsToken commentBody();
    PsToken commentEnd();
    PsToken skip();
    PsToken lineEnd();

    bool takeComment();
    std::size_t takeCommentText();
    void skipLines();
    void beginFeature(std::string_view text, JobInfo& info);
    void endFeature(JobInfo& info);
    void collect(std::span<const std::uint8_t> bytes);
    void flushRawData(std::int64_t start, std::int64_t end);
};

} // namespace JobParser::PostScript
