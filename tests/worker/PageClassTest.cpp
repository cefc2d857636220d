#include "worker/PageClass.h"

#include <gtest/gtest.h>

namespace JobParser::Worker
{
namespace
{

TEST(PageClass, IsToldByTheChannels)
{
    EXPECT_EQ(classOfRgb(255, 255, 255, 0), PageClass::Blank);
    EXPECT_EQ(classOfRgb(0, 0, 0, 0), PageClass::Mono);
    EXPECT_EQ(classOfRgb(1, 1, 1, 0), PageClass::Gray);
    EXPECT_EQ(classOfRgb(254, 254, 254, 0), PageClass::Gray);
    EXPECT_EQ(classOfRgb(0, 0, 1, 0), PageClass::Color);
}

TEST(PageClass, IsGrayUpToTheTolerance)
{
    EXPECT_EQ(classOfRgb(100, 105, 110, 10), PageClass::Gray);
    EXPECT_EQ(classOfRgb(100, 105, 111, 10), PageClass::Color);
    EXPECT_EQ(classOfRgb(0, 255, 0, 255), PageClass::Gray);
}

} // namespace
} // namespace JobParser::Worker
