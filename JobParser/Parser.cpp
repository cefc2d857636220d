#include "JobParser/Parser.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>

#include "JobParser/ExtJobProcessor.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/model/ChunkFirstPageStart.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/GlobalParser.h"
#include "pdf/PdfParserException.h"

#include "Torv/Format.h"
#include "Torv/Log/ILog.h"
#include "Torv/Log/LogString.h"
#include "Torv/Log/LoggingRootDirectory.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

// Counts, paper, duplex, stapling, punching and eco mode: what a host that wants no job information is not
// given.
constexpr int collectedGroups = JobInfo::FlagPageCount | JobInfo::FlagPaper | JobInfo::FlagDuplex |
                                JobInfo::FlagStapling | JobInfo::FlagPunching | JobInfo::FlagEcoMode;

// A record without one of these is put to a worker process.
constexpr int wantedGroups = JobInfo::FlagPageCount | JobInfo::FlagPaper | JobInfo::FlagOrientation;

// What the job itself says of these is better than what a worker finds in its pages.
constexpr int keptGroups = JobInfo::FlagPaper | JobInfo::FlagOrientation;

struct AskedLanguage {
    Pdl pdl;
    int mask; ///< The groups that are taken from the worker.
};

// The orientation of PostScript is inferred while it is walked.
constexpr std::array<AskedLanguage, 5> askedLanguages{{
    {Pdl::Pcl5, JobInfo::AllFlags},
    {Pdl::PostScript, JobInfo::AllFlags & ~JobInfo::FlagOrientation},
    {Pdl::PclXl, JobInfo::AllFlags},
    {Pdl::Pdf, JobInfo::AllFlags},
    {Pdl::Xps, JobInfo::AllFlags},
}};

// Pages are not counted in fractions.
int toInteger(const Torv::Variant& value)
{
    if (value.kind() == Torv::Variant::Kind::Real)
        throw Torv::VariantInvalidOperationException(
            "Variant: The value does not convert | wanted=integer | kind=Real");
    return value.toInt();
}

/// Nothing for a key that is absent or null.
std::optional<Torv::Variant> optionalValue(const Torv::Variant& reply, const char* key)
{
    Torv::Variant value;
    if (!reply.contains(key, value) || value.isNull())
        return std::nullopt;
    return value;
}

int optionalInteger(const Torv::Variant& reply, const char* key)
{
    const auto value = optionalValue(reply, key);
    return value ? toInteger(*value) : 0;
}

std::string optionalString(const Torv::Variant& reply, const char* key)
{
    const auto value = optionalValue(reply, key);
    return value ? value->toString() : std::string();
}

/// A sum that wraps, since a worker may say anything.
int wrappedSum(int a, int b, int c)
{
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b) + static_cast<unsigned>(c));
}

std::chrono::milliseconds since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

// The order is the precedence: PJL overrules what the language itself says, and PRESCRIBE overrules PJL.
JobInfo mergeRecords(const Global::Parser& parser, Pdl pdl)
{
    JobInfo merged;
    merged.setCopies(1);
    merged.combineWith(parser.pdlJobInfo, JobInfo::AllFlags);
    merged.setPdl(pdl);
    merged.combineWith(parser.pjl.jobInfo, JobInfo::AllFlags);
    merged.combineWith(parser.prescribe.jobInfo, JobInfo::AllFlags);
    return merged;
}

// The languages that nothing reads here are left to the raw loop, which also finds those behind PJL.
void runMode(Global::Parser& parser, Pdl pdl, bool allowRestrictedPdf)
{
    switch (pdl) {
    case Pdl::Pcl5: return parser.pcl5.parse(parser.pdlJobInfo);
    case Pdl::PostScript: return parser.postScript.parse(parser.pdlJobInfo);
    case Pdl::Prescribe: return parser.prescribe.parse();
    case Pdl::PclXl: return parser.pcl6Mode();
    case Pdl::Pdf: return parser.pdfMode(allowRestrictedPdf);
    case Pdl::Jpeg: return parser.jpegMode(allowRestrictedPdf);
    case Pdl::Xps: return parser.xpsMode();
    case Pdl::Detect:
    case Pdl::Unknown:
    case Pdl::EscP:
    case Pdl::Urf: break;
    }
}

// Turns pages into sides of paper. A colour page stays a colour side as long as there are sides for it.
void applyPagesPerSheet(JobInfo& info)
{
    if (info.flags(JobInfo::FlagPageCount | JobInfo::FlagPagesPerSheet) == 0 || info.pagesPerSheet < 2)
        return;
    const auto wrapped = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };
    const auto sum = static_cast<std::int32_t>(wrapped(info.monoCount) + wrapped(info.grayCount) +
                                               wrapped(info.colorCount) + wrapped(info.pagesPerSheet) - 1);
    const std::int32_t sheets = sum / info.pagesPerSheet;
    const std::int32_t color = std::min(info.colorCount, sheets);
    info.setPageCount(static_cast<std::int32_t>(wrapped(sheets) - wrapped(color)), 0, color);
}

// What "left top" means depends on how the page lies, which is only known when the whole job has been read.
void applyBrandFinishing(JobInfo& info, const Pjl::Parser& pjl)
{
    if (info.originalBrand == Zem::Printer::OriginalBrand::Hp) {
        info.setStapling(pjl.hpStapleByOrientation(info.orientation), true);
        info.setPunching(pjl.hpPunchByOrientation(info.orientation), true);
    } else if (info.originalBrand == Zem::Printer::OriginalBrand::KxDriver) {
        info.setStapling(pjl.kxTransformStapleByOrientation(info.stapling, info.orientation), true);
        info.setPunching(pjl.kxTransformPunchByOrientation(info.punching, info.orientation), true);
    }
}

} // namespace

Parser::Parser(std::shared_ptr<Torv::Log::ILog> theLog, PaperSizeManager& papers, bool externalParserAllowed)
    : log(std::move(theLog)), paperList(papers), useExternalParser(externalParserAllowed)
{
}

Parser::~Parser() = default;

std::shared_ptr<JobParserResult> Parser::parse(JobFile& file, const ParseOptions& options)
{
    const auto start = Clock::now();
    auto result = std::make_shared<JobParserResult>();
    result->job = std::make_shared<Job>();
    Global::Parser globalParser(*result->job, file, paperList);
    Pdl pdl = options.pdl;
    try {
        walk(globalParser, pdl, options.allowRestrictedPdf);
    } catch (const Pdf::Parser::PdfParserException& error) {
        if (!options.allowRestrictedPdf)
            throw;
        parsingJobFailed(*result, globalParser, error.what(), start);
        return result;
    } catch (const JobParserException& error) {
        parsingJobFailed(*result, globalParser, error.what(), start);
        return result;
    }
    result->parseDuration = since(start);
    logPartialRecords(globalParser);
    JobInfo merged = mergeRecords(globalParser, pdl);
    if (useExternalParser && options.collectJobInfo && merged.flags(wantedGroups) != wantedGroups)
        externalParser(globalParser, merged, result->externalParserDuration);
    if (!options.collectJobInfo)
        merged.reset(collectedGroups);
    applyPagesPerSheet(merged);
    applyBrandFinishing(merged, globalParser.pjl);
    result->job->jobInfo = merged;
    result->parsed = true;
    return result;
}

void Parser::walk(Global::Parser& globalParser, Pdl& pdl, bool allowRestrictedPdf)
{
    if (pdl == Pdl::Detect)
        pdl = globalParser.autoDetectPdl();
    runMode(globalParser, pdl, allowRestrictedPdf);
    // Whatever a language left over is accounted for here.
    globalParser.rawMode(allowRestrictedPdf);
    const std::int32_t firstPage = globalParser.pcl5.firstPageChunk;
    if (firstPage != -1)
        globalParser.job.insertChunkAt(firstPage, std::make_shared<ChunkFirstPageStart>());
}

void Parser::parsingJobFailed(JobParserResult& result, Global::Parser& globalParser, const std::string& error,
                              Clock::time_point start)
{
    const JobFile& file = globalParser.file;
    Torv::Log::LogString dump;
    result.job->dump(dump);
    logSource(Torv::Log::LevelError,
              Torv::format("Parsing failed at offset 0x%I64X. The job will have no metadata. | error=%s",
                           file.m_offset, error.c_str()),
              dump.getAndClear(), true, __LINE__);
    result.parseDuration = since(start);
    result.job->removeAllChunks();
    globalParser.pcl5.firstPageChunk = -1;
    result.job->appendChunk(std::make_shared<ChunkRawData>(0, file.m_realDataSize));
    JobInfo info;
    info.setPjl(globalParser.pjl.jobInfo.pjl);
    result.job->jobInfo = info;
    result.parsed = false;
}

void Parser::logPartialRecords(const Global::Parser& globalParser)
{
    if (!log->isEnabled(Torv::Log::LevelDebug))
        return;
    const auto logRecord = [&](const char* fmt, const JobInfo& record, int line) {
        logSource(Torv::Log::LevelDebug, Torv::format(fmt, record.toString().c_str()), "", false, line);
    };
    logRecord("Job info PJL: %s", globalParser.pjl.jobInfo, __LINE__);
    logRecord("Job info PDL: %s", globalParser.pdlJobInfo, __LINE__);
    logRecord("Job info Prescribe: %s", globalParser.prescribe.jobInfo, __LINE__);
}

void Parser::externalParser(Global::Parser& globalParser, JobInfo& jobInfo,
                            std::chrono::milliseconds& duration)
{
    const auto start = Clock::now();
    JobInfo ext;
    int mask = JobInfo::AllFlags;
    const auto asked = std::ranges::find(askedLanguages, jobInfo.pdl, &AskedLanguage::pdl);
    if (asked != askedLanguages.end()) {
        mask = asked->mask;
        execExternalParser(globalParser, jobInfo.pdl, ext);
        ext.reset(jobInfo.flags(keptGroups));
    }
    jobInfo.combineWith(ext, mask);
    duration = since(start);
}

void Parser::execExternalParser(Global::Parser& globalParser, Pdl pdl, JobInfo& info)
{
    Library::extJobProcessor(); // Without one the library was not set up, which is no matter of this job.
    const std::shared_ptr<ExtJobProcessor> processor = Library::currentExtJobProcessor();
    try {
        processExternalParserResult(processor->parse(globalParser.file.path, pdl), info);
    } catch (const std::exception& error) {
        logSource(Torv::Log::LevelError,
                  Torv::format("Parsing via an external parser failed: %s", error.what()), "", false,
                  __LINE__);
    }
}

void Parser::processExternalParserResult(const Torv::Variant& reply, JobInfo& info)
{
    const int errorCode = optionalInteger(reply, "errorCode");
    const std::string errorMessage = optionalString(reply, "errorMessage");
    if (errorCode != 0 || !errorMessage.empty()) {
        logSource(Torv::Log::LevelError,
                  Torv::format("External parser error | errCode=%d | errorMessage=%s ", errorCode,
                               errorMessage.c_str()),
                  "", false, __LINE__);
        return;
    }
    const int blankCount = optionalInteger(reply, "blankCount");
    const int monoCount = toInteger(reply["monoCount"]);
    const int grayCount = toInteger(reply["grayCount"]);
    const int colorCount = toInteger(reply["colorCount"]);
    const int copies = toInteger(reply["copies"]);
    const int pageWidth = toInteger(reply["pageWidth"]);
    const int pageHeight = toInteger(reply["pageHeight"]);
    if (log->isEnabled(Torv::Log::LevelDebug))
        logSource(Torv::Log::LevelDebug,
                  Torv::format("External parser result | blankCount=%d | monoCount=%d | grayCount=%d "
                               "|colorCount=%d | copies=%d | pageWidth=%d | pageHeight=%d",
                               blankCount, monoCount, grayCount, colorCount, copies, pageWidth, pageHeight),
                  "", false, __LINE__);
    info.setCopies(copies);
    info.setPageCount(wrappedSum(monoCount, blankCount, grayCount), 0, colorCount);
    info.setOrientation(pageWidth, pageHeight);
    setExternalPaper(pageWidth, pageHeight, info);
}

void Parser::setExternalPaper(int pageWidth, int pageHeight, JobInfo& info)
{
    if (pageWidth == 0 || pageHeight == 0) {
        if (log->isEnabled(Torv::Log::LevelDebug))
            logSource(Torv::Log::LevelDebug, "External parser did not recognize any paper size", "", false,
                      __LINE__);
        return;
    }
    const Paper paper = paperList.paperById(Torv::format("%dx%d", pageWidth, pageHeight), true);
    info.setPaper(paper);
    if (paper == PaperOther)
        logSource(
            Torv::Log::LevelWarning,
            Torv::format("Unknown paper (External Parser) | width=%d | height=%d", pageWidth, pageHeight), "",
            false, __LINE__);
}

void Parser::logSource(int level, const std::string& message, const std::string& details, bool flag, int line)
{
    log->write(level, message, details, flag, Torv::Log::makeLoggingRootRelative(__FILE__), line);
}

} // namespace JobParser
