#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <vector>

#include "pdf/Object.h"
#include "pdf/ReferenceMap.h"
#include "pdf/Value.h"

namespace Pdf::Parser
{

/// Collects the pages that a tree reaches.
class PageTree
{
public:
    using Nodes = ReferenceMap<Value>;
    using Pages = std::map<Reference, Object>;

    /// Uses `pages` up.
    PageTree(const Nodes& nodes, Pages& pages) : m_nodes(nodes), m_pages(pages), m_next(pages.begin()) {}

    /// The pages below a node, which is one of the nodes. Throws PdfParserException for a loop and for a kid
    /// that is nothing or was found before, std::bad_variant_access for kids that are no references.
    Pages walkPageTree(const Reference& root);

private:
    /// What is known of a node: it is being walked, or it was and has pages below it or not.
    enum class State { Entered, WithoutPages, WithPages };

    struct Level {
        Reference node;
        std::span<const Value> kids;
        std::size_t next;
        bool hasPages;
    };

    void enter(const Reference& reference);
    void leave();
    void takeKid(const Reference& kid);
    bool takePage(const Reference& reference);
    void leaveOrder();
    void takeNode(const Reference& reference);

    const Nodes& m_nodes;
    Pages& m_pages;
    // As long as kids come in the order of the map, those before this page are reachable and stay where they
    // are; then there is no order any more, and the others go over one by one.
    Pages::iterator m_next;
    bool m_isInOrder = true;
    Pages m_reachable;
    std::vector<Level> m_levels;
    ReferenceMap<State> m_states;
};

} // namespace Pdf::Parser
