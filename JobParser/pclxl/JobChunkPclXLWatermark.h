#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// A group of chunks that is written in the place where it stands. Parsing makes none: it is for content that
/// a host adds.
class JOBPARSER_EXPORT JobChunkPclXLWatermark : public IChunk
{
public:
    JobChunkPclXLWatermark() = default;
    /// Reads "size", which is believed, and "chunks".
    JobChunkPclXLWatermark(UnserializationContext& context, const Torv::Variant& dto);

    /// Appends a chunk and counts the bytes that it has now. A null pointer is kept and has none.
    void addChunk(const std::shared_ptr<IChunk>& chunk);
    /// To be changed with care: size() counts what addChunk saw.
    std::vector<std::shared_ptr<IChunk>>& getChunks() { return chunks; }

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override { return m_size; }

    std::int64_t m_size = 0; ///< Bytes of all chunks, as addChunk counted them.
    std::vector<std::shared_ptr<IChunk>> chunks;
};

} // namespace JobParser
