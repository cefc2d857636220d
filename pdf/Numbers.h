#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

/// How the numbers of a PDF, which are all doubles, become integers: for every value in the same way.
namespace Pdf
{

/// Cut towards zero. What is beyond the range becomes its nearer end, and what is no number becomes 0.
inline std::int64_t toSigned64(double number)
{
    constexpr double limit = 9223372036854775808.0; // 2 to the power of 63

    if (std::isnan(number))
        return 0;
    if (number >= limit)
        return std::numeric_limits<std::int64_t>::max();
    if (number < -limit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

/// The low 32 bits of that.
inline std::uint32_t toUnsigned32(double number)
{
    return static_cast<std::uint32_t>(toSigned64(number));
}

inline std::int32_t toSigned32(double number)
{
    return static_cast<std::int32_t>(toUnsigned32(number));
}

} // namespace Pdf
