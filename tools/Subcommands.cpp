#include "tools/Subcommands.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <unistd.h>

#include "JobParser/ExtJobProcessor.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "JobParser/paper/PaperSizeManager.h"
#include "tools/Conversion.h"
#include "tools/Heap.h"
#include "tools/Scan.h"
#include "tools/Session.h"
#include "tools/ShowPage.h"
#include "tools/StandardErrorLog.h"
#include "tools/StandardStreams.h"

#include "Torv/GenericException.h"
#include "Torv/IO/FileStream.h"
#include "Torv/IO/OutputFile.h"

namespace JobParser::Tool
{
namespace
{

using Torv::IO::OutputFile;

constexpr auto writtenStraight = OutputFile::StandardOutput::IsWrittenStraight;

/// A job with the file that its chunks refer to.
struct LoadedJob {
    JobFile file;
    std::shared_ptr<Job> job;
    bool parsed = true;
    std::string cause; ///< Why it was not parsed.
};

/// Writes the messages of Job::dump as lines.
class DumpLog : public Torv::Log::ILog
{
public:
    explicit DumpLog(Torv::IO::IStream& stream) : m_stream(stream) {}

    bool isEnabled(int level) const override { return level == Torv::Log::LevelDump; }
    void write(int level, const std::string& message, const std::string&, bool, const char*, int) override
    {
        if (isEnabled(level))
            writeText(m_stream, message + '\n');
    }

private:
    Torv::IO::IStream& m_stream;
};

void parse(LoadedJob& loaded, const Options& options)
{
    PaperSizeManager papers;
    configure(papers, options);
    const auto log = std::make_shared<StandardErrorLog>(options.logLevel.value_or(-1));
    Parser parser(log, papers, options.worker.isUsed);
    const std::shared_ptr<JobParserResult> result = parser.parse(loaded.file, parseOptionsOf(options));
    loaded.job = result->job;
    loaded.parsed = result->parsed;
    if (!loaded.parsed) {
        loaded.cause = log->lastError();
        log->showHeldBackErrors();
    }
}

void load(LoadedJob& loaded, const Options& options)
{
    // A job that is loaded from its metadata is not parsed, so that there is nothing to ask.
    initLibrary(options, options.metadata ? Workers::None : Workers::Started);
    openJob(loaded.file, options.files.front(), options);
    prepareHeap(loaded.file.m_realDataSize);
    if (options.metadata)
        loaded.job = std::make_shared<Job>(*options.metadata);
    else
        parse(loaded, options);
}

/// Calls `write` with the stream that the options name, and makes sure that all got there.
template <typename Write> void writeOutput(const std::optional<std::string>& path, Write write)
{
    if (path) {
        OutputFile output(*path, writtenStraight);
        write(output.stream());
        output.commit();
    } else {
        Torv::IO::FileStream output(STDOUT_FILENO, "standard output");
        write(output);
        output.flush();
    }
}

/// Throws if metadata that only goes with the bytes of the job is to take their place.
void requireAnotherPlace(const std::string& place, const std::string& file)
{
    std::error_code error;
    if (place == file || std::filesystem::equivalent(place, file, error))
        throw Torv::GenericException("The metadata would replace the job | path=" + place);
}

std::string placeBeside(const std::string& file)
{
    std::string place = Job::getMedataFile(file);
    requireAnotherPlace(place, file);
    return place;
}

void writeMetadata(const Job& job, Torv::IO::IStream& stream)
{
    job.writeMetadata(stream);
    writeText(stream, "\n");
}

void writeMetadata(const LoadedJob& loaded, const Options& options)
{
    const std::optional<std::string> place =
        options.beside ? std::optional(placeBeside(options.files.front())) : options.output;
    writeOutput(place, [&](Torv::IO::IStream& stream) { writeMetadata(*loaded.job, stream); });
}

/// Both files are whole before the first one appears.
void rewrite(LoadedJob& loaded, const Options& options)
{
    if (options.metadataOutput)
        requireAnotherPlace(*options.metadataOutput, options.files.front());
    for (const RewriteStep& step : options.steps)
        step.applyTo(*loaded.job);
    OutputFile output(*options.output, writtenStraight);
    std::optional<OutputFile> metadata;
    if (options.metadataOutput)
        metadata.emplace(*options.metadataOutput, writtenStraight);
    loaded.job->save(loaded.file, output.stream());
    output.flush();
    if (metadata) {
        writeMetadata(*loaded.job, metadata->stream());
        metadata->flush();
    }
    output.commit();
    if (metadata)
        metadata->commit();
}

void show(const LoadedJob& loaded, const Options& options)
{
    const ShownFile file{options.files.front(), loaded.file.m_realDataSize, loaded.cause};
    writeOutput(options.output, [&](Torv::IO::IStream& stream) { writeShowPage(*loaded.job, file, stream); });
}

void check(LoadedJob& loaded, Torv::IO::IStream& stream)
{
    loaded.job->checkChunkSizes(loaded.file);
    writeText(stream, "ok: " + std::to_string(loaded.job->chunks.size()) + " chunks, " +
                          std::to_string(loaded.job->size()) + " bytes\n");
}

void writeResult(LoadedJob& loaded, const Options& options)
{
    switch (options.subcommand) {
    case Subcommand::Info:
    case Subcommand::Scan:
    case Subcommand::Convert: break; // Have no loaded job.
    case Subcommand::Meta: writeMetadata(loaded, options); break;
    case Subcommand::Dump:
        writeOutput(std::nullopt, [&](Torv::IO::IStream& stream) {
            DumpLog log(stream);
            loaded.job->dump(log);
        });
        break;
    case Subcommand::Check:
        writeOutput(std::nullopt, [&](Torv::IO::IStream& stream) { check(loaded, stream); });
        break;
    case Subcommand::Save:
        writeOutput(options.output,
                    [&](Torv::IO::IStream& stream) { loaded.job->save(loaded.file, stream); });
        break;
    case Subcommand::Rewrite: rewrite(loaded, options); break;
    case Subcommand::Show: show(loaded, options); break;
    }
}

ExitStatus runOnJob(const Options& options)
{
    try {
        // The process ends with this job, and the system takes its memory back at once. Freed by us, it would
        // go a chunk at a time.
        static LoadedJob& loaded = *new LoadedJob;
        load(loaded, options);
        writeResult(loaded, options);
        return loaded.parsed ? StatusDone : StatusNotParsed;
    } catch (const std::exception& error) {
        reportFailure(options.files.front(), error);
        return StatusFailed;
    }
}

ExitStatus runInfo(const Options& options)
{
    ExitStatus status = StatusDone;
    for (const std::string& file : options.files) {
        try {
            const std::string line = parseJobInfo(file) + '\n';
            writeOutput(std::nullopt, [&](Torv::IO::IStream& stream) { writeText(stream, line); });
        } catch (const std::exception& error) {
            reportFailure(file, error);
            status = StatusFailed;
        }
    }
    return status;
}

ExitStatus runConvert(const Options& options)
{
    try {
        initLibrary(options, Workers::Started);
        ConvertParams params = options.conversion;
        params.jobPath = options.files[0];
        params.outPath = options.files[1];
        convert(params);
        return StatusDone;
    } catch (const std::exception& error) {
        reportFailure(options.files[0], error);
        return StatusFailed;
    }
}

} // namespace

ExitStatus run(const Options& options)
{
    if (options.subcommand == Subcommand::Info)
        return runInfo(options);
    if (options.subcommand == Subcommand::Scan)
        return runScan(options);
    return options.subcommand == Subcommand::Convert ? runConvert(options) : runOnJob(options);
}

} // namespace JobParser::Tool
