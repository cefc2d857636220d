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
class UnserializationContext;

/// The registry that links chunk classes to the names that they have in metadata.
///
/// Filled by Library::init before the first parse and only read afterwards, then on any thread.
class JOBPARSER_EXPORT Reflection
{
public:
    /// Makes a chunk from the data that its toJson wrote.
    using ChunkFactory = std::shared_ptr<IChunk>(UnserializationContext&, const Torv::Variant&);

    /// Registers a class. Throws Torv::GenericException if its name has no `Chunk` in it or is registered.
    static void registerChunkClass(const std::type_info& type, std::function<ChunkFactory> factory);

    /// Registers T, which is made from a context and the data, or has no data and is made from nothing.
    template <typename T> static void registerChunkClass()
    {
        registerChunkClass(typeid(T), [](UnserializationContext& context, const Torv::Variant& dto) {
            if constexpr (std::is_constructible_v<T, UnserializationContext&, const Torv::Variant&>)
                return std::shared_ptr<IChunk>(std::make_shared<T>(context, dto));
            else
                return std::shared_ptr<IChunk>(std::make_shared<T>());
        });
    }

    /// The tag of a chunk's class. Throws Torv::GenericException if the class is not registered.
    static const std::string& chunkClass(const IChunk& chunk);

    /// The factory for a tag. Throws Torv::NoFactoryException if there is none.
    static const std::function<ChunkFactory>& factory(const std::string& tag);

    /// What stands behind the last `Chunk` of a class name, if that is one or more word characters up to the
    /// end; otherwise empty.
    static std::string_view nameBehindChunk(std::string_view className);

private:
    static Torv::Factory m_factory;
    static std::unordered_map<std::size_t, std::string> m_hash2class;
};

} // namespace JobParser
