#include "Torv/VariantIterator.h"

#include <bit>
#include <simdjson.h>

#include "Torv/VariantInvalidOperationException.h"

namespace Torv
{
namespace
{

using Position = simdjson::dom::array::iterator;

simdjson::dom::array arrayAt(const std::array<std::byte, sizeof(Position)>& place)
{
    return std::bit_cast<simdjson::dom::element>(place).get_array().value_unsafe();
}

} // namespace

VariantIterator::VariantIterator(const Variant& array, bool atEnd)
{
    if (!array.isArray())
        return;
    if (const auto* elements = std::get_if<Variant::Elements>(&array.m_value)) {
        m_elements = *elements;
        m_index = atEnd ? m_elements->size() : 0;
    } else {
        const auto& node = std::get<Variant::Node>(array.m_value);
        const simdjson::dom::array elementsOfNode = arrayAt(node.place);
        m_node.document = node.document;
        m_node.place = std::bit_cast<Variant::Place>(atEnd ? elementsOfNode.end() : elementsOfNode.begin());
    }
}

Variant VariantIterator::value() const
{
    if (m_node.document != nullptr)
        return Variant::fromPlace(m_node.document,
                                  std::bit_cast<Variant::Place>(*std::bit_cast<Position>(m_node.place)));
    if (m_elements == nullptr || m_index >= m_elements->size())
        throw VariantInvalidOperationException("VariantIterator::value(): There is no element");
    return (*m_elements)[m_index];
}

VariantIterator& VariantIterator::operator++()
{
    if (m_node.document != nullptr)
        m_node.place = std::bit_cast<Variant::Place>(++std::bit_cast<Position>(m_node.place));
    else
        ++m_index;
    return *this;
}

bool VariantIterator::operator==(const VariantIterator& other) const
{
    return m_elements == other.m_elements && m_index == other.m_index && m_node.place == other.m_node.place;
}

} // namespace Torv
