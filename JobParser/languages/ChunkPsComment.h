#pragma once

#include <string>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// A `%%` comment of a PostScript body, as in `%%Pages: 3`, with all line ends behind it.
class JOBPARSER_EXPORT ChunkPsComment : public IChunk
{
public:
    explicit ChunkPsComment(const std::string& text) : comment(text) {}
    /// Reads "comment".
    ChunkPsComment(UnserializationContext& context, const Torv::Variant& dto);

    /// Writes the text up to its first zero byte. A comment that was parsed has none, so that only metadata
    /// of strangers can make it write less than size() says.
    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    /// Logs the text without the white space around it.
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    /// Appends the same text; see Reflection.
    void appendJson(std::string& json, SerializationContext& context) const;
    std::int64_t size() const override { return static_cast<std::int64_t>(comment.size()); }

    std::string comment;
};

} // namespace JobParser
