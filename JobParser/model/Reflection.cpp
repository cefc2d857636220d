#include "JobParser/model/Reflection.h"

#include <algorithm>

#include "JobParser/IChunk.h"

#include "Torv/Ascii.h"
#include "Torv/Format.h"
#include "Torv/GenericException.h"

namespace JobParser
{
namespace
{

constexpr std::string_view classWord = "Chunk";

bool isWordCharacter(char c)
{
    const auto byte = static_cast<std::uint8_t>(c);
    return Torv::Ascii::isLetter(byte) || Torv::Ascii::isDigit(byte) || c == '_';
}

std::string tagOf(const std::type_info& type)
{
    std::string tag(Reflection::nameBehindChunk(type.name()));
    if (tag.empty())
        throw Torv::GenericException(
            Torv::format("Invalid chunk class. It must be ZZZChunkYYY. | class=%s", type.name()));
    // The names in metadata end with the letter that closes a nested name in the usual mangling. Compilers
    // that give readable names leave it out.
    if (std::string_view(type.name()).find("::") != std::string_view::npos)
        tag += 'E';
    return tag;
}

} // namespace

Torv::Factory Reflection::m_factory;
std::unordered_map<std::size_t, std::string> Reflection::m_hash2class;
std::unordered_map<std::size_t, Reflection::JsonAppender> Reflection::m_hash2appender;

void Reflection::registerChunkClass(const std::type_info& type, std::function<ChunkFactory> factory,
                                    JsonAppender appender)
{
    const std::string tag = tagOf(type);
    if (!m_factory.add(tag, std::move(factory)))
        throw Torv::GenericException(Torv::format("Duplicate chunk class. | class=%s", type.name()));
    if (!m_hash2class.emplace(type.hash_code(), tag).second)
        throw Torv::GenericException(
            Torv::format("Chunk class hash already exists. | class=%s", type.name()));
    m_hash2appender.emplace(type.hash_code(), appender);
}

template <typename Mapped>
const Mapped& Reflection::registered(const std::unordered_map<std::size_t, Mapped>& classes,
                                     const IChunk& chunk)
{
    const auto& type = typeid(chunk);
    const auto found = classes.find(type.hash_code());
    if (found == classes.end())
        throw Torv::GenericException(Torv::format("Chunk class is not registered | class=%s", type.name()));
    return found->second;
}

const std::string& Reflection::chunkClass(const IChunk& chunk)
{
    return registered(m_hash2class, chunk);
}

Reflection::JsonAppender Reflection::jsonAppender(const IChunk& chunk)
{
    return registered(m_hash2appender, chunk);
}

void Reflection::appendText(std::string& json, const IChunk& chunk, SerializationContext& context)
{
    const std::string text = chunk.toJson(context);
    // A text of megabytes is not to be moved once more for the few characters that follow it.
    constexpr std::size_t large = 65536;
    if (text.size() > large)
        json.reserve(json.size() + text.size() + large);
    json += text;
}

const std::function<Reflection::ChunkFactory>& Reflection::factory(const std::string& tag)
{
    return m_factory.get<ChunkFactory>(tag);
}

std::string_view Reflection::nameBehindChunk(std::string_view className)
{
    // A name is one line.
    if (className.find_first_of("\n\r") != std::string_view::npos)
        return {};
    // Only word characters may stand between the word and the end, so that it stands in their last run.
    const auto run = static_cast<std::size_t>(
        std::find_if_not(className.rbegin(), className.rend(), isWordCharacter) - className.rbegin());
    const std::string_view word = className.substr(className.size() - run);
    if (word.size() <= classWord.size())
        return {};
    const std::size_t found = word.rfind(classWord, word.size() - classWord.size() - 1);
    return found == std::string_view::npos ? std::string_view{} : word.substr(found + classWord.size());
}

} // namespace JobParser
