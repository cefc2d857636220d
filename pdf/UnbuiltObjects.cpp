#include "pdf/UnbuiltObjects.h"

#include <algorithm>
#include <utility>

#include "pdf/ValueScanner.h"
#include "pdf/ValueTape.h"

namespace Pdf::Parser
{

Value valueOf(std::string_view text)
{
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(text.data());
    ValueTape tape;
    ValueScanner().scan(begin, begin + text.size() + 1, tape);
    return tape.build();
}

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
    const auto behind = std::ranges::upper_bound(m_entries, number, {}, &Entry::number);
    if (behind == m_entries.begin())
        return nullptr;
    Entry& entry = behind[-1];
    if (entry.number != number || !entry.isHere)
        return nullptr;
    if (const std::size_t size = std::exchange(entry.size, 0); size != 0)
        entry.value = valueOf(std::string_view(m_texts).substr(entry.at, size));
    return &entry.value;
}

void UnbuiltObjects::sort()
{
    if (!std::exchange(m_isSorted, true))
        std::ranges::stable_sort(m_entries, {}, &Entry::number);
}

} // namespace Pdf::Parser
