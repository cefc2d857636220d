#include "pdf/Numbers.h"

#include <gtest/gtest.h>

namespace Pdf
{
namespace
{

TEST(Numbers, AreCutTowardsZeroAndAtTheEndsOfTheirRange)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();

    EXPECT_EQ(toSigned64(2.9), 2);
    EXPECT_EQ(toSigned64(-2.9), -2);
    EXPECT_EQ(toSigned64(9223372036854775808.0), 9223372036854775807);
    EXPECT_EQ(toSigned64(-1e300), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(toSigned64(infinity), 9223372036854775807);
    EXPECT_EQ(toSigned64(-infinity), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(toSigned64(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Numbers, BecomeShorterByTheirLowBits)
{
    EXPECT_EQ(toUnsigned32(4294967297.5), 1U);
    EXPECT_EQ(toUnsigned32(-1), 4294967295U);
    EXPECT_EQ(toUnsigned32(1e300), 4294967295U);
    EXPECT_EQ(toSigned32(2147483648.0), -2147483648);
    EXPECT_EQ(toSigned32(1e300), -1);
}

} // namespace
} // namespace Pdf
