#include "worker/FitzColor.h"

#include <gtest/gtest.h>

#include "worker/FitzContext.h"

namespace JobParser::Worker
{
namespace
{

TEST(FitzColor, TellsTheClassOfProcessColors)
{
    EXPECT_EQ(classOfCmyk(0, 0, 0, 0, 0), PageClass::Blank);
    EXPECT_EQ(classOfCmyk(0, 0, 0, 1, 0), PageClass::Mono);
    EXPECT_EQ(classOfCmyk(1, 1, 1, 0, 0), PageClass::Mono);
    EXPECT_EQ(classOfCmyk(1, 0, 0, 1, 0), PageClass::Mono);
    EXPECT_EQ(classOfCmyk(0, 0, 0, 0.5F, 0), PageClass::Gray);
    EXPECT_EQ(classOfCmyk(0.2F, 0.2F, 0.2F, 0.3F, 0), PageClass::Gray);
    EXPECT_EQ(classOfCmyk(0, 0, 1, 0, 0), PageClass::Color);
    EXPECT_EQ(classOfCmyk(0.1F, 0, 0, 0.5F, 0), PageClass::Color);
}

TEST(FitzColor, TakesInksThatDifferWithinTheToleranceForGray)
{
    // 2 of 255.
    EXPECT_EQ(classOfCmyk(0.008F, 0, 0, 0.4F, 1), PageClass::Color);
    EXPECT_EQ(classOfCmyk(0.008F, 0, 0, 0.4F, 2), PageClass::Gray);
}

struct Row {
    fz_colorspace* (*space)(fz_context*);
    std::array<float, 4> components;
    PageClass pageClass;
};

TEST(FitzColor, TellsTheClassOfAColorInItsSpace)
{
    const FitzContext context;
    const Row rows[] = {
        {fz_device_gray, {1}, PageClass::Blank},
        {fz_device_gray, {0}, PageClass::Mono},
        {fz_device_gray, {0.5F}, PageClass::Gray},
        // No byte that a printer gets differs from white, or from black.
        {fz_device_gray, {0.999F}, PageClass::Blank},
        {fz_device_gray, {0.001F}, PageClass::Mono},
        {fz_device_rgb, {1, 1, 1}, PageClass::Blank},
        {fz_device_rgb, {0, 0, 0}, PageClass::Mono},
        {fz_device_rgb, {0.5F, 0.5F, 0.5F}, PageClass::Gray},
        {fz_device_rgb, {0.5F, 0.5F, 0.6F}, PageClass::Color},
        // Beyond what a channel can have.
        {fz_device_rgb, {7, 2, 1}, PageClass::Blank},
        {fz_device_rgb, {-1, 0, 0}, PageClass::Mono},
        {fz_device_bgr, {0, 0, 1}, PageClass::Color},
        {fz_device_cmyk, {0, 0, 0, 1}, PageClass::Mono},
        {fz_device_cmyk, {0, 1, 0, 0}, PageClass::Color},
        {fz_device_lab, {50, 0, 0}, PageClass::Gray},
        {fz_device_lab, {50, 60, 0}, PageClass::Color},
        {fz_device_lab, {100, 0, 0}, PageClass::Blank},
    };

    for (const Row& row : rows) {
        fz_colorspace* space = row.space(context.get());
        EXPECT_EQ(classOfColor(context.get(), space, row.components.data(), 0), row.pageClass)
            << fz_colorspace_name(context.get(), space) << ' ' << row.components[0] << ' '
            << row.components[1];
    }
}

TEST(FitzColor, TakesAMaskWithoutAColorForBlack)
{
    const FitzContext context;

    EXPECT_EQ(classOfColor(context.get(), nullptr, nullptr, 0), PageClass::Mono);
}

TEST(FitzColor, LetsPaperShineThrough)
{
    EXPECT_EQ(withAlpha(PageClass::Mono, 1), PageClass::Mono);
    EXPECT_EQ(withAlpha(PageClass::Mono, 0.5F), PageClass::Gray);
    EXPECT_EQ(withAlpha(PageClass::Gray, 0.5F), PageClass::Gray);
    EXPECT_EQ(withAlpha(PageClass::Color, 0.5F), PageClass::Color);
    EXPECT_EQ(withAlpha(PageClass::Blank, 0.5F), PageClass::Blank);
    EXPECT_EQ(withAlpha(PageClass::Color, 0), PageClass::Blank);
}

} // namespace
} // namespace JobParser::Worker
