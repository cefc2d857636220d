#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <unordered_map>

#include "JobParser/Export.h"

#include "Torv/Factory.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class IChunk;
class SerializationContext;
class UnserializationContext;

/// The registry that links chunk classes to the names that they have in metadata.
///
/// Filled by Library::init before the first parse and only read afterwards, then on any thread.
class JOBPARSER_EXPORT Reflection
{
public:
    /// Makes a chunk from the data that its toJson wrote.
    using ChunkFactory = std::shared_ptr<IChunk>(UnserializationContext&, const Torv::Variant&);

    /// Appends what a chunk's toJson gives.
    using JsonAppender = void (*)(std::string& json, const IChunk& chunk, SerializationContext& context);

    /// Registers a class. Throws Torv::GenericException if its name has no `Chunk` in it or is registered.
    static void registerChunkClass(const std::type_info& type, std::function<ChunkFactory> factory,
                                   JsonAppender appender = appendText);

    /// Registers T, which is made from a context and the data, or has no data and is made from nothing. A
    /// class of which jobs have many may write its data in appendJson, too, which then serves in place of
    /// toJson; one that it inherits does not, since a class may have data of its own.
    template <typename T> static void registerChunkClass()
    {
        registerChunkClass(
            typeid(T),
            [](UnserializationContext& context, const Torv::Variant& dto) {
                if constexpr (std::is_constructible_v<T, UnserializationContext&, const Torv::Variant&>)
                    return std::shared_ptr<IChunk>(std::make_shared<T>(context, dto));
                else
                    return std::shared_ptr<IChunk>(std::make_shared<T>());
            },
            hasOwnAppendJson<T> ? appendJson<T> : appendText);
    }

    /// The tag of a chunk's class. Throws Torv::GenericException if the class is not registered.
    static const std::string& chunkClass(const IChunk& chunk);

    /// How the data of chunks of that class is written. Throws as chunkClass does.
    static JsonAppender jsonAppender(const IChunk& chunk);

    /// The factory for a tag. Throws Torv::NoFactoryException if there is none.
    static const std::function<ChunkFactory>& factory(const std::string& tag);

    /// What stands behind the last `Chunk` of a class name, if that is one or more word characters up to the
    /// end; otherwise empty.
    static std::string_view nameBehindChunk(std::string_view className);

private:
    template <typename T> static constexpr bool hasOwnAppendJson = requires
    {
        requires std::is_same_v<decltype(&T::appendJson),
                                void (T::*)(std::string&, SerializationContext&) const>;
    };

    template <typename T>
    static void appendJson(std::string& json, const IChunk& chunk, SerializationContext& context)
    {
        if constexpr (hasOwnAppendJson<T>)
            static_cast<const T&>(chunk).appendJson(json, context);
    }

    static void appendText(std::string& json, const IChunk& chunk, SerializationContext& context);
    template <typename Mapped>
    static const Mapped& registered(const std::unordered_map<std::size_t, Mapped>& classes,
                                    const IChunk& chunk);

    static Torv::Factory m_factory;
    static std::unordered_map<std::size_t, std::string> m_hash2class;
    static std::unordered_map<std::size_t, JsonAppender> m_hash2appender;
};

} // namespace JobParser
