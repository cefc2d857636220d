#include "Torv/EightBytes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace Torv
{
namespace
{

constexpr auto markControls = [](std::uint64_t word) { return EightBytes::markBelow(word, 32); };

TEST(EightBytes, MakeAWordWhoseLowestByteIsTheFirst)
{
    EXPECT_EQ(EightBytes::load("\x01\x02\x03\x04\x05\x06\x07\x08"), 0x0807060504030201U);
    EXPECT_EQ(EightBytes::filledWith(0x2A), 0x2A2A2A2A2A2A2A2AU);
}

TEST(EightBytes, MarkWhatIsBelowALimit)
{
    EXPECT_EQ(EightBytes::markBelow(0x2020202020202020, 0x20), 0U);
    EXPECT_EQ(EightBytes::firstMarked(EightBytes::markBelow(0x20201F2020202020, 0x20)), 5U);
    EXPECT_EQ(EightBytes::markBelow(0xFFFFFFFFFFFFFF80, 0x80), 0U);
    EXPECT_EQ(EightBytes::firstMarked(EightBytes::markBelow(0x80FF7F80FFFFFF80, 0x80)), 5U);
}

TEST(EightBytes, MarkWhatIsOneValue)
{
    EXPECT_EQ(EightBytes::markEqual(0x41BFC140423F4340, 0x44), 0U);
    EXPECT_EQ(EightBytes::firstMarked(EightBytes::markEqual(0xC0BFC13F40404141, 0x40)), 2U);
    EXPECT_EQ(EightBytes::markEqual(0x40C0C0C0C0C0C0C0, 0x40), 0x8000000000000000U);
}

TEST(EightBytes, TellTheFirstMark)
{
    EXPECT_EQ(EightBytes::firstMarked(0x0000000000000080), 0U);
    EXPECT_EQ(EightBytes::firstMarked(0x8000000000800000), 2U);
    EXPECT_EQ(EightBytes::firstMarked(0x8000000000000000), 7U);
}

TEST(EightBytes, CountWhatStandsBeforeTheFirstThatIsMarkedInTextsOfAnyLength)
{
    for (std::size_t size = 0; size < 40; ++size) {
        EXPECT_EQ(EightBytes::countUnmarked(std::string(size, 'a').data(), size, markControls), size);
        for (std::size_t place = 0; place < size; ++place) {
            std::string text(size, 'a');
            text[place] = '\n';
            std::fill(text.begin() + static_cast<std::ptrdiff_t>(place) + 1, text.end(), ' ');

            EXPECT_EQ(EightBytes::countUnmarked(text.data(), size, markControls), place);
        }
    }
}

TEST(EightBytes, CountEachByteByItsValue)
{
    for (int value = 0; value < 256; ++value)
        for (std::size_t size = 1; size < 20; ++size) {
            const std::string text = std::string(size - 1, '\xFF') + static_cast<char>(value) + "\n";

            EXPECT_EQ(EightBytes::countUnmarked(text.data(), size, markControls),
                      value < 32 ? size - 1 : size);
        }
}

} // namespace
} // namespace Torv
