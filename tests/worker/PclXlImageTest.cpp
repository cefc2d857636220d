#include "worker/PclXlImage.h"

#include <gtest/gtest.h>
#include <string_view>

#include "tests/worker/WalkerSupport.h"
#include "worker/PclXlFormat.h"

namespace JobParser::Worker
{
namespace
{

using namespace std::string_view_literals;

std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

PclXlValue valueOf(int number)
{
    const std::string bytes{static_cast<char>(number & 0xFF), static_cast<char>(number >> 8)};
    OpenBody open(bytes);
    PclXlValue value;
    EXPECT_TRUE(value.read(*open.reader, 0xC1, false));
    return value;
}

struct Format {
    int space = PclXl::Rgb;
    std::string_view palette = ""sv;
    int depth = 2; ///< 0 one bit, 1 four, 2 eight.
    int mapping = PclXl::DirectPixel;
    int width = 1;
};

PclXlImage imageOf(const Format& format, int tolerance = 0)
{
    const auto palette = bytesOf(format.palette);
    PclXlColorSpace space{format.space, {palette.begin(), palette.end()}};
    const PclXlAttributes attributes{{PclXl::ColorMapping, valueOf(format.mapping)},
                                     {PclXl::ColorDepth, valueOf(format.depth)},
                                     {PclXl::SourceWidth, valueOf(format.width)}};
    return {attributes, space, tolerance};
}

PclXlAttributes block(int rows, int compression, int padding = 4)
{
    return {{PclXl::BlockHeight, valueOf(rows)},
            {PclXl::CompressMode, valueOf(compression)},
            {PclXl::PadBytesMultiple, valueOf(padding)}};
}

PageClass classOf(const Format& format, const PclXlAttributes& attributes, std::string_view data)
{
    PclXlImage image = imageOf(format);
    image.takeBlock(attributes, bytesOf(data), PageClass::Color);
    return image.pageClass();
}

TEST(PclXlImage, TellsWhatItCanShow)
{
    EXPECT_EQ(imageOf({PclXl::Rgb}).greatest(), PageClass::Color);
    EXPECT_EQ(imageOf({PclXl::Srgb, "", 0}).greatest(), PageClass::Color);
    EXPECT_EQ(imageOf({PclXl::Gray}).greatest(), PageClass::Gray);
    EXPECT_EQ(imageOf({PclXl::Gray, "", 1}).greatest(), PageClass::Gray);
    EXPECT_EQ(imageOf({PclXl::Gray, "", 0}).greatest(), PageClass::Mono);
    EXPECT_EQ(imageOf({PclXl::Rgb, "\xFF\xFF\xFF\x20\x20\x20"sv, 0, PclXl::IndexedPixel}).greatest(),
              PageClass::Gray);
    EXPECT_EQ(imageOf({PclXl::Gray, "\xFF\x00"sv, 0, PclXl::IndexedPixel}).greatest(), PageClass::Mono);
}

TEST(PclXlImage, StepsOverThePaddingOfRows)
{
    const Format format{PclXl::Rgb, "", 2, PclXl::DirectPixel, 1};
    const auto rows = "\xFF\xFF\xFF\x00\xFF\xFF\xFF\x00"sv;

    EXPECT_EQ(classOf(format, block(2, PclXl::NoCompression, 4), rows), PageClass::Blank);
    EXPECT_EQ(classOf(format, block(2, PclXl::NoCompression, 1), rows), PageClass::Color);
}

TEST(PclXlImage, ReadsSamplesOfEachDepth)
{
    const auto plain = block(1, PclXl::NoCompression);

    EXPECT_EQ(classOf({PclXl::Gray, "", 0, PclXl::DirectPixel, 9}, plain, "\xFF\x80\x00\x00"sv),
              PageClass::Blank);
    EXPECT_EQ(classOf({PclXl::Gray, "", 0, PclXl::DirectPixel, 10}, plain, "\xFF\x80\x00\x00"sv),
              PageClass::Mono);
    EXPECT_EQ(classOf({PclXl::Gray, "", 1, PclXl::DirectPixel, 2}, plain, "\xF8\x00\x00\x00"sv),
              PageClass::Gray);
    EXPECT_EQ(classOf({PclXl::Rgb, "", 1, PclXl::DirectPixel, 2}, plain, "\xFF\xFF\xF0\x00"sv),
              PageClass::Color);
    EXPECT_EQ(classOf({PclXl::Rgb, "", 0, PclXl::DirectPixel, 2}, plain, "\xE0\x00\x00\x00"sv),
              PageClass::Mono);
}

TEST(PclXlImage, TakesColorsThatAreMissingInThePaletteForNothing)
{
    const Format format{PclXl::Rgb, "\xFF\xFF\xFF"sv, 2, PclXl::IndexedPixel, 4};

    EXPECT_EQ(classOf(format, block(1, PclXl::NoCompression), "\x00\x01\x80\xFF"sv), PageClass::Blank);
}

TEST(PclXlImage, GoesOnWithARunInTheNextRow)
{
    const Format format{PclXl::Gray, "", 2, PclXl::DirectPixel, 4};

    EXPECT_EQ(classOf(format, block(2, PclXl::RunLength), "\xF9\xFF"sv), PageClass::Blank);
    EXPECT_EQ(classOf(format, block(2, PclXl::RunLength), "\xFB\xFF\x01\xFF\x7F"sv), PageClass::Gray);
    // The last row is cut off.
    EXPECT_EQ(classOf(format, block(2, PclXl::RunLength), "\xFB\xFF\x00\x00"sv), PageClass::Blank);
}

TEST(PclXlImage, StartsEachBlockOfDeltaRowsAnew)
{
    // Black but for what a row changes.
    const Format format{PclXl::Gray, "", 2, PclXl::DirectPixel, 1};
    const auto white = "\x02\x00\x00\xFF"sv;
    PclXlImage image = imageOf(format);

    image.takeBlock(block(1, PclXl::DeltaRow), bytesOf(white), PageClass::Gray);
    EXPECT_EQ(image.pageClass(), PageClass::Blank);
    image.takeBlock(block(1, PclXl::DeltaRow), bytesOf("\x00\x00"sv), PageClass::Gray);
    EXPECT_EQ(image.pageClass(), PageClass::Mono);
}

TEST(PclXlImage, LooksNoFurtherThanAsked)
{
    PclXlImage image = imageOf({PclXl::Gray, "", 2, PclXl::DirectPixel, 4});

    image.takeBlock(block(2, PclXl::NoCompression), bytesOf("\x00\x00\x00\x00\x80\x80\x80\x80"sv),
                    PageClass::Mono);

    EXPECT_EQ(image.pageClass(), PageClass::Mono);
}

TEST(PclXlImage, TakesWhatDiffersWithinTheToleranceForGray)
{
    PclXlImage image = imageOf({}, 1);

    image.takeBlock(block(1, PclXl::NoCompression), bytesOf("\x4C\x4D\x4C\x00"sv), PageClass::Color);

    EXPECT_EQ(image.pageClass(), PageClass::Gray);
}

TEST(PclXlImage, ShowsNothingWithoutAWidth)
{
    EXPECT_EQ(classOf({PclXl::Rgb, "", 2, PclXl::DirectPixel, 0}, block(9, PclXl::NoCompression), "xxxx"sv),
              PageClass::Blank);
}

} // namespace
} // namespace JobParser::Worker
