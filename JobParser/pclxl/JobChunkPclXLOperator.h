#pragma once

#include <memory>
#include <vector>

#include "JobParser/Export.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/pclxl/PclXLTags.h"

namespace JobParser
{

class JobChunkPclXLAttribute;

/// An operator that was understood, with the attributes in front of it. The range covers both; what is
/// written are the attributes as they are now, and the operator.
class JOBPARSER_EXPORT JobChunkPclXLOperator : public JobChunkPclXLRaw
{
public:
    JobChunkPclXLOperator(tag_t op, std::int64_t rangeStart, std::int64_t rangeEnd);
    /// Reads "operator", "start", "end" and "attributes". Throws JobParserException for an element that is no
    /// attribute.
    JobChunkPclXLOperator(UnserializationContext& context, const Torv::Variant& dto);

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;

    tag_t m_operator;
    std::vector<std::shared_ptr<JobChunkPclXLAttribute>> attributes; ///< None is null.
};

} // namespace JobParser
