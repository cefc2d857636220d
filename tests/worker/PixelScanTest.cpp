#include "worker/PixelScan.h"

#include <gtest/gtest.h>
#include <vector>

namespace JobParser::Worker
{
namespace
{

TEST(PixelScan, FindsOnePixelAtAnyPlaceOfARow)
{
    for (std::size_t count = 1; count <= 40; ++count) {
        for (std::size_t place = 0; place < count; ++place) {
            std::vector<std::uint8_t> row(count * 3, 255);
            EXPECT_EQ(classOfRgbRow(row.data(), count, 0), PageClass::Blank);
            row[place * 3] = row[place * 3 + 1] = row[place * 3 + 2] = 0;
            EXPECT_EQ(classOfRgbRow(row.data(), count, 0), PageClass::Mono);
            row[place * 3 + 1] = 2;
            EXPECT_EQ(classOfRgbRow(row.data(), count, 0), PageClass::Color);
            EXPECT_EQ(classOfRgbRow(row.data(), count, 2), PageClass::Gray);
        }
    }
}

TEST(PixelScan, FindsNothingInNoPixels)
{
    EXPECT_EQ(classOfRgbRow(nullptr, 0, 0), PageClass::Blank);
}

} // namespace
} // namespace JobParser::Worker
