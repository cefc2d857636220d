#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "JobParser/Export.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class IChunk;

/// Makes chunks from one metadata text and resolves the references between them.
class JOBPARSER_EXPORT UnserializationContext
{
public:
    /// `expectedChunks` only saves time.
    explicit UnserializationContext(std::size_t expectedChunks = 0);
    ~UnserializationContext();
    UnserializationContext(const UnserializationContext&) = delete;
    UnserializationContext& operator=(const UnserializationContext&) = delete;

    /// The chunk that a value stands for: null, the number of a chunk made before, or a definition.
    ///
    /// Throws JobParserException for a number that nobody has and for other kinds of values,
    /// Torv::VariantInvalidOperationException for a definition without "class", "id" or "dto",
    /// Torv::NoFactoryException for an unknown class, and what the chunk's own constructor throws.
    std::shared_ptr<IChunk> unserializeChunk(const Torv::Variant& value);

    /// The class tag for a class text of a file: a tag as it is, and of a full class name the part behind its
    /// last `Chunk`. Throws JobParserException for a full name without that.
    static std::string processChunkClass(const std::string& name);

private:
    std::shared_ptr<IChunk> makeChunk(const Torv::Variant& definition);

    class Chunks;

    std::unique_ptr<Chunks> m_chunks;
};

} // namespace JobParser
