#pragma once

#include <cstddef>
#include <memory>

#include "Torv/Export.h"
#include "Torv/Variant.h"

namespace Torv
{

/// Walks the elements of an array in order, each step in constant time. Keeps the array alive.
///
/// As with any iterator, the end has no value and cannot be stepped over.
class TORV_EXPORT VariantIterator
{
public:
    Variant value() const;
    Variant operator*() const { return value(); }
    VariantIterator& operator++();
    bool operator==(const VariantIterator& other) const;

private:
    friend class Variant;

    VariantIterator(const Variant& array, bool atEnd);

    Variant::Elements m_elements;
    std::size_t m_index = 0;
    Variant::Node m_node{};
};

} // namespace Torv
