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

/// Bytes that stand in no file, as rewriting adds them.
class JOBPARSER_EXPORT ChunkText : public IChunk
{
public:
    explicit ChunkText(std::string bytes) : text(std::move(bytes)) {}
    ChunkText(UnserializationContext& context, const Torv::Variant& dto);

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override { return static_cast<std::int64_t>(text.size()); }

    std::string text;
};

} // namespace JobParser
