#pragma once

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// A PRESCRIBE block, as a range of the job file.
class JOBPARSER_EXPORT ChunkPrescribe : public IChunk
{
public:
    ChunkPrescribe(std::int64_t rangeOffset, std::int64_t rangeSize) : ofs(rangeOffset), m_size(rangeSize) {}
    /// Reads "ofs" and "size". Throws JobParserException for a size below 0.
    ChunkPrescribe(UnserializationContext& context, const Torv::Variant& dto);

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override { return m_size; }

    std::int64_t ofs;    ///< Of the `!` in the file.
    std::int64_t m_size; ///< Bytes; not negative.
};

} // namespace JobParser
