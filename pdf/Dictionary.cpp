#include "pdf/Dictionary.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "pdf/Containers.h"

namespace Pdf
{
namespace
{

auto placeOf(std::span<const DictionaryEntry> entries, std::string_view key)
{
    return std::lower_bound(
        entries.begin(), entries.end(), key,
        [](const DictionaryEntry& entry, std::string_view wanted) { return entry.key.view() < wanted; });
}

// Most dictionaries are so small that looking at each key is faster than looking for its place.
constexpr std::size_t smallSize = 12;

const DictionaryEntry* findEntry(std::span<const DictionaryEntry> entries, std::string_view key)
{
    if (entries.size() > smallSize) {
        const auto place = placeOf(entries, key);
        return place != entries.end() && place->key == key ? &*place : nullptr;
    }
    // Keys of one size mostly differ in the first byte.
    const auto isSame = [key](std::string_view other) {
        return other.size() == key.size() && (key.empty() || (other.front() == key.front() && other == key));
    };
    for (const DictionaryEntry& entry : entries) {
        if (isSame(entry.key.view()))
            return &entry;
    }
    return nullptr;
}

} // namespace

Dictionary::Dictionary(const Dictionary& other) : m_node(Containers::share(other.m_node)) {}

Dictionary::~Dictionary()
{
    Containers::release(m_node);
}

Dictionary& Dictionary::operator=(const Dictionary& other)
{
    Dictionary copy(other);
    std::swap(m_node, copy.m_node);
    return *this;
}

Dictionary& Dictionary::operator=(Dictionary&& other) noexcept
{
    Dictionary taken(std::move(other));
    std::swap(m_node, taken.m_node);
    return *this;
}

std::span<const DictionaryEntry> Dictionary::entries() const
{
    return m_node != nullptr ? std::span<const DictionaryEntry>(m_node->entries(), m_node->size)
                             : std::span<const DictionaryEntry>();
}

const Value* Dictionary::find(std::string_view key) const
{
    const DictionaryEntry* const entry = findEntry(entries(), key);
    return entry != nullptr ? &entry->value : nullptr;
}

Value& Dictionary::operator[](std::string_view key)
{
    Value& value = entry(key);
    m_node->isExposed = true;
    return value;
}

void Dictionary::set(std::string_view key, Value value)
{
    entry(key) = std::move(value);
}

bool Dictionary::isShared() const
{
    return m_node != nullptr && m_node->owners.load(std::memory_order_acquire) > 1;
}

Value& Dictionary::entry(std::string_view key)
{
    const auto all = entries();
    const DictionaryEntry* const found = findEntry(all, key);
    const auto index = (found != nullptr ? found : std::to_address(placeOf(all, key))) - all.data();
    Containers::makeUnique(m_node, ContainerNode::Kind::Dictionary, found == nullptr);
    DictionaryEntry* const place = m_node->entries() + index;
    if (found == nullptr) {
        Containers::append(m_node, key, Value());
        DictionaryEntry* const end = m_node->entries() + m_node->size;
        std::rotate(place, end - 1, end);
    }
    return place->value;
}

} // namespace Pdf
