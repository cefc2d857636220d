#include "pdf/PageTree.h"

#include <utility>
#include <variant>

#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

PageTree::Pages PageTree::walkPageTree(const Reference& root)
{
    enter(root);
    while (!m_levels.empty()) {
        Level& level = m_levels.back();
        if (level.next == level.kids.size())
            leave();
        else
            takeKid(std::get<Reference>(level.kids[level.next++]));
    }
    if (!m_isInOrder)
        return std::move(m_reachable);
    m_pages.erase(m_next, m_pages.end());
    return std::move(m_pages);
}

void PageTree::enter(const Reference& reference)
{
    const Value& kids = m_nodes.at(reference)["Kids"];
    m_levels.push_back({reference, std::get<Array>(kids).items(), 0, false});
    m_states[reference] = State::Entered;
}

void PageTree::leave()
{
    const Level level = m_levels.back();
    m_levels.pop_back();
    m_states[level.node] = level.hasPages ? State::WithPages : State::WithoutPages;
    if (!m_levels.empty() && level.hasPages)
        m_levels.back().hasPages = true;
}

void PageTree::takeKid(const Reference& kid)
{
    if (takePage(kid))
        m_levels.back().hasPages = true;
    else if (m_nodes.contains(kid))
        takeNode(kid);
    else
        throw PdfParserException("Missing page");
}

bool PageTree::takePage(const Reference& reference)
{
    // What the map would not find is not taken, either.
    if (m_isInOrder && m_next != m_pages.end() && m_next->first == reference && reference.generation == 0) {
        ++m_next;
        return true;
    }
    if (m_isInOrder && m_nodes.contains(reference) && !m_pages.contains(reference))
        return false;
    leaveOrder();
    const auto page = m_pages.find(reference);
    if (page == m_pages.end())
        return false;
    m_reachable.insert(m_reachable.end(), m_pages.extract(page));
    return true;
}

void PageTree::leaveOrder()
{
    if (!std::exchange(m_isInOrder, false))
        return;
    while (m_pages.begin() != m_next)
        m_reachable.insert(m_reachable.end(), m_pages.extract(m_pages.begin()));
}

// Walking a node once more would find its pages gone, or nothing.
void PageTree::takeNode(const Reference& reference)
{
    const auto state = m_states.find(reference);
    if (state == m_states.end())
        enter(reference);
    else if (state->second == State::Entered)
        throw PdfParserException("Page tree loops");
    else if (state->second == State::WithPages)
        throw PdfParserException("Missing page");
}

} // namespace Pdf::Parser
