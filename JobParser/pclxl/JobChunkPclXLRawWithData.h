#pragma once

#include <cstdint>
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

/// Bytes that stand in no job file. Parsing makes none: it is for content that a host adds.
class JOBPARSER_EXPORT JobChunkPclXLRawWithData : public IChunk
{
public:
    JobChunkPclXLRawWithData() = default;
    /// Reads "rawData", pairs of hexadecimal digits in either case. Another character counts as the digit 0,
    /// and an odd last one is left out.
    JobChunkPclXLRawWithData(UnserializationContext& context, const Torv::Variant& dto);

    void setData(std::vector<std::uint8_t>&& newData);
    std::vector<std::uint8_t>& getData() { return data; }

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override { return static_cast<std::int64_t>(data.size()); }

    std::vector<std::uint8_t> data;
};

} // namespace JobParser
