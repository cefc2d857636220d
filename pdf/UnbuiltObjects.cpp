#include "pdf/UnbuiltObjects.h"

#include <algorithm>
#include <utility>

namespace Pdf::Parser
{

void UnbuiltObjects::add(std::uint32_t number, std::string_view text)
{
    add(Entry{number, true, m_texts.size(), text.size(), {}});
    m_texts += text;
    m_texts += '\n';
}

void UnbuiltObjects::remove(std::uint32_t number)
{
    if (!m_entries.empty())
        add(Entry{number, false, 0, 0, {}});
}

void UnbuiltObjects::add(Entry&& entry)
{
    m_isSorted = m_isSorted && (m_entries.empty() || m_entries.back().number <= entry.number);
    m_entries.push_back(std::move(entry));
}

const Value* UnbuiltObjects::find(std::uint32_t number)
{
    sort();
    Entry* const entry = lastOf(number);
    if (entry == nullptr || !entry->isHere)
        return nullptr;
    if (entry->size != 0)
        build(*entry);
    return &entry->value;
}

// Pages are completed in order, and what they lead to mostly stands in order, too. So the search begins where
// the last one ended, whatever was added or sorted since then.
UnbuiltObjects::Entry* UnbuiltObjects::lastOf(std::uint32_t number)
{
    const bool isBehind = m_passed != 0 && m_entries[m_passed - 1].number > number;
    const bool isFarAhead = m_passed + 1 < m_entries.size() && m_entries[m_passed + 1].number <= number;
    if (isBehind || isFarAhead)
        m_passed = static_cast<std::size_t>(std::ranges::upper_bound(m_entries, number, {}, &Entry::number) -
                                            m_entries.begin());
    else if (m_passed < m_entries.size() && m_entries[m_passed].number <= number)
        ++m_passed;
    if (m_passed == 0 || m_entries[m_passed - 1].number != number)
        return nullptr;
    return &m_entries[m_passed - 1];
}

void UnbuiltObjects::build(Entry& entry)
{
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(m_texts.data()) + entry.at;
    m_scanner.scan(begin, begin + entry.size + 1, m_tape);
    entry.value = m_tape.build();
    entry.size = 0;
}

void UnbuiltObjects::sort()
{
    if (!std::exchange(m_isSorted, true))
        std::ranges::stable_sort(m_entries, {}, &Entry::number);
}

} // namespace Pdf::Parser
