#pragma once

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace JobParser
{

/// Marks where the first page of a PCL 5 job begins. Writes nothing.
class JOBPARSER_EXPORT ChunkFirstPageStart : public IChunk
{
public:
    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;
};

} // namespace JobParser
