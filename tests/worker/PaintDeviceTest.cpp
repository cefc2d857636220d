#include "worker/PaintDevice.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>

#include "worker/FitzContext.h"

namespace JobParser::Worker
{
namespace
{

constexpr fz_rect page{0, 0, 200, 300};
constexpr std::array<float, 3> red{1, 0, 0};
constexpr std::array<float, 3> gray{0.5F, 0.5F, 0.5F};
constexpr std::array<float, 3> black{0, 0, 0};
constexpr fz_rect inside{10, 10, 20, 20};
constexpr fz_rect outside{210, 10, 220, 20};

class PaintDevice : public testing::Test
{
protected:
    PaintDevice() : m_device(newPaintDevice(m_fitz.get(), page, 0, cookie, result)) {}
    ~PaintDevice() override
    {
        fz_close_device(context, m_device);
        fz_drop_device(context, m_device);
    }

    void fill(const std::array<float, 3>& color, fz_rect box = inside, float alpha = 1)
    {
        withPath(box, [&](const fz_path* path) {
            fz_fill_path(context, m_device, path, 0, fz_identity, fz_device_rgb(context), color.data(), alpha,
                         fz_default_color_params);
        });
    }

    void clip(fz_rect box)
    {
        withPath(box, [&](const fz_path* path) {
            fz_clip_path(context, m_device, path, 0, fz_identity, fz_infinite_rect);
        });
    }

    void beginGroup(int blendMode, float alpha)
    {
        fz_begin_group(context, m_device, page, fz_device_rgb(context), 0, 0, blendMode, alpha);
    }

private:
    void withPath(fz_rect box, const std::function<void(const fz_path*)>& use)
    {
        fz_path* path = fz_new_path(context);
        fz_rectto(context, path, box.x0, box.y0, box.x1, box.y1);
        use(path);
        fz_drop_path(context, path);
    }

    FitzContext m_fitz;

protected:
    fz_context* context = m_fitz.get();
    fz_cookie cookie{};
    PaintResult result;
    fz_device* m_device;
};

TEST_F(PaintDevice, FindsNothingOnAPageThatNothingPaints)
{
    EXPECT_EQ(result.pageClass, PageClass::Blank);
    EXPECT_EQ(result.possible, PageClass::Blank);
}

TEST_F(PaintDevice, KeepsTheGreatestClass)
{
    fill(black);
    EXPECT_EQ(result.pageClass, PageClass::Mono);
    fill(gray);
    EXPECT_EQ(result.pageClass, PageClass::Gray);
    fill(black);
    EXPECT_EQ(result.pageClass, PageClass::Gray);
    EXPECT_EQ(cookie.abort, 0);
}

TEST_F(PaintDevice, EndsTheRunWithTheFirstColor)
{
    fill(red);

    EXPECT_EQ(result.pageClass, PageClass::Color);
    EXPECT_EQ(cookie.abort, 1);
}

TEST_F(PaintDevice, DoesNotCountWhatIsNotSeen)
{
    fill(red, outside);
    fill(red, inside, 0);
    clip({100, 100, 150, 150});
    fill(red);
    fz_pop_clip(context, m_device);

    EXPECT_EQ(result.pageClass, PageClass::Blank);
    EXPECT_EQ(result.possible, PageClass::Blank);
}

TEST_F(PaintDevice, CountsWhatIsSeenThroughAPlainGroup)
{
    beginGroup(FZ_BLEND_MULTIPLY, 1);
    fill(gray);
    fz_end_group(context, m_device);

    EXPECT_EQ(result.pageClass, PageClass::Gray);
}

TEST_F(PaintDevice, HoldsWhatIsBlendedForPossible)
{
    for (const auto& [blendMode, alpha] : {std::pair(FZ_BLEND_LUMINOSITY, 1.0F), {FZ_BLEND_NORMAL, 0.5F}}) {
        result = {};
        beginGroup(blendMode, alpha);
        fill(red);
        fz_end_group(context, m_device);

        EXPECT_EQ(result.pageClass, PageClass::Blank) << blendMode;
        EXPECT_EQ(result.possible, PageClass::Color) << blendMode;
        EXPECT_EQ(cookie.abort, 0) << blendMode;
    }
}

TEST_F(PaintDevice, IsCertainAgainBehindAGroup)
{
    beginGroup(FZ_BLEND_LUMINOSITY, 1);
    clip(inside);
    fz_pop_clip(context, m_device);
    fz_end_group(context, m_device);
    fill(gray);

    EXPECT_EQ(result.pageClass, PageClass::Gray);
}

TEST_F(PaintDevice, TakesMasksForNothingAndWhatTheyCoverForPossible)
{
    fz_begin_mask(context, m_device, page, 1, fz_device_gray(context), nullptr, fz_default_color_params);
    fill(red);
    fz_end_mask(context, m_device);
    EXPECT_EQ(result.possible, PageClass::Blank);

    fill(gray);
    fz_pop_clip(context, m_device);

    EXPECT_EQ(result.pageClass, PageClass::Blank);
    EXPECT_EQ(result.possible, PageClass::Gray);
}

TEST_F(PaintDevice, TakesTilesForSeenWhereverTheyAre)
{
    fz_begin_tile(context, m_device, page, page, 10, 10, fz_identity);
    fill(red, outside);
    fz_end_tile(context, m_device);

    EXPECT_EQ(result.pageClass, PageClass::Color);
}

} // namespace
} // namespace JobParser::Worker
