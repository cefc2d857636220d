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

/// A range of the job file, kept by offset and size alone.
class JOBPARSER_EXPORT ChunkRawData : public IChunk
{
public:
    ChunkRawData(std::int64_t rangeOffset, std::int64_t rangeSize) : offset(rangeOffset), m_size(rangeSize) {}
    /// Reads "offset" and "size". Throws JobParserException for a size below 0.
    ChunkRawData(UnserializationContext& context, const Torv::Variant& dto);

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    /// Appends the same text; see Reflection.
    void appendJson(std::string& json, SerializationContext& context) const;
    std::int64_t size() const override { return m_size; }

    std::int64_t offset; ///< Of the first byte in the file.
    std::int64_t m_size; ///< Bytes; not negative.
};

} // namespace JobParser
