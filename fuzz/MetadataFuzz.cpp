// Any text is the metadata of a small job, as it may have been stored by a stranger.

#include "FuzzSupport.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/languages/ChunkPsComment.h"

#include "Torv/GenericException.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"

namespace
{

constexpr std::string_view smallJob = "\x1B%-12345X@PJL SET COPIES=2\r\n\x1B%-12345X";

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
    Fuzz::require(again.toJson() == json, "metadata read and written again stays the same");
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

void checkSave(const JobParser::Job& job)
{
    const Fuzz::MemoryFile memoryFile(smallJob);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    LimitedSink sink;
    job.save(file, sink);
    Fuzz::require(sink.written() == job.size() - hiddenBytes(job), "a job saves as many bytes as it says");
}

void checkDump(const JobParser::Job& job)
{
    Torv::Log::LogString log;
    job.dump(log);
    Fuzz::require(!log.getAndClear().empty(), "a dump says something");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    JobParser::Job job;
    const auto read = [&] { job.fillFrom(Torv::Json::parse(std::string(Fuzz::asText({data, size})))); };
    if (!Fuzz::survives(read))
        return 0;
    const bool stored = Fuzz::survives([&] { checkReload(job); });
    Fuzz::require(stored, "a job made from metadata can be stored again");
    const bool dumped = Fuzz::survives([&] { checkDump(job); });
    Fuzz::require(dumped, "a job made from metadata can be dumped");
    // Ranges may lie outside the job, so that this may fail.
    Fuzz::survives([&] { checkSave(job); });
    return 0;
}
