#include "MetadataCheck.h"

#include "FuzzSupport.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/languages/ChunkPsComment.h"
#include "PdfSummaryCheck.h"

#include "Torv/GenericException.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"

namespace Fuzz
{
namespace
{

/// Counts what is written and refuses to go on beyond a limit: a few bytes of metadata can refer to one
/// stretch of a job any number of times.
class LimitedSink : public Torv::IO::IStream
{
public:
    std::uint32_t read(void*, std::uint32_t) override { throw Torv::GenericException("Cannot read"); }
    void write(const void*, std::uint32_t size) override
    {
        m_written += size;
        if (m_written > limit)
            throw Torv::GenericException("The job is too long");
    }
    std::int64_t seek(std::int64_t, int) override { throw Torv::GenericException("Cannot seek"); }
    unsigned capabilities() const override { return CanWrite; }

    std::int64_t written() const { return m_written; }

private:
    static constexpr std::int64_t limit = 64 * 1024 * 1024;

    std::int64_t m_written = 0;
};

void checkReload(const JobParser::Job& job)
{
    const std::string json = job.toJson();
    const JobParser::Job again(Torv::Json::parse(json));
    require(again.toJson() == json, "metadata read and written again stays the same");
}

// The size of a watermark is believed as it is stored.
bool sizesAreTheirOwn(std::string_view metadata)
{
    return metadata.find("Watermark") == metadata.npos && metadata.find("\\u00") == metadata.npos;
}

// Bytes that the comments among the chunks hold from their first zero byte on, which are not written.
std::int64_t hiddenBytes(const JobParser::Job& job)
{
    std::int64_t hidden = 0;
    for (const auto& chunk : job.chunks) {
        const auto* const comment = dynamic_cast<const JobParser::ChunkPsComment*>(chunk.get());
        if (comment != nullptr && comment->comment.find('\0') != std::string::npos)
            hidden += static_cast<std::int64_t>(comment->comment.size() - comment->comment.find('\0'));
    }
    return hidden;
}

void checkSave(const JobParser::Job& job, std::string_view metadata, std::string_view jobBytes)
{
    const MemoryFile memoryFile(jobBytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    LimitedSink sink;
    job.save(file, sink);
    require(sink.written() == job.size() - hiddenBytes(job) || !sizesAreTheirOwn(metadata),
            "a job saves as many bytes as it says");
}

void checkDump(const JobParser::Job& job)
{
    Torv::Log::LogString log;
    job.dump(log);
    require(!log.getAndClear().empty(), "a dump says something");
}

} // namespace

void readMetadataAndCheck(std::string_view metadata, std::string_view jobBytes)
{
    JobParser::Job job;
    if (!survives([&] { job.fillFrom(Torv::Json::parse(std::string(metadata))); }))
        return;
    const bool stored = !hasReloadableSummaries(job) || survives([&] { checkReload(job); });
    require(stored, "a job made from metadata can be stored again");
    // Only metadata can bring a payload behind an escape sequence of two bytes, for which a dump asserts.
    survives([&] { checkDump(job); });
    // Ranges may lie outside the job, so that this may fail.
    survives([&] { checkSave(job, metadata, jobBytes); });
}

} // namespace Fuzz
