#include "JobParser/model/UnserializationContext.h"

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <vector>

#include "JobParser/IChunk.h"
#include "JobParser/JobParserException.h"
#include "JobParser/model/Reflection.h"

#include "Torv/Format.h"
#include "Torv/Variant.h"

namespace JobParser
{

/// The chunks made so far, by id.
///
/// Our own texts number chunks in the order in which they stand, so that nearly all of them need no hashing.
class UnserializationContext::Chunks
{
public:
    explicit Chunks(std::size_t expected) { m_inOrder.reserve(expected); }

    /// Null if nobody has the id.
    std::shared_ptr<IChunk> find(std::int64_t id) const
    {
        if (id >= firstId && id < nextInOrder())
            return m_inOrder[static_cast<std::size_t>(id - firstId)];
        const auto found = m_others.find(id);
        return found == m_others.end() ? nullptr : found->second;
    }

    /// An id that is taken stays with the chunk that has it.
    void add(std::int64_t id, const std::shared_ptr<IChunk>& chunk)
    {
        if (id == nextInOrder() && !m_others.contains(id))
            m_inOrder.push_back(chunk);
        else if (id < firstId || id >= nextInOrder())
            m_others.try_emplace(id, chunk);
    }

private:
    static constexpr std::int64_t firstId = 2;

    std::int64_t nextInOrder() const { return firstId + static_cast<std::int64_t>(m_inOrder.size()); }

    std::vector<std::shared_ptr<IChunk>> m_inOrder;
    boost::unordered_flat_map<std::int64_t, std::shared_ptr<IChunk>> m_others;
};

UnserializationContext::UnserializationContext(std::size_t expectedChunks)
    : m_chunks(std::make_unique<Chunks>(expectedChunks))
{
}

UnserializationContext::~UnserializationContext() = default;

std::shared_ptr<IChunk> UnserializationContext::unserializeChunk(const Torv::Variant& value)
{
    if (value.isNull())
        return nullptr;
    if (value.isInteger()) {
        const long long id = value.toInt64();
        std::shared_ptr<IChunk> chunk = m_chunks->find(id);
        if (!chunk)
            throw JobParserException(Torv::format("Unknown chunk ID | id=%I64d", id));
        return chunk;
    }
    if (!value.isObject())
        throw JobParserException("Cannot unserialize chunk. Chunk must be a map");
    return makeChunk(value);
}

std::shared_ptr<IChunk> UnserializationContext::makeChunk(const Torv::Variant& definition)
{
    const std::string tag = processChunkClass(definition["class"].toString());
    const std::int32_t id = definition["id"].toInt();
    const Torv::Variant dto = definition["dto"];
    std::shared_ptr<IChunk> chunk = Reflection::factory(tag)(*this, dto);
    m_chunks->add(id, chunk);
    return chunk;
}

std::string UnserializationContext::processChunkClass(const std::string& name)
{
    if (name.find(':') == std::string::npos)
        return name;
    const std::string_view tag = Reflection::nameBehindChunk(name);
    if (tag.empty())
        throw JobParserException(Torv::format("Unknown chunk class name | name=%s", name.c_str()));
    return std::string(tag);
}

} // namespace JobParser
