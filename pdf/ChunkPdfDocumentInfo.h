#pragma once

#include <memory>
#include <string>
#include <utility>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Pdf::Parser
{
class DocumentInfo;
}

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// The summary of a PDF, beside the raw chunk that holds its bytes. Saves nothing.
class JOBPARSER_EXPORT ChunkPdfDocumentInfo : public IChunk
{
public:
    explicit ChunkPdfDocumentInfo(std::shared_ptr<Pdf::Parser::DocumentInfo> info)
        : documentInfo(std::move(info))
    {
    }
    /// Reads the text under "info". Throws what Pdf::Parser::Parser::parse throws.
    ChunkPdfDocumentInfo(UnserializationContext& context, const Torv::Variant& dto);

    void save(JobFile&, Torv::IO::IStream&) const override {}
    void dump(Torv::Log::ILog& log) override;
    /// The summary as PDF text, under "info". Throws JobParserException if an object cannot be written, or if
    /// the text is longer than 512 MiB, to which many pages with large common resources may grow.
    std::string toJson(SerializationContext& context) const override;
    /// Appends the same text; see Reflection.
    void appendJson(std::string& json, SerializationContext& context) const;
    std::int64_t size() const override { return 0; }

    std::shared_ptr<Pdf::Parser::DocumentInfo> documentInfo; ///< Not null.
};

} // namespace JobParser
