#pragma once

#include <cstdint>
#include <memory>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class JobChunkPclXLRawWithData;
class UnserializationContext;

/// Data behind an operator, such as an image or a font, with the length in front. Parsing makes none: it is
/// for content that a host adds.
class JOBPARSER_EXPORT JobChunkPclXLEmbeddedData : public IChunk
{
public:
    JobChunkPclXLEmbeddedData() = default;
    /// Reads "data"; null stands for no data.
    JobChunkPclXLEmbeddedData(UnserializationContext& context, const Torv::Variant& dto);

    /// A null pointer takes the data away.
    void setData(const std::shared_ptr<JobChunkPclXLRawWithData>& newData);

    /// The length takes one byte up to 255 and four above.
    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;

    std::shared_ptr<IChunk> data; ///< May be null.

private:
    std::int64_t dataSize() const { return data ? data->size() : 0; }
};

} // namespace JobParser
