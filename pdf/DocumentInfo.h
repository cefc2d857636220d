#pragma once

#include <map>

#include "JobParser/Export.h"
#include "pdf/Object.h"
#include "pdf/ReferenceMap.h"
#include "pdf/Value.h"

namespace Pdf::Parser
{

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

    /// Forgets what may be embedded.
    void clearEmbeddable();

    Object catalog;                         ///< The last one that was read.
    std::map<Reference, Object> pages;      ///< By object number, not in reading order.
    std::map<Reference, Object> embeddable; ///< What pages may refer to; empty after a complete parse.
    Value trailer;

private:
    const Value& target(const Reference& reference) const;
    Reference lastOfChain(const Reference& first);

    // Where chains of references end that were followed before; they may be long, and many may use them.
    ReferenceMap<Reference> m_endsOfChains;
};

} // namespace Pdf::Parser
