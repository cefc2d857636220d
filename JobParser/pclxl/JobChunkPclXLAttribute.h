#pragma once

#include <memory>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"
#include "JobParser/pclxl/PclXLAttributes.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class JobChunkPclXLAttributeValue;
class JobChunkPclXLRaw;
class UnserializationContext;

/// One attribute of an operator: a value, in memory or as a stretch of the job file, and whose value it is.
class JOBPARSER_EXPORT JobChunkPclXLAttribute : public IChunk
{
public:
    /// Keep a copy of the value, or of the range, which holds the value without the identifier.
    JobChunkPclXLAttribute(attribute_t id, const JobChunkPclXLAttributeValue& value);
    JobChunkPclXLAttribute(attribute_t id, const JobChunkPclXLRaw& raw);
    /// Reads "attribute" and "chunk". Throws JobParserException if there is no chunk.
    JobChunkPclXLAttribute(UnserializationContext& context, const Torv::Variant& dto);

    /// The identifier is always written in its form of one byte.
    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;

    attribute_t attribute;
    std::shared_ptr<IChunk> chunk; ///< The value; never null.
};

} // namespace JobParser
