#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "JobParser/Export.h"

namespace JobParser
{

class IChunk;

/// Gives chunks their identity while one metadata text is written: a chunk that stands in several places is
/// written once and referred to afterwards. Keeps the chunks that it has seen alive.
class JOBPARSER_EXPORT SerializationContext
{
public:
    SerializationContext();
    ~SerializationContext();
    SerializationContext(const SerializationContext&) = delete;
    SerializationContext& operator=(const SerializationContext&) = delete;

    /// The JSON text of a chunk: null for a null pointer, the number of a chunk that was written before, and
    /// otherwise an object. Throws Torv::GenericException if the chunk's class is not registered.
    std::string serializeChunk(const std::shared_ptr<IChunk>& chunk);

    /// The same for a part of a chunk, whose toJson calls it: one that the chunk alone holds stands nowhere
    /// else, and is not kept in mind.
    template <typename Chunk> std::string serializePart(const std::shared_ptr<Chunk>& part)
    {
        return part.use_count() == 1 ? serializeAlone(*part) : serializeChunk(part);
    }

    /// Appends the text of an element of a list of chunks. The list stays as it is until all of it is
    /// written, and has not been written in this context before.
    void appendListed(std::string& json, const std::shared_ptr<IChunk>& chunk);

private:
    struct Ids;

    std::string serializeAlone(const IChunk& chunk);
    void appendChunk(std::string& json, const std::shared_ptr<IChunk>& chunk);
    void appendDefinition(std::string& json, const IChunk& chunk, std::int32_t id);
    /// What stands in front of the data of chunks of some class. A job has few classes, and their chunks take
    /// turns.
    struct KnownClass {
        const std::type_info* type;
        std::string head;      ///< With room for an id and what is behind it.
        std::size_t startSize; ///< Of the head, up to the id.
        void (*appendJson)(std::string& json, const IChunk& chunk, SerializationContext& context);
    };

    KnownClass& knownClass(const IChunk& chunk);

    std::unique_ptr<Ids> m_ids;
    std::vector<KnownClass> m_knownClasses;
    std::int32_t m_lastId = 1;
};

} // namespace JobParser
