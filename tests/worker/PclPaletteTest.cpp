#include "worker/PclPalette.h"

#include <gtest/gtest.h>

namespace JobParser::Worker
{
namespace
{

std::vector<PageClass> classes(const PclPalette& palette)
{
    std::vector<PageClass> result;
    for (std::size_t i = 0; i < palette.size(); ++i)
        result.push_back(palette.classOf(i, 0));
    return result;
}

constexpr PageClass blank = PageClass::Blank;
constexpr PageClass mono = PageClass::Mono;
constexpr PageClass color = PageClass::Color;

TEST(PclPalette, IsWhiteAndBlackByDefault)
{
    EXPECT_EQ(classes(PclPalette()), (std::vector{blank, mono}));
    EXPECT_EQ(PclPalette().greatest(0), PageClass::Mono);
}

TEST(PclPalette, BeginsWithBlackForLightAndWithWhiteForInk)
{
    EXPECT_EQ(classes(PclPalette::ofPlanes(3)),
              (std::vector{mono, color, color, color, color, color, color, blank}));
    EXPECT_EQ(classes(PclPalette::ofPlanes(-3)),
              (std::vector{blank, color, color, color, color, color, color, mono}));
    EXPECT_EQ(classes(PclPalette::ofPlanes(1)), (std::vector{blank, mono}));
}

TEST(PclPalette, HasAsManyColorsAsItsBitsNumber)
{
    EXPECT_EQ(PclPalette::ofBits(1, PclPalette::Space::Rgb).size(), 2U);
    EXPECT_EQ(PclPalette::ofBits(2, PclPalette::Space::Rgb).size(), 4U);
    EXPECT_EQ(PclPalette::ofBits(8, PclPalette::Space::Rgb).size(), 256U);
    EXPECT_EQ(PclPalette::ofBits(99, PclPalette::Space::Rgb).size(), 256U);
}

TEST(PclPalette, HasWhiteAsPenZeroAndBlackAsPenOne)
{
    EXPECT_EQ(classes(PclPalette::ofPens(4)), (std::vector{blank, mono, color, color}));
    EXPECT_EQ(PclPalette::ofPens(0).size(), 2U);
}

TEST(PclPalette, BeginsAnewBehindItsLastColor)
{
    EXPECT_EQ(PclPalette().classOf(3, 0), PageClass::Mono);
}

TEST(PclPalette, ChangesOnlyColorsThatItHas)
{
    PclPalette palette;
    palette.set(1, {255, 0, 0});
    palette.set(2, {0, 255, 0});

    EXPECT_EQ(classes(palette), (std::vector{blank, color}));
}

TEST(PclPalette, MakesColorsOfComponents)
{
    using Space = PclPalette::Space;
    const auto classOf = [](Space space, std::array<double, 3> components) {
        const auto made = colorOf(space, components);
        return classOfRgb(made.red, made.green, made.blue, 0);
    };

    EXPECT_EQ(classOf(Space::Rgb, {0.5, 0.5, 0.5}), PageClass::Gray);
    EXPECT_EQ(classOf(Space::Rgb, {1, 0, 0}), PageClass::Color);
    EXPECT_EQ(classOf(Space::Cmy, {0, 0, 0}), PageClass::Blank);
    EXPECT_EQ(classOf(Space::Cmy, {1, 1, 1}), PageClass::Mono);
    EXPECT_EQ(classOf(Space::Lab, {50, 0, 0}), PageClass::Gray);
    EXPECT_EQ(classOf(Space::Lab, {50, 30, 0}), PageClass::Color);
    EXPECT_EQ(classOf(Space::Luminance, {0.5, 0, 0.3}), PageClass::Color);
}

} // namespace
} // namespace JobParser::Worker
