#pragma once

#include <span>
#include <vector>

#include "JobParser/Export.h"

namespace Pdf
{

class Value;
struct ContainerNode;

/// The values of a PDF array.
///
/// Copies share what they hold until one of them is changed, so that copying costs nothing, however large or
/// deep the array is. Once edit() gave out a way to change the values at any later time, copies are real.
class JOBPARSER_EXPORT Array
{
public:
    Array() = default;
    explicit Array(std::vector<Value> items);
    Array(const Array& other);
    Array(Array&& other) noexcept : m_node(other.m_node) { other.m_node = nullptr; }
    ~Array();
    Array& operator=(const Array& other);
    Array& operator=(Array&& other) noexcept;

    std::span<const Value> items() const;
    /// The values to be changed. Valid until the array is appended to, assigned to or destroyed.
    std::span<Value> edit();
    void append(Value value);

private:
    friend struct Containers;

    ContainerNode* m_node = nullptr; // None for an empty array.
};

} // namespace Pdf
