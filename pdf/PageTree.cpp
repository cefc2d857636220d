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
    return std::move(m_reachable);
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
    const auto page = m_pages.find(kid);
    if (page != m_pages.end()) {
        m_reachable.insert(m_reachable.end(), m_pages.extract(page));
        m_levels.back().hasPages = true;
    } else if (m_nodes.contains(kid)) {
        takeNode(kid);
    } else {
        throw PdfParserException("Missing page");
    }
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
