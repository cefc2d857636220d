#include "pdf/DocumentInfo.h"

#include <variant>
#include <vector>

#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

Value& DocumentInfo::embedResource(Value& value)
{
    if (const auto* reference = std::get_if<Reference>(&value))
        value = embeddable[lastOfChain(*reference)].value;
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
    const Value& target = embeddable[last].value;
    if (std::holds_alternative<Array>(target))
        value = target;
    else
        value = last;
}

void DocumentInfo::clearEmbeddable()
{
    embeddable.clear();
    m_endsOfChains.clear();
}

// The reference that leads to no other reference.
Reference DocumentInfo::lastOfChain(const Reference& first)
{
    Reference last = first;
    std::vector<Reference> passed;
    while (const auto* next = std::get_if<Reference>(&embeddable[last].value)) {
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
