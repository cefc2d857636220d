#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <unordered_map>

#include "pdf/DocumentInfo.h"
#include "pdf/Object.h"
#include "pdf/ReferenceMap.h"
#include "pdf/Value.h"

namespace Pdf::Parser
{

/// Completes pages by what they inherit and by what they refer to.
///
/// What pages have in common stays shared between them, so that thousands of pages may inherit large
/// resources.
class PageAttributes
{
public:
    using Nodes = ReferenceMap<Value>;

    PageAttributes(DocumentInfo& info, Nodes& nodes) : m_info(info), m_nodes(nodes) {}

    /// Throws PdfParserException if parents or resources form a loop, std::bad_variant_access if a parent is
    /// no reference to a node.
    void complete(Object& page);

private:
    struct Embedded {
        Dictionary original;
        Dictionary complete;
    };

    void inheritAttribute(Dictionary& page, std::size_t attribute);
    const Value* inherited(Reference parent, std::size_t attribute);
    void embedResources(Dictionary& page);
    void embedXObjects(Dictionary& resources);
    void embedContents(Dictionary& page);

    static constexpr std::size_t attributeCount = 4;

    DocumentInfo& m_info;
    Nodes& m_nodes;
    // What each node gives to its kids, null for nothing.
    std::array<ReferenceMap<const Value*>, attributeCount> m_inherited;
    // Resources that several use.
    std::unordered_map<const void*, Embedded> m_embedded;
};

} // namespace Pdf::Parser
