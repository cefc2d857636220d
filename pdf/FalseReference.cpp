#include "pdf/FalseReference.h"

namespace Pdf
{

struct FalseReference::Numbers {
    std::uint32_t number;
    double generation;
};

FalseReference::FalseReference(std::uint32_t theNumber, double theGeneration)
    : m_numbers(std::make_unique<const Numbers>(Numbers{theNumber, theGeneration}))
{
}

FalseReference::FalseReference(const FalseReference& other)
    : m_numbers(other.m_numbers ? std::make_unique<const Numbers>(*other.m_numbers) : nullptr)
{
}

FalseReference::FalseReference(FalseReference&& other) noexcept = default;

FalseReference::~FalseReference() = default;

FalseReference& FalseReference::operator=(const FalseReference& other)
{
    return *this = FalseReference(other);
}

FalseReference& FalseReference::operator=(FalseReference&& other) noexcept = default;

std::uint32_t FalseReference::number() const
{
    return m_numbers ? m_numbers->number : 0;
}

double FalseReference::generation() const
{
    return m_numbers ? m_numbers->generation : 0;
}

} // namespace Pdf
