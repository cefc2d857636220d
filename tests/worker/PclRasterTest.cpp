#include "worker/PclRaster.h"

#include <gtest/gtest.h>

#include "tests/worker/WalkerSupport.h"
#include "worker/PagePrinter.h"

namespace JobParser::Worker
{
namespace
{

using Bytes = std::vector<std::uint8_t>;

PageClass classOf(PclRaster& raster, const std::vector<Bytes>& planes)
{
    PagePrinter printer;
    for (std::size_t i = 0; i + 1 < planes.size(); ++i)
        raster.takePlane(planes[i]);
    raster.takeRow(planes.back(), raster.defaultPalette(), printer);
    printer.eject();
    for (const PageClass pageClass : {PageClass::Color, PageClass::Gray, PageClass::Mono}) {
        if (printer.facts().count(pageClass) != 0)
            return pageClass;
    }
    return PageClass::Blank;
}

TEST(PclRaster, KnowsTheGreatestClassOfItsPixels)
{
    PclRaster raster(0);
    EXPECT_EQ(raster.greatest(raster.defaultPalette()), PageClass::Mono);
    raster.setPlanes(3);
    EXPECT_EQ(raster.greatest(raster.defaultPalette()), PageClass::Color);
    raster.setPlanes(-4);
    EXPECT_EQ(raster.greatest(raster.defaultPalette()), PageClass::Color);
    raster.configureInks(Bytes{2, 1, 0, 75, 0, 75, 0, 2});
    EXPECT_EQ(raster.greatest(raster.defaultPalette()), PageClass::Mono);
    raster.configureInks(Bytes{2, 1, 0, 75, 0, 75, 0, 4});
    EXPECT_EQ(raster.greatest(raster.defaultPalette()), PageClass::Gray);
}

TEST(PclRaster, TakesNumbersOfPlanesThatDoNotExistForOne)
{
    for (const int planes : {0, 2, 7, -2, 4, -2147483647}) {
        PclRaster raster(0);
        raster.setPlanes(planes);
        EXPECT_EQ(classOf(raster, {{0x01}}), PageClass::Mono) << planes;
    }
}

TEST(PclRaster, PaintsBlackWhereLightIsMissing)
{
    PclRaster raster(0);
    raster.setPlanes(3);

    EXPECT_EQ(classOf(raster, {{0xFF}, {0xFF}, {0xFF}}), PageClass::Blank);
    EXPECT_EQ(classOf(raster, {{0xFE}, {0xFE}, {0xFE}}), PageClass::Mono);
    EXPECT_EQ(classOf(raster, {{0xFF}, {0xFE}, {0xFF}}), PageClass::Color);
}

TEST(PclRaster, ReadsIndexesOfAnyWidth)
{
    // Two bits an index, of which 3 is white and 1 is red.
    PclRaster raster(0);
    ASSERT_TRUE(raster.configure(Bytes{0, 1, 2, 8, 8, 8}));

    EXPECT_EQ(classOf(raster, {{0xFF}}), PageClass::Blank);
    EXPECT_EQ(classOf(raster, {{0xFC}}), PageClass::Mono);
    EXPECT_EQ(classOf(raster, {{0xFD}}), PageClass::Color);
}

TEST(PclRaster, ReadsDirectPlanes)
{
    PclRaster raster(0);
    ASSERT_TRUE(raster.configure(Bytes{1, 2, 1, 1, 1, 1}));

    EXPECT_EQ(classOf(raster, {{0x01}, {0x01}, {0x01}}), PageClass::Mono);
    EXPECT_EQ(classOf(raster, {{0x01}, {0x01}, {0x03}}), PageClass::Color);
}

TEST(PclRaster, TellsNeutralLab)
{
    PclRaster raster(0);
    ASSERT_TRUE(raster.configure(Bytes{3, 3, 8, 8, 8, 8}));

    EXPECT_EQ(classOf(raster, {{128, 0, 0}}), PageClass::Gray);
    EXPECT_EQ(classOf(raster, {{128, 60, 0}}), PageClass::Color);
}

TEST(PclRaster, ConfiguresNothingByAShortPayload)
{
    PclRaster raster(0);

    EXPECT_FALSE(raster.configure(Bytes{0, 3, 8}));
    raster.configureInks(Bytes{2});
    raster.configureInks(Bytes{9, 4, 0});
    raster.configureInks(Bytes{2, 4, 0});

    EXPECT_EQ(classOf(raster, {{0x01}}), PageClass::Mono);
}

TEST(PclRaster, KeepsItsInksAtADescriptionOfNone)
{
    PclRaster raster(0);
    raster.setPlanes(-4);

    raster.configureInks(Bytes{2, 2, 42});

    EXPECT_EQ(raster.greatest(raster.defaultPalette()), PageClass::Color);
    EXPECT_EQ(classOf(raster, {{0x01}, {0x00}, {0x00}, {0x00}}), PageClass::Mono);
    EXPECT_EQ(classOf(raster, {{0x00}, {0x01}, {0x00}, {0x00}}), PageClass::Color);
}

TEST(PclRaster, LosesPlanesBeyondTheLast)
{
    PclRaster raster(0);

    EXPECT_EQ(classOf(raster, {{0x00}, {0x01}, {0x01}}), PageClass::Blank);
}

} // namespace
} // namespace JobParser::Worker
