#include "JobParser/model/UnserializationContext.h"

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>

#include "JobParser/IChunk.h"
#include "JobParser/JobParserException.h"
#include "JobParser/model/Reflection.h"

#include "Torv/Format.h"
#include "Torv/Variant.h"

namespace JobParser
{

/// The chunks made so far, by id.
struct UnserializationContext::Chunks {
    boost::unordered_flat_map<std::int32_t, std::shared_ptr<IChunk>> byId;
};

namespace
{

std::int32_t asId(long long number)
{
    return static_cast<std::int32_t>(number);
}

} // namespace

UnserializationContext::UnserializationContext(std::size_t expectedChunks)
    : m_chunks(std::make_unique<Chunks>())
{
    m_chunks->byId.reserve(expectedChunks);
}

UnserializationContext::~UnserializationContext() = default;

std::shared_ptr<IChunk> UnserializationContext::unserializeChunk(const Torv::Variant& value)
{
    if (value.isNull())
        return nullptr;
    if (value.isInteger()) {
        const long long id = value.toInt64();
        const auto found = id == asId(id) ? m_chunks->byId.find(asId(id)) : m_chunks->byId.end();
        if (found == m_chunks->byId.end())
            throw JobParserException(Torv::format("Unknown chunk ID | id=%I64d", id));
        return found->second;
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
    m_chunks->byId.try_emplace(id, chunk);
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
