#pragma once

#include <cstdint>
#include <memory>

#include "JobParser/Export.h"

namespace Pdf
{

/// Two numbers that stood where a reference could have stood. Only reading makes it; it cannot be written.
///
/// It is rare, so that its numbers stand outside and do not make every value larger.
class JOBPARSER_EXPORT FalseReference
{
public:
    FalseReference(std::uint32_t theNumber, double theGeneration);
    FalseReference(const FalseReference& other);
    FalseReference(FalseReference&& other) noexcept;
    ~FalseReference();
    FalseReference& operator=(const FalseReference& other);
    FalseReference& operator=(FalseReference&& other) noexcept;

    std::uint32_t number() const;
    double generation() const;

private:
    struct Numbers;

    std::unique_ptr<const Numbers> m_numbers;
};

} // namespace Pdf
