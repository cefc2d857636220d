#include "worker/JpegScan.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <vector>

#include "tests/Torv/TemporaryDirectory.h"
#include "worker/PictureWriter.h"

namespace JobParser::Worker
{
namespace
{

std::vector<std::uint8_t> jpegOf(int components, std::uint8_t first, std::uint8_t second, std::uint8_t third)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.file("picture.jpg", "");
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < 64 * 64; ++i) {
        pixels.push_back(first);
        if (components == 3)
            pixels.insert(pixels.end(), {second, third});
    }
    writeJpeg({pixels.data(), 64, 64, components, 72}, path);
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TEST(JpegScan, TellsTheClassOfPictures)
{
    EXPECT_EQ(classOfJpeg(jpegOf(3, 250, 10, 10), 8, PageClass::Color), PageClass::Color);
    EXPECT_EQ(classOfJpeg(jpegOf(3, 128, 128, 128), 8, PageClass::Color), PageClass::Gray);
    EXPECT_EQ(classOfJpeg(jpegOf(3, 255, 255, 255), 0, PageClass::Color), PageClass::Blank);
    EXPECT_EQ(classOfJpeg(jpegOf(1, 0, 0, 0), 0, PageClass::Color), PageClass::Mono);
}

TEST(JpegScan, FindsNothingInWhatIsNoJpeg)
{
    const std::vector<std::uint8_t> bytes{1, 2, 3};

    EXPECT_EQ(classOfJpeg(bytes, 0, PageClass::Color), PageClass::Blank);
    EXPECT_EQ(classOfJpeg({}, 0, PageClass::Color), PageClass::Blank);
}

TEST(JpegScan, SurvivesACutAtEveryByte)
{
    const auto bytes = jpegOf(3, 250, 10, 10);

    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_LE(classOfJpeg(std::span(bytes).first(size), 0, PageClass::Color), PageClass::Color);
}

} // namespace
} // namespace JobParser::Worker
