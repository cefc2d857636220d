#include "pdf/PageAttributes.h"

#include <utility>
#include <variant>
#include <vector>

#include "pdf/Containers.h"
#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{
namespace
{

enum Attribute : std::size_t { Resources, MediaBox, CropBox, Rotate };

constexpr std::array<std::string_view, 4> attributeKeys{"Resources", "MediaBox", "CropBox", "Rotate"};

} // namespace

void PageAttributes::complete(Object& page)
{
    auto& dictionary = std::get<Dictionary>(page.value);
    inheritAttribute(dictionary, Resources);
    embedResources(dictionary);
    inheritAttribute(dictionary, MediaBox);
    inheritAttribute(dictionary, CropBox);
    inheritAttribute(dictionary, Rotate);
    embedContents(dictionary);
}

void PageAttributes::inheritAttribute(Dictionary& page, std::size_t attribute)
{
    const std::string_view key = attributeKeys[attribute];
    if (page.find(key) != nullptr)
        return;
    const Value* parent = page.find("Parent");
    if (parent == nullptr)
        return;
    const Value* value = inherited(std::get<Reference>(*parent), attribute);
    if (value != nullptr)
        page.set(key, *value);
}

const Value* PageAttributes::inherited(Reference parent, std::size_t attribute)
{
    auto& known = m_inherited[attribute];
    const Value* value = nullptr;
    std::vector<Reference> passed;
    for (;;) {
        if (const auto place = known.find(parent); place != known.end()) {
            value = place->second;
            break;
        }
        passed.push_back(parent);
        const auto& node = std::get<Dictionary>(m_nodes[parent]);
        if (passed.size() > m_nodes.size())
            throw PdfParserException("Page parents loop");
        value = node.find(attributeKeys[attribute]);
        const Value* next = node.find("Parent");
        if (value != nullptr || next == nullptr)
            break;
        parent = std::get<Reference>(*next);
    }
    for (const Reference& reference : passed)
        known.emplace(reference, value);
    return value;
}

void PageAttributes::embedResources(Dictionary& page)
{
    Value& resources = Containers::entry(page, attributeKeys[Resources]);
    m_info.embedResource(resources);
    if (auto* dictionary = std::get_if<Dictionary>(&resources))
        embedXObjects(*dictionary);
}

void PageAttributes::embedXObjects(Dictionary& resources)
{
    const void* const identity = resources.identity();
    const bool isShared = resources.isShared();
    if (isShared) {
        const auto known = m_embedded.find(identity);
        if (known != m_embedded.end()) {
            resources = known->second.complete;
            return;
        }
    }
    const Dictionary original = isShared ? resources : Dictionary();
    m_info.embedResource(Containers::entry(resources, "XObject"));
    if (isShared)
        m_embedded.emplace(identity, Embedded{original, resources});
}

void PageAttributes::embedContents(Dictionary& page)
{
    m_info.embedContents(Containers::entry(page, "Contents"));
}

} // namespace Pdf::Parser
