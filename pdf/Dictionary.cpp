#include "pdf/Dictionary.h"

#include <algorithm>
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
    const auto all = entries();
    const auto place = placeOf(all, key);
    return place != all.end() && place->key == key ? &place->value : nullptr;
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

Value Dictionary::take(std::string_view key)
{
    return std::exchange(entry(key), Value());
}

bool Dictionary::isShared() const
{
    return m_node != nullptr && m_node->owners.load(std::memory_order_acquire) > 1;
}

Value& Dictionary::entry(std::string_view key)
{
    const auto all = entries();
    const auto index = static_cast<std::uint32_t>(placeOf(all, key) - all.begin());
    const bool isThere = index < all.size() && all[index].key == key;
    Containers::makeUnique(m_node, ContainerNode::Kind::Dictionary, !isThere);
    DictionaryEntry* const place = m_node->entries() + index;
    if (!isThere) {
        Containers::append(m_node, key, Value());
        DictionaryEntry* const end = m_node->entries() + m_node->size;
        std::rotate(place, end - 1, end);
    }
    return place->value;
}

} // namespace Pdf
