#include "pdf/DocumentInfo.h"

#include <variant>
#include <vector>

#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

Value& DocumentInfo::embedResource(Value& value)
{
    if (const auto* reference = std::get_if<Reference>(&value))
        value = target(lastOfChain(*reference));
    if (std::holds_alternative<None>(value))
        value = Dictionary();
    return value;
}

void DocumentInfo::embedContents(Value& value)
{
    const auto* reference = std::get_if<Reference>(&value);
    if (reference == nullptr)
        return;
    const Reference last = lastOfChain(*reference);
    const Value& contents = target(last);
    if (std::holds_alternative<Array>(contents))
        value = contents;
    else
        value = last;
}

void DocumentInfo::clearEmbeddable()
{
    embeddable.clear();
    m_endsOfChains.clear();
}

const Value& DocumentInfo::target(const Reference& reference) const
{
    const auto place = embeddable.find(reference);
    return place != embeddable.end() ? place->second.value : nothing;
}

// The reference that leads to no other reference.
Reference DocumentInfo::lastOfChain(const Reference& first)
{
    Reference last = first;
    std::vector<Reference> passed;
    while (const auto* next = std::get_if<Reference>(&target(last))) {
        const auto known = m_endsOfChains.find(last);
        if (known != m_endsOfChains.end()) {
            last = known->second;
            break;
        }
        passed.push_back(last);
        if (passed.size() > embeddable.size())
            throw PdfParserException("Resource references loop");
        last = *next;
    }
    for (const Reference& reference : passed)
        m_endsOfChains.emplace(reference, last);
    return last;
}

} // namespace Pdf::Parser
