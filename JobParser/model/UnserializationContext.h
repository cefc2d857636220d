#pragma once

#include <cstddef>
#include <cstdint>
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
    /// Throws JobParserException for a number that nobody has, for other kinds of values, for chunks that
    /// hold each other over 64 levels, and for references that stand for over 16777216 chunks altogether, the
    /// first 4096 of each not counted; Torv::VariantInvalidOperationException for a definition without
    /// "class", "id" or "dto", Torv::NoFactoryException for an unknown class, and what the chunk's own
    /// constructor throws.
    std::shared_ptr<IChunk> unserializeChunk(const Torv::Variant& value);

    /// The class tag for a class text of a file: a tag as it is, and of a full class name the part behind its
    /// last `Chunk`. Throws JobParserException for a full name without that.
    static std::string processChunkClass(const std::string& name);

private:
    /// What a chunk holds, itself included. What stands in several places counts in each.
    struct Extent {
        std::uint64_t chunks = 0;
        std::uint32_t levels = 0;
    };
    struct Known;
    class Chunks;

    std::shared_ptr<IChunk> referredChunk(std::int64_t id);
    std::shared_ptr<IChunk> makeChunk(const Torv::Variant& definition);
    void addInside(const Extent& extent);

    std::unique_ptr<Chunks> m_chunks;
    Extent m_inside; ///< Of the chunk being made, as far as its parts were made.
    std::uint64_t m_repeated = 0;
};

} // namespace JobParser
