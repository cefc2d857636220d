#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "JobParser/JobInfo.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/model/BaseParser.h"
#include "JobParser/model/Finishing.h"
#include "JobParser/model/Pdl.h"

namespace JobParser::Pjl
{

/// What Parser::getPjlToken found, and what the raw stream is made of.
enum class PjlToken : int {
    Command = 0,   ///< A command line; Parser::currentCmd holds it.
    Raw = 0,       ///< In the raw stream, where no lines are read: a byte that begins nothing.
    Uel = 1,       ///< A UEL that no `@PJL` follows.
    UelPjl = 2,    ///< A UEL with `@PJL`, in any case, right behind it.
    EndOfFile = 3, ///< No more bytes.
    Prescribe = 4, ///< A PRESCRIBE start.
};

/// Which `PROCESSINGTYPE` waits for its `PROCESSINGOPTION`.
enum class ProcessingType : std::int32_t { None = 0, Stapling = 1, Punch = 2, BookletMaker = 3 };

/// Reads the PJL lines of a job, as in `@PJL SET COPIES=2`, into chunks and a record of its own.
///
/// Serves all PJL blocks of one job; what it learned in one carries over to the next. A line has at most 1024
/// bytes behind `@PJL`. Drivers write PJL of all ages, so what is unknown stays a chunk and means nothing.
class Parser : public BaseParser
{
public:
    explicit Parser(const BaseParser& parent);

    /// Reads PJL from the position, which stands on an `@PJL` behind a UEL, until something else begins, and
    /// gives the language that follows: of `ENTER LANGUAGE`, PCL 5 at an escape sequence, PRESCRIBE at `!R!`,
    /// Unknown at a UEL without `@PJL` and at the end of the job. The file stands on what begins, behind a
    /// UEL.
    ///
    /// Throws JobParserException for malformed lines, and std::invalid_argument or std::out_of_range for
    /// copies that are no number, in the two places where Torv::stoi reads them. The chunks appended so far
    /// stay.
    Pdl parse();

    /// The token loop of parse.
    Pdl loop();

    /// Reads one token. Command leaves the file behind its line, Uel and UelPjl behind the UEL, Prescribe on
    /// the
    /// `!`.
    ///
    /// Throws JobParserException with the file behind the offending byte, and UnexpectedEndOfFileException if
    /// the job ends inside a line.
    PjlToken getPjlToken();

    /// Takes the facts of the SET line in currentCmd. Throws JobParserException for a stapling or punching
    /// option without its quotation marks.
    void parseSetCmd();

    /// Takes copies or sides of the job ticket line in currentCmd. Throws what Torv::stoi throws for copies
    /// that are no number.
    void parseXCPT();

    /// Takes stapling or punching from a word of HP drivers, without quotation marks, and sets the brand.
    void parseHpStapling(std::string_view word);
    void parseHpPunching(std::string_view word);

    // Finishing is placed relative to the sheet, which the orientation of the page turns. These give what a
    // page of the given orientation gets; UnknownPosition and UnknownKind if that cannot be told.

    /// Of the stapling and the punching that this parser read, for jobs of HP drivers.
    Staple hpStapleByOrientation(Orientation orientation) const;
    Punch hpPunchByOrientation(Orientation orientation) const;
    /// Of any stapling and punching, for jobs of the KX driver; uses the feed edge that this parser read.
    Staple kxTransformStapleByOrientation(Staple staple, Orientation orientation) const;
    Punch kxTransformPunchByOrientation(Punch punch, Orientation orientation) const;

    ProcessingType processingType = ProcessingType::None;
    ChunkPjlCmd currentCmd;               ///< The command read last.
    std::optional<bool> duplexOn = false; ///< Of `DUPLEX`; counts at the end of a block, with a binding.
    Duplex binding = Duplex::OneSided;    ///< Of `BINDING`; OneSided if not given.
    JobInfo jobInfo;                      ///< What PJL contributed.
    std::optional<std::int32_t> stapleRotation; ///< Quarter turns of the HP staple position, 0 to 3.
    std::optional<std::int32_t> punchRotation;  ///< Quarter turns of the HP punch position, 0 to 3.

private:
    enum class LineState;
    struct SetVariable;

    void skipLineFeeds();
    void readCommand();
    LineState accept(LineState state);
    LineState seekLine();
    LineState expect(char byte, LineState next);
    void takePlainText();
    LineState acceptInBody(std::uint8_t byte);
    LineState acceptAfterCr(std::uint8_t byte);
    LineState appendToBody(std::uint8_t byte);
    void splitLine();

    Pdl enterLanguage();
    void parseComment();
    void parseInfoComment(std::string_view list);

    void setCopies(const std::string& value);
    void setDuplex(const std::string& value);
    void setBinding(const std::string& value);
    void setPaper(const std::string& value);
    void setPagesPerSheet(const std::string& value);
    void setFeedEdge(const std::string& value);
    void setFinish(const std::string& value);
    void setProcessingType(const std::string& value);
    void setStaple(const std::string& value);
    void setPunchHole(const std::string& value);
    void setPunch(const std::string& value);
    void setStapleOption(const std::string& value);
    void setKPunchOption(const std::string& value);
    void setOkiPunch(const std::string& value);
    void setProcessingOption(const std::string& value);
    void setKColorMode(const std::string& value);
    void setEcoPrint(const std::string& value);
    void setGrayscaleMode(const std::string& value);
    void setPlanesInUse(const std::string& value);
    void setEconoMode(const std::string& value);
    void setHostPrinterName(const std::string& value);
    void setDriverName(const std::string& value);

    std::string m_text; ///< The line being read.
};

} // namespace JobParser::Pjl
