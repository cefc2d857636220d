#pragma once

#include <string>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"
#include "pdf/Document.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// PDF bytes that stand in no file. Parsing makes none; they come from metadata.
class JOBPARSER_EXPORT ChunkPdf : public IChunk, public Pdf::Document
{
public:
    ChunkPdf(UnserializationContext& context, const Torv::Variant& dto);

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override { return static_cast<std::int64_t>(pdf.size()); }

    std::string pdf;
};

} // namespace JobParser
