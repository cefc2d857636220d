#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

#include "JobParser/Export.h"
#include "pdf/Object.h"
#include "pdf/ReferenceMap.h"
#include "pdf/Value.h"

namespace Pdf::Parser
{

class UnbuiltObjects;

/// The summary of a PDF: what describes it and its pages, without any content.
class JOBPARSER_EXPORT DocumentInfo
{
public:
    /// Replaces a reference by what it leads to; what leads nowhere, and what is None, becomes an empty
    /// dictionary. Gives back the value. Throws PdfParserException if references lead to each other.
    Value& embedResource(Value& value);

    /// Replaces a reference that leads to an array by that array, and one that leads to another reference by
    /// the last of them. Throws PdfParserException if references lead to each other.
    void embedContents(Value& value);

    /// Adds an object of generation 0 to those that may be embedded, as its text; see UnbuiltObjects. It
    /// counts before one that stands in `embeddable`.
    void addEmbeddableText(std::uint32_t number, std::string_view text);
    /// Forgets such an object.
    void removeEmbeddableText(std::uint32_t number);
    /// Forgets what may be embedded.
    void clearEmbeddable();

    Object catalog;                         ///< The last one that was read.
    std::map<Reference, Object> pages;      ///< By object number, not in reading order.
    std::map<Reference, Object> embeddable; ///< What pages may refer to; empty after a complete parse.
    Value trailer;

private:
    /// What references lead to at last, and the last of them.
    struct EndOfChain {
        Reference reference;
        const Value* value;
    };

    const Value& target(const Reference& reference);
    EndOfChain endOfChain(const Reference& first);

    std::shared_ptr<UnbuiltObjects> m_unbuilt; // Null if there is none.

    // Where chains of references end that were followed before; they may be long, and many may use them.
    ReferenceMap<Reference> m_endsOfChains;
};

} // namespace Pdf::Parser
