#include "JobParser/ChunkPlaces.h"

#include <algorithm>
#include <span>
#include <typeinfo>

#include "JobParser/Job.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/pclxl/JobChunkPclXLOperator.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/xps/ChunkXps.h"

namespace JobParser
{
namespace
{

/// Exactly this class: one derived from it may write something else.
template <typename T> const T* asExactly(const IChunk& chunk)
{
    return typeid(chunk) == typeid(T) ? static_cast<const T*>(&chunk) : nullptr;
}

bool lies(const FileRange& range, std::int64_t fileSize)
{
    return range.offset >= 0 && range.offset <= fileSize && range.size >= 0 &&
           range.size <= fileSize - range.offset;
}

/// Gives chunks without a range the bytes from `start` to `end`.
class Gap
{
public:
    Gap(std::span<const std::shared_ptr<IChunk>> chunks, std::int64_t start, std::int64_t end)
        : m_chunks(chunks), m_start(start), m_size(end - start)
    {
        for (const auto& chunk : chunks)
            m_sum += sizeOf(chunk);
    }

    void fill(std::span<ChunkPlace> places) const
    {
        Wide before = 0;
        for (std::size_t index = 0; index < m_chunks.size(); ++index) {
            const std::int64_t place = at(before);
            before += sizeOf(m_chunks[index]);
            places[index] = {{m_start + place, at(before) - place}, m_sum == m_size};
        }
    }

private:
    /// A sum of sizes that come from metadata overflows 64 bits.
    using Wide = long double;

    static Wide sizeOf(const std::shared_ptr<IChunk>& chunk)
    {
        return chunk ? static_cast<Wide>(std::max<std::int64_t>(chunk->size(), 0)) : 0;
    }

    std::int64_t at(Wide before) const
    {
        if (m_sum == 0)
            return 0;
        if (m_sum == m_size)
            return static_cast<std::int64_t>(before);
        return std::min(m_size, static_cast<std::int64_t>(static_cast<Wide>(m_size) * (before / m_sum)));
    }

    std::span<const std::shared_ptr<IChunk>> m_chunks;
    std::int64_t m_start;
    std::int64_t m_size;
    Wide m_sum = 0;
};

/// The range up to a last byte that belongs to it. Of metadata, both may be anything.
FileRange rangeTo(std::int64_t start, std::int64_t last)
{
    const auto size = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(start) + 1;
    return {start, static_cast<std::int64_t>(size)};
}

} // namespace

std::optional<FileRange> fileRange(const IChunk& chunk)
{
    if (const auto* const raw = asExactly<ChunkRawData>(chunk))
        return FileRange{raw->offset, raw->m_size};
    if (const auto* const block = asExactly<ChunkPrescribe>(chunk))
        return FileRange{block->ofs, block->m_size};
    if (const auto* const package = asExactly<ChunkXps>(chunk))
        return FileRange{package->offset, package->m_size};
    if (const auto* const raw = asExactly<JobChunkPclXLRaw>(chunk))
        return rangeTo(raw->start, raw->end);
    if (const auto* const command = asExactly<JobChunkPclXLOperator>(chunk))
        return rangeTo(command->start, command->end);
    return std::nullopt;
}

std::vector<ChunkPlace> chunkPlaces(const Job& job, std::int64_t fileSize)
{
    const std::span<const std::shared_ptr<IChunk>> chunks = job.chunks;
    std::vector<ChunkPlace> places(chunks.size());
    std::size_t first = 0;
    std::int64_t start = 0;
    const auto fillUpTo = [&](std::size_t index, std::int64_t end) {
        const std::size_t count = index - first;
        Gap(chunks.subspan(first, count), start, std::max(start, end))
            .fill(std::span(places).subspan(first, count));
    };
    for (std::size_t index = 0; index < chunks.size(); ++index) {
        const std::optional<FileRange> range = chunks[index] ? fileRange(*chunks[index]) : std::nullopt;
        if (!range || !lies(*range, fileSize))
            continue;
        fillUpTo(index, range->offset);
        places[index] = {*range, true};
        first = index + 1;
        start = range->offset + range->size;
    }
    fillUpTo(chunks.size(), fileSize);
    return places;
}

} // namespace JobParser
