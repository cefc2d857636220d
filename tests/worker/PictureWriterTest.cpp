#include "worker/PictureWriter.h"

#include <fstream>
#include <gtest/gtest.h>
#include <tiffio.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

const std::vector<std::uint8_t> sixPixels{255, 0, 0, 0, 255, 0, 0, 0, 255, 1, 2, 3, 4, 5, 6, 7, 8, 9};

TEST(PictureWriter, WritesPagesOfATiffThatComeBackAsTheyWere)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("a.tif");
    TiffWriter writer(path);
    writer.add({sixPixels.data(), 3, 2, 3, 150});
    writer.add({sixPixels.data(), 6, 3, 1, 72});
    writer.close();

    TIFF* file = TIFFOpen(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(TIFFNumberOfDirectories(file), 2);
    std::vector<std::uint8_t> row(9);
    EXPECT_EQ(TIFFReadScanline(file, row.data(), 0, 0), 1);
    EXPECT_EQ(TIFFReadScanline(file, row.data(), 1, 0), 1);
    EXPECT_EQ(row, (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    float resolution = 0;
    EXPECT_EQ(TIFFGetField(file, TIFFTAG_XRESOLUTION, &resolution), 1);
    EXPECT_EQ(resolution, 150.0F);
    TIFFClose(file);
}

TEST(PictureWriter, WritesAJpeg)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("a.jpg");

    writeJpeg({sixPixels.data(), 3, 2, 3, 150}, path);

    std::ifstream stream(path, std::ios::binary);
    EXPECT_EQ(stream.get(), 0xFF);
    EXPECT_EQ(stream.get(), 0xD8);
}

TEST(PictureWriter, RefusesAPathWithoutItsFolder)
{
    const Torv::Test::TemporaryDirectory directory;

    EXPECT_THROW(writeJpeg({sixPixels.data(), 3, 2, 3, 150}, directory.path("none/a.jpg")), WorkerException);
    EXPECT_THROW(TiffWriter(directory.path("none/a.tif")), WorkerException);
}

} // namespace
} // namespace JobParser::Worker
