#include "JobParser/model/UnserializationContext.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <utility>
#include <vector>

#include "JobParser/IChunk.h"
#include "JobParser/JobParserException.h"
#include "JobParser/model/Reflection.h"

#include "Torv/Format.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

// References reach as deep as a file likes, where definitions are held back by the limit of JSON; and a few
// of them, each to a chunk that holds the one before it twice, would stand for more chunks than anybody can
// save. What stands on a page may do so on any number of pages, so that only what is more than that counts.
constexpr std::uint32_t maxNesting = 64;
constexpr std::uint64_t maxOnPage = 4096;
constexpr std::uint64_t maxRepeated = 16777216;

} // namespace

/// A chunk, and what hangs on it.
struct UnserializationContext::Known {
    std::shared_ptr<IChunk> chunk;
    Extent extent;
};

/// The chunks made so far, by id.
///
/// Our own texts number chunks in the order in which they stand, so that nearly all of them need no hashing.
class UnserializationContext::Chunks
{
public:
    explicit Chunks(std::size_t expected) { m_inOrder.reserve(expected); }

    /// Null if nobody has the id. Valid until the next call of add.
    const Known* find(std::int64_t id) const
    {
        if (id >= firstId && id < nextInOrder())
            return &m_inOrder[static_cast<std::size_t>(id - firstId)];
        const auto found = m_others.find(id);
        return found == m_others.end() ? nullptr : &found->second;
    }

    /// An id that is taken stays with the chunk that has it.
    void add(std::int64_t id, const Known& chunk)
    {
        if (id == nextInOrder() && !m_others.contains(id))
            m_inOrder.push_back(chunk);
        else if (id < firstId || id >= nextInOrder())
            m_others.try_emplace(id, chunk);
    }

private:
    static constexpr std::int64_t firstId = 2;

    std::int64_t nextInOrder() const { return firstId + static_cast<std::int64_t>(m_inOrder.size()); }

    std::vector<Known> m_inOrder;
    boost::unordered_flat_map<std::int64_t, Known> m_others;
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
    if (value.isInteger())
        return referredChunk(value.toInt64());
    if (!value.isObject())
        throw JobParserException("Cannot unserialize chunk. Chunk must be a map");
    return makeChunk(value);
}

std::shared_ptr<IChunk> UnserializationContext::referredChunk(std::int64_t id)
{
    const Known* const known = m_chunks->find(id);
    if (known == nullptr)
        throw JobParserException(Torv::format("Unknown chunk ID | id=%I64d", id));
    m_repeated += std::max(known->extent.chunks, maxOnPage) - maxOnPage;
    if (m_repeated > maxRepeated)
        throw JobParserException("References in metadata stand for too many chunks");
    addInside(known->extent);
    return known->chunk;
}

std::shared_ptr<IChunk> UnserializationContext::makeChunk(const Torv::Variant& definition)
{
    const std::string tag = processChunkClass(definition["class"].toString());
    const std::int32_t id = definition["id"].toInt();
    const Torv::Variant dto = definition["dto"];
    const auto& factory = Reflection::factory(tag);
    const Extent outer = std::exchange(m_inside, {});
    std::shared_ptr<IChunk> chunk = factory(*this, dto);
    const Extent extent{m_inside.chunks + 1, m_inside.levels + 1};
    if (extent.levels > maxNesting)
        throw JobParserException("Chunks in metadata nest too deep");
    m_inside = outer;
    addInside(extent);
    m_chunks->add(id, {chunk, extent});
    return chunk;
}

void UnserializationContext::addInside(const Extent& extent)
{
    m_inside.chunks += extent.chunks;
    m_inside.levels = std::max(m_inside.levels, extent.levels);
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
