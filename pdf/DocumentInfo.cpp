#include "pdf/DocumentInfo.h"

#include <utility>
#include <variant>
#include <vector>

#include "pdf/PdfParserException.h"
#include "pdf/UnbuiltObjects.h"

namespace Pdf::Parser
{

Value& DocumentInfo::embedResource(Value& value)
{
    if (const auto* reference = std::get_if<Reference>(&value))
        value = Value(*endOfChain(*reference).value);
    if (std::holds_alternative<None>(value))
        value = Dictionary();
    return value;
}

void DocumentInfo::embedContents(Value& value)
{
    const auto* reference = std::get_if<Reference>(&value);
    if (reference == nullptr)
        return;
    const EndOfChain end = endOfChain(*reference);
    if (std::holds_alternative<Array>(*end.value))
        value = *end.value;
    else
        value = end.reference;
}

void DocumentInfo::addEmbeddableText(std::uint32_t number, std::string_view text)
{
    if (m_unbuilt == nullptr)
        m_unbuilt = std::make_shared<UnbuiltObjects>();
    m_unbuilt->add(number, text);
}

void DocumentInfo::removeEmbeddableText(std::uint32_t number)
{
    if (m_unbuilt != nullptr)
        m_unbuilt->remove(number);
}

void DocumentInfo::clearEmbeddable()
{
    embeddable.clear();
    m_unbuilt.reset();
    m_endsOfChains.clear();
}

const Value& DocumentInfo::target(const Reference& reference)
{
    if (m_unbuilt != nullptr && reference.generation == 0)
        if (const Value* value = m_unbuilt->find(reference.number))
            return *value;
    const auto place = embeddable.find(reference);
    return place != embeddable.end() ? place->second.value : nothing;
}

DocumentInfo::EndOfChain DocumentInfo::endOfChain(const Reference& first)
{
    EndOfChain end{first, &target(first)};
    std::vector<Reference> passed;
    while (const auto* next = std::get_if<Reference>(end.value)) {
        const auto known = m_endsOfChains.find(end.reference);
        if (known != m_endsOfChains.end()) {
            end = {known->second, &target(known->second)};
            break;
        }
        passed.push_back(end.reference);
        if (passed.size() > embeddable.size() + (m_unbuilt != nullptr ? m_unbuilt->size() : 0))
            throw PdfParserException("Resource references loop");
        end = {*next, &target(*next)};
    }
    for (const Reference& reference : passed)
        m_endsOfChains.emplace(reference, end.reference);
    return end;
}

} // namespace Pdf::Parser
