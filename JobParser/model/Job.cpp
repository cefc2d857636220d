#include "JobParser/Job.h"

#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"

#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/IO/IStream.h"
#include "Torv/Log/ILog.h"

namespace JobParser
{
namespace
{

/// Counts what is written and keeps nothing, so that a chunk of gigabytes can be tested.
class CountingStream : public Torv::IO::IStream
{
public:
    std::uint32_t read(void*, std::uint32_t) override { reject(); }
    void write(const void*, std::uint32_t size) override { m_written += size; }
    std::int64_t seek(std::int64_t, int) override { reject(); }
    unsigned capabilities() const override { return CanWrite; }

    std::int64_t written() const { return m_written; }

private:
    [[noreturn]] static void reject()
    {
        throw Torv::GenericException("A counting stream can only be written");
    }

    std::int64_t m_written = 0;
};

} // namespace

Job::Job() = default;
Job::~Job() = default;

void Job::appendChunk(std::shared_ptr<IChunk> chunk)
{
    chunks.push_back(std::move(chunk));
    modified = true;
}

void Job::appendChunks(const std::vector<std::shared_ptr<IChunk>>& newChunks)
{
    // By index and up to the present end, since the new chunks may be the job's own.
    const std::size_t count = newChunks.size();
    for (std::size_t index = 0; index < count; ++index)
        chunks.push_back(newChunks[index]);
    modified = true;
}

void Job::insertChunkAt(int index, std::shared_ptr<IChunk> chunk)
{
    chunks.insert(chunks.begin() + index, std::move(chunk));
    modified = true;
}

void Job::replaceChunk(int index, std::shared_ptr<IChunk> chunk)
{
    chunks[static_cast<std::size_t>(index)] = std::move(chunk);
    modified = true;
}

void Job::removeChunkAt(int index)
{
    chunks.erase(chunks.begin() + index);
    modified = true;
}

void Job::removeAllChunks()
{
    chunks.clear();
    modified = true;
}

void Job::save(JobFile& file, Torv::IO::IStream& stream) const
{
    for (const auto& chunk : chunks) {
        if (chunk)
            chunk->save(file, stream);
    }
    modified = false;
}

std::int64_t Job::size() const
{
    // Sizes of metadata may add up to anything, so that the sum wraps.
    std::uint64_t sum = 0;
    for (const auto& chunk : chunks)
        sum += chunk ? static_cast<std::uint64_t>(chunk->size()) : 0;
    return static_cast<std::int64_t>(sum);
}

void Job::dump(Torv::Log::ILog& log) const
{
    log.write(Torv::Log::LevelDump, Torv::format("Job parser: Dumping %zu chunks", chunks.size()), "", false,
              "", 0);
    for (const auto& chunk : chunks) {
        if (chunk)
            chunk->dump(log);
    }
}

void Job::checkChunkSizes(JobFile& file) const
{
    for (const auto& chunk : chunks) {
        if (!chunk)
            continue;
        CountingStream stream;
        chunk->save(file, stream);
        if (chunk->size() == stream.written())
            continue;
        SerializationContext context;
        throw Torv::GenericException(Torv::format("Chunk '%s' size %I64d != written size %I64d",
                                                  chunk->toJson(context).c_str(), chunk->size(),
                                                  stream.written()));
    }
    modified = false;
}

} // namespace JobParser
