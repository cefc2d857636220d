#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "JobParser/Export.h"
#include "JobParser/Job.h"
#include "JobParser/model/Pdl.h"
#include "JobParser/paper/PaperSizeManager.h"

namespace Torv
{
class Variant;
}

namespace Torv::Log
{
class ILog;
}

namespace JobParser
{

class JobFile;
namespace Global
{
class Parser;
}

/// What Parser::parse gives.
struct JOBPARSER_EXPORT JobParserResult {
    std::shared_ptr<Job> job;                   ///< Never null.
    std::chrono::milliseconds parseDuration{0}; ///< Of the walk alone.
    std::chrono::milliseconds externalParserDuration{
        0};              ///< Of the question to a worker; 0 if none was asked.
    bool parsed = false; ///< False if the walk failed and the job is one raw stretch.
};

/// Takes one job through everything: recognition, the language parsers, the raw loop behind them, and the
/// merge of what they learned.
///
/// Keeps nothing from one parse to the next. Jobs may be parsed on several threads at once, each with a
/// JobFile of its own, once Library::init has finished.
class JOBPARSER_EXPORT Parser
{
public:
    struct ParseOptions {
        Pdl pdl;             ///< The language of the job; Pdl::Detect to find out.
        bool collectJobInfo; ///< False clears counts, paper, duplex, finishing and toner saving at the end.
        bool allowRestrictedPdf; ///< Whether encrypted PDF is taken.
    };

    /// `papers` outlives the parser. `externalParserAllowed` says whether worker processes may be asked.
    Parser(std::shared_ptr<Torv::Log::ILog> theLog, PaperSizeManager& papers, bool externalParserAllowed);
    ~Parser();

    /// Walks the job in an open file, from its start.
    ///
    /// A malformed job is logged at level 1 and comes back as one raw stretch, without facts but for `pjl`,
    /// so that it still saves byte for byte. Exceptions other than JobParserException pass through.
    ///
    /// Where counts, paper or orientation are missing, and it is allowed, a worker process is asked. What
    /// goes wrong there is logged at level 1; only without Library::init it throws Torv::GenericException.
    std::shared_ptr<JobParserResult> parse(JobFile& file, const ParseOptions& options);

    /// The part of parse that asks a worker process, if the job's language is one that workers read, and lays
    /// what it says over the record. What the record knows of paper and orientation stays; counts do not.
    /// Gives the time that it took. Throws Torv::GenericException without Library::init.
    void externalParser(Global::Parser& parser, JobInfo& jobInfo, std::chrono::milliseconds& duration);

    /// Asks a worker process and reads its reply into an empty record. What fails is logged, and leaves the
    /// record as far as it got.
    void execExternalParser(Global::Parser& parser, Pdl pdl, JobInfo& info);

    /// Reads a worker's reply into a record. A reply that tells of an error is logged and changes nothing.
    /// Throws Torv::VariantInvalidOperationException for a missing key or a value of another kind.
    void processExternalParserResult(const Torv::Variant& reply, JobInfo& info);

private:
    using Clock = std::chrono::steady_clock;

    void walk(Global::Parser& parser, Pdl& pdl, bool allowRestrictedPdf);
    void parsingJobFailed(JobParserResult& result, Global::Parser& parser, const std::string& error,
                          Clock::time_point start);
    void logPartialRecords(const Global::Parser& parser);
    void setExternalPaper(int pageWidth, int pageHeight, JobInfo& info);
    void logSource(int level, const std::string& message, const std::string& details, bool flag, int line);

    std::shared_ptr<Torv::Log::ILog> log;
    PaperSizeManager& paperList;
    bool useExternalParser;
};

/// The papers of the process, built when the library is loaded.
JOBPARSER_EXPORT extern PaperSizeManager paperList;
/// The parser of the C entry: it logs nothing and may ask worker processes. Built when the library is loaded.
JOBPARSER_EXPORT extern Parser parser;

/// Sets the library up from what stands beside the running executable: registers the chunk classes and reads
/// ParserConfig/config.ini if that is there. True for the first call; any later one does nothing, does not
/// even wait for the first, and gives false. Throws what Library::init throws.
JOBPARSER_EXPORT bool lazyInit();

/// The record of the job at `path` as JSON text. Calls lazyInit first. Throws Torv::GenericException if the
/// file cannot be read, and what Parser::parse lets pass; a malformed job gives a record without facts.
JOBPARSER_EXPORT std::string parseJobInfo(std::string path);

} // namespace JobParser
