#include "JobParser/model/SerializationContext.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

#include "JobParser/IChunk.h"
#include "JobParser/model/Reflection.h"

#include "Torv/Json/Json.h"

namespace JobParser
{
namespace
{

constexpr std::string_view behindId = ",\"dto\":";
constexpr std::size_t mostIdDigits = 11;

} // namespace

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
    KnownClass& known = knownClass(chunk);
    char* const idStart = known.head.data() + known.startSize;
    char* const idEnd = std::to_chars(idStart, idStart + mostIdDigits, id).ptr;
    std::memcpy(idEnd, behindId.data(), behindId.size());
    json.append(known.head.data(), static_cast<std::size_t>(idEnd - known.head.data()) + behindId.size());
    known.appendJson(json, chunk, *this);
    json += '}';
}

SerializationContext::KnownClass& SerializationContext::knownClass(const IChunk& chunk)
{
    const std::type_info& type = typeid(chunk);
    const auto known = std::ranges::find(m_knownClasses, &type, &KnownClass::type);
    if (known != m_knownClasses.end())
        return *known;
    std::string head = "{\"class\":";
    Torv::Json::appendString(head, Reflection::chunkClass(chunk));
    head += ",\"id\":";
    const std::size_t startSize = head.size();
    head.append(mostIdDigits + behindId.size(), ' ');
    return m_knownClasses.emplace_back(
        KnownClass{&type, std::move(head), startSize, Reflection::jsonAppender(chunk)});
}

} // namespace JobParser
