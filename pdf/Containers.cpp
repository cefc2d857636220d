#include "pdf/Containers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Pdf
{
namespace
{

using Kind = ContainerNode::Kind;

static_assert(sizeof(ContainerNode) % alignof(DictionaryEntry) == 0);

constexpr std::size_t firstCapacity = 4;
// As many as a node can count, and as there can be memory for.
constexpr std::size_t mostElements =
    std::min<std::size_t>(std::numeric_limits<std::uint32_t>::max(),
                          std::numeric_limits<std::ptrdiff_t>::max() / sizeof(DictionaryEntry) - 1);

bool giveUp(ContainerNode* node)
{
    // A sole owner needs no exchange with others.
    return node->owners.load(std::memory_order_acquire) == 1 ||
           node->owners.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

void destroy(ContainerNode* node)
{
    if (node->kind == Kind::Array)
        std::destroy_n(node->values(), node->size);
    else
        std::destroy_n(node->entries(), node->size);
    node->~ContainerNode();
    ::operator delete(node);
}

template <typename Visit> void forEachValue(ContainerNode* node, Visit visit)
{
    if (node->kind == Kind::Array) {
        for (Value& value : std::span(node->values(), node->size))
            visit(value);
    } else {
        for (DictionaryEntry& entry : std::span(node->entries(), node->size))
            visit(entry.value);
    }
}

struct Release {
    void operator()(ContainerNode* node) const { Containers::release(node); }
};

using OwnedNode = std::unique_ptr<ContainerNode, Release>;

// One level: what lies below is shared.
void appendElements(ContainerNode* from, ContainerNode* to)
{
    for (std::uint32_t index = 0; index < from->size; ++index) {
        if (from->kind == Kind::Array)
            Containers::append(to, Value(from->values()[index]));
        else
            Containers::append(to, from->entries()[index].key, Value(from->entries()[index].value));
    }
}

void moveElements(ContainerNode* from, ContainerNode* to)
{
    for (std::uint32_t index = 0; index < from->size; ++index) {
        if (from->kind == Kind::Array) {
            Containers::append(to, std::move(from->values()[index]));
        } else {
            DictionaryEntry& entry = from->entries()[index];
            Containers::append(to, std::move(entry.key), std::move(entry.value));
        }
    }
}

} // namespace

ContainerNode* Containers::make(Kind kind, std::size_t capacity)
{
    if (capacity > mostElements)
        throw std::length_error("Too many values in one PDF object");
    const std::size_t elementSize = kind == Kind::Array ? sizeof(Value) : sizeof(DictionaryEntry);
    void* const memory = ::operator new(sizeof(ContainerNode) + capacity * elementSize);
    return new (memory) ContainerNode(kind, static_cast<std::uint32_t>(capacity));
}

Array Containers::array(ContainerNode* node)
{
    Array result;
    result.m_node = node;
    return result;
}

Dictionary Containers::dictionary(ContainerNode* node)
{
    Dictionary result;
    result.m_node = node;
    return result;
}

void Containers::append(ContainerNode* node, Value&& value)
{
    new (node->values() + node->size) Value(std::move(value));
    ++node->size;
}

void Containers::append(ContainerNode* node, ByteString key, Value&& value)
{
    new (node->entries() + node->size) DictionaryEntry{std::move(key), std::move(value)};
    ++node->size;
}

ContainerNode* Containers::nodeOf(const Value& value)
{
    if (const auto* array = std::get_if<Array>(&value))
        return array->m_node;
    if (const auto* dictionary = std::get_if<Dictionary>(&value))
        return dictionary->m_node;
    return nullptr;
}

void Containers::setNode(Value& value, ContainerNode* node)
{
    if (auto* array = std::get_if<Array>(&value))
        array->m_node = node;
    else if (auto* dictionary = std::get_if<Dictionary>(&value))
        dictionary->m_node = node;
}

void Containers::release(ContainerNode* node) noexcept
{
    if (node == nullptr || !giveUp(node))
        return;
    node->next = nullptr;
    for (ContainerNode* pending = node; pending != nullptr;) {
        ContainerNode* const last = pending;
        pending = last->next;
        forEachValue(last, [&pending](Value& value) {
            ContainerNode* const child = nodeOf(value);
            if (child == nullptr)
                return;
            setNode(value, nullptr);
            if (giveUp(child)) {
                child->next = pending;
                pending = child;
            }
        });
        destroy(last);
    }
}

ContainerNode* Containers::share(ContainerNode* node)
{
    if (node == nullptr)
        return nullptr;
    if (!node->isExposed) {
        node->owners.fetch_add(1, std::memory_order_relaxed);
        return node;
    }
    OwnedNode copy(make(node->kind, node->size));
    copyInto(node, copy.get());
    return copy.release();
}

void Containers::makeUnique(ContainerNode*& node, Kind kind, bool forOneMore)
{
    const std::size_t size = node != nullptr ? node->size : 0;
    const std::size_t needed = size + (forOneMore ? 1 : 0);
    const bool isSole = node != nullptr && node->owners.load(std::memory_order_acquire) == 1;
    if (isSole && needed <= node->capacity)
        return;
    // A copy of what is shared is made to be changed a little; what grows goes on growing.
    const std::size_t capacity = isSole ? std::max(firstCapacity, size + size / 2 + 1) : needed + 1;
    OwnedNode unique(make(kind, capacity));
    if (isSole) {
        unique->isExposed = node->isExposed;
        moveElements(node, unique.get());
    } else if (node != nullptr) {
        appendElements(node, unique.get());
    }
    release(std::exchange(node, unique.release()));
}

// Copies a node level by level, as far down as nodes are exposed. What lies below those is shared.
void Containers::copyInto(ContainerNode* source, ContainerNode* copy)
{
    struct Task {
        ContainerNode* source;
        ContainerNode* copy;
    };
    std::vector<Task> tasks{{source, copy}};

    const auto copied = [&tasks](const Value& value) {
        ContainerNode* const from = nodeOf(value);
        if (from == nullptr || !from->isExposed)
            return value;
        OwnedNode to(make(from->kind, from->size));
        tasks.push_back({from, to.get()});
        return from->kind == Kind::Array ? Value(array(to.release())) : Value(dictionary(to.release()));
    };

    while (!tasks.empty()) {
        const Task task = tasks.back();
        tasks.pop_back();
        for (std::uint32_t index = 0; index < task.source->size; ++index) {
            if (task.source->kind == Kind::Array) {
                append(task.copy, copied(task.source->values()[index]));
            } else {
                const DictionaryEntry& entry = task.source->entries()[index];
                append(task.copy, entry.key, copied(entry.value));
            }
        }
    }
}

} // namespace Pdf
