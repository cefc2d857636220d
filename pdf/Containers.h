#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "pdf/Value.h"

namespace Pdf
{

/// What an array or a dictionary holds together with its copies: this head, and the elements behind it in the
/// same piece of memory.
struct ContainerNode {
    enum class Kind : std::uint8_t { Array, Dictionary };

    ContainerNode(Kind nodeKind, std::uint32_t nodeCapacity) : kind(nodeKind), capacity(nodeCapacity) {}

    Value* values() { return reinterpret_cast<Value*>(this + 1); }
    DictionaryEntry* entries() { return reinterpret_cast<DictionaryEntry*>(this + 1); }

    std::atomic<std::uint32_t> owners{1};
    const Kind kind;
    /// Somebody was given a way to change the values, and may still use it.
    bool isExposed = false;
    std::uint32_t size = 0;
    const std::uint32_t capacity;
    /// Links the nodes that wait to be destroyed.
    ContainerNode* next = nullptr;
};

/// The life of the nodes. None of it recurses: the depth of a tree is the file's to choose.
struct Containers {
    /// A node without elements, and room for so many. Throws std::length_error for more than 32 bits count.
    static ContainerNode* make(ContainerNode::Kind kind, std::size_t capacity);

    /// One more owner of the node, or a copy of it where it is exposed.
    static ContainerNode* share(ContainerNode* node);

    /// Gives up a node. Destroys it, and what nobody else owns below it, with the last owner.
    static void release(ContainerNode* node) noexcept;

    /// Makes `node` one of the kind that nobody else owns and that has room for one more element, if wanted.
    static void makeUnique(ContainerNode*& node, ContainerNode::Kind kind, bool forOneMore);

    /// An array, or a dictionary, that owns the node.
    static Array array(ContainerNode* node);
    static Dictionary dictionary(ContainerNode* node);

    /// The values of an array, or of the entries of a dictionary; the node has room for them.
    static void append(ContainerNode* node, Value&& value);
    static void append(ContainerNode* node, ByteString key, Value&& value);

    /// The value of a key, which is made as None if it is not there, for a moment's use: it is changed before
    /// anybody copies the dictionary.
    static Value& entry(Dictionary& dictionary, std::string_view key) { return dictionary.entry(key); }

private:
    static void copyInto(ContainerNode* source, ContainerNode* copy);
    static ContainerNode* nodeOf(const Value& value);
    static void setNode(Value& value, ContainerNode* node);
};

} // namespace Pdf
