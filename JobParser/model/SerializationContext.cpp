#include "JobParser/model/SerializationContext.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>

#include "JobParser/IChunk.h"
#include "JobParser/model/Reflection.h"

#include "Torv/Json/Json.h"

namespace JobParser
{

/// The chunks written so far, by identity.
struct SerializationContext::Ids {
    boost::unordered_flat_map<std::shared_ptr<IChunk>, std::int32_t, std::hash<std::shared_ptr<IChunk>>>
        byChunk;
};

SerializationContext::SerializationContext() : m_ids(std::make_unique<Ids>()) {}

SerializationContext::~SerializationContext() = default;

std::string SerializationContext::serializeChunk(const std::shared_ptr<IChunk>& chunk)
{
    std::string json;
    appendChunk(json, chunk);
    return json;
}

std::string SerializationContext::serializeAlone(const IChunk& chunk)
{
    std::string json;
    appendDefinition(json, chunk, ++m_lastId);
    return json;
}

void SerializationContext::appendListed(std::string& json, const std::shared_ptr<IChunk>& chunk)
{
    // What nobody but the list holds stands nowhere else, so that nothing can refer to it. Nearly all chunks
    // are so, and keeping them in mind would cost more than writing them.
    if (chunk.use_count() == 1)
        appendDefinition(json, *chunk, ++m_lastId);
    else
        appendChunk(json, chunk);
}

void SerializationContext::appendChunk(std::string& json, const std::shared_ptr<IChunk>& chunk)
{
    if (!chunk) {
        json += "null";
        return;
    }
    // The id is taken before the chunk writes itself, so that what contains others has the lower id.
    const auto [place, isNew] = m_ids->byChunk.try_emplace(chunk, m_lastId + 1);
    if (isNew)
        appendDefinition(json, *chunk, ++m_lastId);
    else
        Torv::Json::appendNumber(json, place->second);
}

void SerializationContext::appendDefinition(std::string& json, const IChunk& chunk, std::int32_t id)
{
    const std::type_info& type = typeid(chunk);
    const auto known = std::ranges::find(m_knownClasses, &type, &KnownClass::type);
    json += known != m_knownClasses.end() ? known->start : addKnownClass(chunk);
    Torv::Json::appendNumber(json, id);
    json += ",\"dto\":";
    std::string dto = chunk.toJson(*this);
    // A text of megabytes is not to be moved once more for the few characters that follow it.
    constexpr std::size_t large = 65536;
    if (dto.size() > large)
        json.reserve(json.size() + dto.size() + large);
    json += dto;
    json += '}';
    dto.clear();
    m_spareText = std::move(dto);
}

const std::string& SerializationContext::addKnownClass(const IChunk& chunk)
{
    KnownClass known{&typeid(chunk), "{\"class\":"};
    Torv::Json::appendString(known.start, Reflection::chunkClass(chunk));
    known.start += ",\"id\":";
    return m_knownClasses.emplace_back(std::move(known)).start;
}

} // namespace JobParser
