#include "JobParser/model/Finishing.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>

#include "JobParser/model/OriginalBrand.h"

namespace JobParser
{
namespace
{

constexpr int highest = std::numeric_limits<int>::max();
constexpr int lowest = std::numeric_limits<int>::min();

struct Turn {
    int orientation;
    int quarterTurns;
    int result;
};

TEST(Finishing, TurnsAnOrientationByQuarters)
{
    constexpr std::array<Turn, 14> turns{{
        {0, 0, 0},
        {0, 1, 1},
        {0, -1, 3},
        {3, 1, 0},
        {1, -2, 3},
        {2, 2, 0},
        {1, 4, 1},
        {1, -4, 1},
        {3, 3, 2},
        {0, -7, 1},
        {7, 0, 3},
        {0, highest, 3},
        {0, lowest, 0},
        {highest, highest, 2},
    }};

    for (const Turn& turn : turns)
        EXPECT_EQ(static_cast<int>(rotate90(static_cast<Orientation>(turn.orientation), turn.quarterTurns)),
                  turn.result)
            << turn.orientation << " by " << turn.quarterTurns;
}

TEST(Finishing, TellsTheLandscapeValuesByTheirLowestBit)
{
    EXPECT_EQ(Orientation::Portrait & Orientation::Landscape, 0);
    EXPECT_EQ(Orientation::Landscape & Orientation::Landscape, 1);
    EXPECT_EQ(Orientation::ReversePortrait & Orientation::Landscape, 0);
    EXPECT_EQ(Orientation::ReverseLandscape & Orientation::Landscape, 1);
    EXPECT_EQ(Orientation::ReverseLandscape & Orientation::ReversePortrait, 2);
    EXPECT_EQ(Orientation::ReverseLandscape & 1, 1);
    EXPECT_EQ(Orientation::ReversePortrait & 1, 0);
}

TEST(Finishing, HasItsNumbers)
{
    EXPECT_EQ(static_cast<int>(Duplex::OneSided), 0);
    EXPECT_EQ(static_cast<int>(Duplex::LongEdge), 1);
    EXPECT_EQ(static_cast<int>(Duplex::ShortEdge), 2);
    EXPECT_EQ(static_cast<int>(Staple::None), 0);
    EXPECT_EQ(static_cast<int>(Staple::LeftTop), 1);
    EXPECT_EQ(static_cast<int>(Staple::RightTop), 2);
    EXPECT_EQ(static_cast<int>(Staple::Two), 3);
    EXPECT_EQ(static_cast<int>(Staple::UnknownPosition), 100);
    EXPECT_EQ(static_cast<int>(Staple::DeviceDefault), 101);
    EXPECT_EQ(static_cast<int>(Punch::None), 0);
    EXPECT_EQ(static_cast<int>(Punch::TwoHoles), 1);
    EXPECT_EQ(static_cast<int>(Punch::ThreeHoles), 2);
    EXPECT_EQ(static_cast<int>(Punch::FourHoles), 3);
    EXPECT_EQ(static_cast<int>(Punch::UnknownKind), 100);
    EXPECT_EQ(static_cast<int>(Punch::DriverDefault), 101);
    EXPECT_EQ(static_cast<int>(Orientation::Portrait), 0);
    EXPECT_EQ(static_cast<int>(Orientation::Landscape), 1);
    EXPECT_EQ(static_cast<int>(Orientation::ReversePortrait), 2);
    EXPECT_EQ(static_cast<int>(Orientation::ReverseLandscape), 3);
}

TEST(Finishing, HasANumberForEachBrand)
{
    using Zem::Printer::OriginalBrand;

    EXPECT_EQ(static_cast<int>(OriginalBrand::None), 0);
    EXPECT_EQ(static_cast<int>(OriginalBrand::KxDriver), 1);
    EXPECT_EQ(static_cast<int>(OriginalBrand::Hp), 2);
    EXPECT_EQ(static_cast<int>(OriginalBrand::Ricoh), 3);
    EXPECT_EQ(static_cast<int>(OriginalBrand::Toshiba), 4);
    EXPECT_EQ(static_cast<int>(OriginalBrand::Sharp), 5);
    EXPECT_EQ(static_cast<int>(OriginalBrand::Samsung), 6);
    EXPECT_EQ(static_cast<int>(OriginalBrand::XcptTicket), 7);
    EXPECT_EQ(static_cast<int>(OriginalBrand::Oki), 9);
    EXPECT_EQ(static_cast<int>(OriginalBrand::Lexmark), 10);
}

} // namespace
} // namespace JobParser
