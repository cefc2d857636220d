#pragma once

#include "JobParser/JobInfo.h"
#include "JobParser/languages/Pcl5Parser.h"
#include "JobParser/languages/PjlParser.h"
#include "JobParser/languages/PostScriptParser.h"
#include "JobParser/languages/PrescribeParser.h"
#include "JobParser/model/BaseParser.h"
#include "JobParser/model/Pdl.h"

namespace JobParser::Global
{

/// Owns the parsers of all languages for one parse, and walks the job where no language is active.
///
/// Belongs to the thread that parses the job, and serves one job: the parsers keep what they learned from one
/// stretch of the job to the next.
class Parser : public BaseParser
{
public:
    /// Puts the file at its start. The three outlive the parser.
    Parser(Job& theJob, JobFile& theFile, PaperSizeManager& papers);

    /// Recognises the language by the bytes at the position, which stays. Unknown for a job that begins with
    /// a UEL: there PJL tells the language.
    Pdl autoDetectPdl();

    /// Walks the job from the position to the end of the data: UELs, PJL blocks, the language bodies that PJL
    /// announces, PRESCRIBE blocks, and raw data for all the rest. Passes on what the parsers of the
    /// languages throw.
    void rawMode(bool allowRestrictedPdf);

    /// Finds the header of a PCL XL stream, reads the stream, and leaves the file behind it; at a UEL instead
    /// of a header, in front of the UEL. Throws JobParserException for a stream that is malformed or missing;
    /// then only chunks of what stands before it are in the job.
    void pcl6Mode();

    /// A JPEG job is one image and counts as one colour page; nothing in it is read.
    void jpegMode(bool allowRestrictedPdf);

    /// Learns what the print ticket of an XPS package says, in place of all that was known of the language,
    /// and keeps the package as one chunk that ends where its reading ended. Passes on what the package fails
    /// with; then nothing has changed.
    void xpsMode();

    /// Takes a PDF out of the job, if one begins at the position: its bytes as raw data, and its summary.
    /// Leaves the file behind it.
    ///
    /// Throws Pdf::Parser::PdfParserException for a PDF that is malformed and, unless `allowRestrictedPdf`,
    /// for one that is encrypted; std::bad_variant_access for one with values of other kinds than they have
    /// to be. No chunk was made then, and the file stands where reading stopped.
    void pdfMode(bool allowRestrictedPdf);

    /// Classifies what stands at the position. A UEL is passed, and so is a byte that begins nothing; a
    /// PRESCRIBE block stays unread.
    Pjl::PjlToken getRawToken();

    // Each one refers to the one before it; PostScript to the first two.
    Pjl::Parser pjl;
    Prescribe::Parser prescribe;
    Pcl5::Parser pcl5;
    PostScript::Parser postScript;
    JobInfo pdlJobInfo; ///< What the language bodies contributed.

private:
    void skipRawBytes();
    void parsePclXl();
    void parseBody(Pdl pdl, bool allowRestrictedPdf);
    void flushRawData(std::int64_t start, std::int64_t end);
};

} // namespace JobParser::Global
