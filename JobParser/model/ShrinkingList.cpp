#include "JobParser/model/ShrinkingList.h"

#include <algorithm>

namespace JobParser
{

ShrinkingList::ShrinkingList(std::size_t size)
    : m_next(size + 1), m_previous(size + 1), m_end(size), m_size(size)
{
    for (std::size_t element = 0; element <= size; ++element) {
        m_next[element] = element == size ? 0 : element + 1;
        m_previous[element] = element == 0 ? size : element - 1;
    }
}

ShrinkingList::Place ShrinkingList::place(std::size_t position)
{
    m_places.push_back({position, std::min(position, m_end)});
    return m_places.size() - 1;
}

bool ShrinkingList::remove(Place place)
{
    const auto [position, element] = m_places[place];
    if (element == m_end)
        return false;
    for (Position& other : m_places) {
        if (other.position >= position && other.element != m_end)
            other.element = m_next[other.element];
    }
    m_next[m_previous[element]] = m_next[element];
    m_previous[m_next[element]] = m_previous[element];
    --m_size;
    return true;
}

void ShrinkingList::advance(Place place)
{
    ++m_places[place].position;
    m_places[place].element = m_next[m_places[place].element];
}

void ShrinkingList::goBack(Place place, std::size_t count)
{
    auto& [position, element] = m_places[place];
    // A place behind the end stands at no element that could be counted from.
    const std::size_t from = std::min(position, m_size);
    position -= std::min(position, count);
    for (std::size_t step = position; step < from; ++step)
        element = m_previous[element];
}

std::vector<std::size_t> ShrinkingList::removed() const
{
    std::vector<std::size_t> gone;
    gone.reserve(m_end - m_size);
    std::size_t element = 0;
    for (std::size_t left = m_next[m_end];; left = m_next[left]) {
        for (; element < left; ++element)
            gone.push_back(element);
        if (left == m_end)
            return gone;
        element = left + 1;
    }
}

} // namespace JobParser
