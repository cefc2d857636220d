#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "pdf/Value.h"
#include "pdf/ValueScanner.h"
#include "pdf/ValueTape.h"

namespace Pdf::Parser
{

/// Objects that are kept as their text until somebody looks at them, since nobody looks at most. All have the
/// generation 0. Of several under one number the last counts.
class UnbuiltObjects
{
public:
    /// Keeps the text of a value that ValueScanner has read.
    void add(std::uint32_t number, std::string_view text);

    /// Makes the number one that is not here.
    void remove(std::uint32_t number);

    /// The value of an object, null if it is not here. Valid until something is added or removed.
    const Value* find(std::uint32_t number);

    /// No fewer than there are objects.
    std::size_t size() const { return m_entries.size(); }

private:
    struct Entry {
        std::uint32_t number;
        bool isHere;
        std::size_t at;
        std::size_t size; ///< Of the text; 0 when the value is built.
        Value value;
    };

    Entry* lastOf(std::uint32_t number);
    void add(Entry&& entry);
    void build(Entry& entry);
    void sort();

    std::string m_texts;          // With a byte behind each.
    std::vector<Entry> m_entries; // Of those with one number the last counts.
    bool m_isSorted = true;
    std::size_t m_passed = 0; // How many entries had no greater number than the last that was looked for.
    ValueScanner m_scanner;
    ValueTape m_tape;
};

} // namespace Pdf::Parser
