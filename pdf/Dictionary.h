#pragma once

#include <span>
#include <string_view>

#include "JobParser/Export.h"

namespace Pdf
{

class Value;
struct DictionaryEntry;
struct ContainerNode;

/// The entries of a PDF dictionary, ascending by the bytes of their keys.
///
/// Copies share what they hold until one of them is changed, as those of Array do.
class JOBPARSER_EXPORT Dictionary
{
public:
    using Entry = DictionaryEntry;

    Dictionary() = default;
    Dictionary(const Dictionary& other);
    Dictionary(Dictionary&& other) noexcept : m_node(other.m_node) { other.m_node = nullptr; }
    ~Dictionary();
    Dictionary& operator=(const Dictionary& other);
    Dictionary& operator=(Dictionary&& other) noexcept;

    std::span<const Entry> entries() const;

    /// The value of a key, null if there is no such key.
    const Value* find(std::string_view key) const;

    /// The value of a key, which is made as None if it is not there. The reference is valid until another key
    /// is made.
    Value& operator[](std::string_view key);

    /// Sets the value of a key, without giving out a way to change it later.
    void set(std::string_view key, Value value);

    /// Whether others share what it holds.
    bool isShared() const;
    /// The same for all that share what they hold, as long as they do.
    const void* identity() const { return m_node; }

private:
    friend struct Containers;

    Value& entry(std::string_view key);

    ContainerNode* m_node = nullptr; // None for an empty dictionary.
};

} // namespace Pdf
