#include "worker/ImageClassifier.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "worker/FitzContext.h"

namespace JobParser::Worker
{
namespace
{

using namespace std::string_view_literals;

struct Picture {
    const char* name;
    fz_colorspace* (*space)(fz_context*);
    int width;
    int bits;
    std::string_view samples; ///< Of one row.
    PageClass pageClass;
    std::array<float, 2> decode{0, 1};
    std::array<int, 2> colorKey{-1, -1};
};

fz_image* makeImage(fz_context* context, const Picture& picture)
{
    auto* buffer = static_cast<fz_compressed_buffer*>(fz_malloc(context, sizeof(fz_compressed_buffer)));
    std::memset(buffer, 0, sizeof(*buffer));
    buffer->params.type = FZ_IMAGE_RAW;
    buffer->buffer = fz_new_buffer_from_copied_data(
        context, reinterpret_cast<const unsigned char*>(picture.samples.data()), picture.samples.size());
    fz_colorspace* space = picture.space == nullptr ? nullptr : picture.space(context);
    std::array<float, 2 * FZ_MAX_COLORS> decode{};
    std::array<int, 2 * FZ_MAX_COLORS> key{};
    const int n = space == nullptr ? 1 : fz_colorspace_n(context, space);
    for (int i = 0; i < n; ++i) {
        std::copy(picture.decode.begin(), picture.decode.end(), decode.begin() + 2 * i);
        std::copy(picture.colorKey.begin(), picture.colorKey.end(), key.begin() + 2 * i);
    }
    const bool hasKey = picture.colorKey[0] >= 0;
    return fz_new_image_from_compressed_buffer(context, picture.width, 1, picture.bits, space, 72, 72, 0,
                                               space == nullptr, decode.data(), hasKey ? key.data() : nullptr,
                                               buffer, nullptr);
}

using FitzImage = FitzHandle<fz_image, fz_drop_image>;

class PictureClass : public testing::TestWithParam<Picture>
{
};

TEST_P(PictureClass, IsThatOfItsSamples)
{
    const FitzContext context;
    const FitzImage image(context.get(), makeImage(context.get(), GetParam()));

    EXPECT_EQ(ImageClassifier(context.get(), 0).classify(image.get()), GetParam().pageClass);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PictureClass,
    testing::Values(
        Picture{"WhiteBytes", fz_device_gray, 3, 8, "\xFF\xFF\xFF"sv, PageClass::Blank},
        Picture{"BlackBytes", fz_device_gray, 3, 8, "\xFF\x00\xFF"sv, PageClass::Mono},
        Picture{"GrayBytes", fz_device_gray, 3, 8, "\xFF\x00\x80"sv, PageClass::Gray},
        Picture{"WhiteBits", fz_device_gray, 9, 1, "\xFF\x80"sv, PageClass::Blank},
        Picture{"BlackBitBehindWhiteBytes", fz_device_gray, 10, 1, "\xFF\x80"sv, PageClass::Mono},
        Picture{"PaddingBits", fz_device_gray, 9, 1, "\xFF\xBF"sv, PageClass::Blank},
        Picture{"TwoBits", fz_device_gray, 4, 2, "\xF7"sv, PageClass::Gray},
        Picture{"FourBits", fz_device_gray, 2, 4, "\xF0"sv, PageClass::Mono},
        Picture{"SixteenBits", fz_device_gray, 1, 16, "\x80\x00"sv, PageClass::Gray},
        Picture{"Inverted", fz_device_gray, 1, 8, "\x00"sv, PageClass::Blank, {1, 0}},
        Picture{"InvertedBits", fz_device_gray, 8, 1, "\x01"sv, PageClass::Mono, {1, 0}},
        Picture{"HalfOfTheRange", fz_device_gray, 1, 8, "\xFF"sv, PageClass::Gray, {0, 0.5F}},
        Picture{"KeyedOut", fz_device_gray, 2, 8, "\x10\xFF"sv, PageClass::Blank, {0, 1}, {0, 32}},
        Picture{"NotKeyedOut", fz_device_gray, 2, 8, "\x21\xFF"sv, PageClass::Gray, {0, 1}, {0, 32}},
        Picture{"Red", fz_device_rgb, 2, 8, "\xFF\xFF\xFF\xFF\x00\x00"sv, PageClass::Color},
        Picture{"EqualChannels", fz_device_rgb, 2, 8, "\xFF\xFF\xFF\x40\x40\x40"sv, PageClass::Gray},
        Picture{"RedOfFourBits", fz_device_rgb, 2, 4, "\xFF\xFF\x00"sv, PageClass::Color},
        Picture{"KeyedOutColor", fz_device_rgb, 1, 8, "\x10\x20\x00"sv, PageClass::Blank, {0, 1}, {0, 32}},
        Picture{"BlackInk", fz_device_cmyk, 1, 8, "\x00\x00\x00\xFF"sv, PageClass::Mono},
        Picture{"NoInk", fz_device_cmyk, 1, 8, "\x00\x00\x00\x00"sv, PageClass::Blank},
        Picture{"Cyan", fz_device_cmyk, 1, 8, "\x80\x00\x00\x00"sv, PageClass::Color},
        Picture{"CyanUnderBlack", fz_device_cmyk, 1, 8, "\x80\x00\x00\xFF"sv, PageClass::Mono},
        Picture{"NeutralLab", fz_device_lab, 1, 8, "\x80\x80\x80"sv, PageClass::Gray},
        Picture{"WhiteLab", fz_device_lab, 1, 8, "\xFF\x80\x80"sv, PageClass::Blank},
        Picture{"Lab", fz_device_lab, 1, 8, "\x80\xC0\x80"sv, PageClass::Color},
        Picture{"CutOff", fz_device_gray, 9, 8, "\xFF\xFF"sv, PageClass::Blank},
        Picture{"Nothing", fz_device_gray, 9, 8, ""sv, PageClass::Blank},
        Picture{"Stencil", nullptr, 8, 1, "\xFF"sv, PageClass::Mono}),
    [](const auto& row) { return row.param.name; });

TEST(ImageClassifier, TakesWhatDiffersWithinTheToleranceForGray)
{
    const FitzContext context;
    const FitzImage image(context.get(), makeImage(context.get(), {"", fz_device_rgb, 1, 8, "\x40\x42\x40"sv,
                                                                   PageClass::Color}));

    EXPECT_EQ(ImageClassifier(context.get(), 1).classify(image.get()), PageClass::Color);
    EXPECT_EQ(ImageClassifier(context.get(), 2).classify(image.get()), PageClass::Gray);
}

TEST(ImageClassifier, TellsWhetherAStencilHasHoles)
{
    const FitzContext context;
    const auto paints = [&](std::string_view samples, std::array<float, 2> decode) {
        const FitzImage image(
            context.get(), makeImage(context.get(), {"", nullptr, 9, 1, samples, PageClass::Mono, decode}));
        return ImageClassifier(context.get(), 0).paints(image.get());
    };

    EXPECT_FALSE(paints("\xFF\xFF"sv, {0, 1}));
    EXPECT_TRUE(paints("\xFF\x7F"sv, {0, 1}));
    EXPECT_FALSE(paints("\xFF\xBF"sv, {0, 1}));
    EXPECT_FALSE(paints("\x00\x00"sv, {1, 0}));
    EXPECT_TRUE(paints("\x00\x80"sv, {1, 0}));
}

} // namespace
} // namespace JobParser::Worker
