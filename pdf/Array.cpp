#include "pdf/Array.h"

#include <utility>

#include "pdf/Containers.h"

namespace Pdf
{

Array::Array(std::vector<Value> items)
{
    if (items.empty())
        return;
    m_node = Containers::make(ContainerNode::Kind::Array, items.size());
    for (Value& item : items)
        Containers::append(m_node, std::move(item));
}

Array::Array(const Array& other) : m_node(Containers::share(other.m_node)) {}

Array::~Array()
{
    Containers::release(m_node);
}

Array& Array::operator=(const Array& other)
{
    Array copy(other);
    std::swap(m_node, copy.m_node);
    return *this;
}

Array& Array::operator=(Array&& other) noexcept
{
    Array taken(std::move(other));
    std::swap(m_node, taken.m_node);
    return *this;
}

std::span<const Value> Array::items() const
{
    return m_node != nullptr ? std::span<const Value>(m_node->values(), m_node->size)
                             : std::span<const Value>();
}

std::span<Value> Array::edit()
{
    Containers::makeUnique(m_node, ContainerNode::Kind::Array, false);
    m_node->isExposed = true;
    return {m_node->values(), m_node->size};
}

void Array::append(Value value)
{
    Containers::makeUnique(m_node, ContainerNode::Kind::Array, true);
    Containers::append(m_node, std::move(value));
}

} // namespace Pdf
