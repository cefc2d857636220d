#include "pdf/LambdaSource.h"

#include <gtest/gtest.h>

namespace Pdf::Parser
{
namespace
{

TEST(LambdaSource, CallsItsFunctions)
{
    unsigned long long skipped = 0;
    LambdaSource source([] { return std::uint8_t{7}; }, [&](unsigned long long count) { skipped += count; });

    EXPECT_EQ(source.next(), 7);
    source.skip(5);
    source.skip(6);

    EXPECT_EQ(skipped, 11U);
    EXPECT_TRUE(source.window().empty());
}

TEST(LambdaSource, ShowsTheWindowThatItWasGiven)
{
    const std::uint8_t bytes[] = {1, 2, 3};
    LambdaSource source([] { return std::uint8_t{1}; }, [](unsigned long long) {});

    source.setWindow(bytes);

    EXPECT_EQ(source.window().size(), 3U);
    EXPECT_EQ(source.window().data(), bytes);
}

} // namespace
} // namespace Pdf::Parser
