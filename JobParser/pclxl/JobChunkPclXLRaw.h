#pragma once

#include <cstdint>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// A stretch of a PCL XL stream, by its first and last byte in the job file.
class JOBPARSER_EXPORT JobChunkPclXLRaw : public IChunk
{
public:
    /// `rangeEnd` is the last byte; one less than `rangeStart` stands for no byte.
    JobChunkPclXLRaw(std::int64_t rangeStart, std::int64_t rangeEnd) : start(rangeStart), end(rangeEnd) {}
    /// Reads "start" and "end". Throws JobParserException for a range of negative size.
    JobChunkPclXLRaw(UnserializationContext& context, const Torv::Variant& dto);

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;

    std::int64_t start; ///< Of the first byte in the file.
    std::int64_t end;   ///< Of the last byte.
};

} // namespace JobParser
