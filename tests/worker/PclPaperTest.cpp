#include "worker/PclPaper.h"

#include <gtest/gtest.h>

namespace JobParser::Worker
{
namespace
{

struct Sheet {
    int number;
    int width;
    int height;
};

TEST(PclPaper, KnowsTheNumbersOfPcl)
{
    for (const Sheet& sheet :
         {Sheet{1, 1842, 2667},   Sheet{2, 2159, 2794},  Sheet{3, 2159, 3556},  Sheet{4, 2159, 3302},
          Sheet{6, 2794, 4318},   Sheet{12, 1820, 2570}, Sheet{13, 1480, 2100}, Sheet{15, 1397, 2159},
          Sheet{24, 1050, 1480},  Sheet{25, 1480, 2100}, Sheet{26, 2100, 2970}, Sheet{27, 2970, 4200},
          Sheet{45, 1820, 2570},  Sheet{46, 2570, 3640}, Sheet{71, 1000, 1480}, Sheet{80, 984, 1905},
          Sheet{81, 1048, 2413},  Sheet{90, 1100, 2200}, Sheet{91, 1620, 2290}, Sheet{100, 1760, 2500},
          Sheet{139, 1397, 2159}, Sheet{101, 0, 0},      Sheet{0, 0, 0},        Sheet{-1, 0, 0}}) {
        EXPECT_EQ(pclPaper(sheet.number).width, sheet.width) << sheet.number;
        EXPECT_EQ(pclPaper(sheet.number).height, sheet.height) << sheet.number;
    }
}

TEST(PclPaper, KnowsTheNumbersOfPclXl)
{
    for (const Sheet& sheet :
         {Sheet{0, 2159, 2794}, Sheet{1, 2159, 3556}, Sheet{2, 2100, 2970}, Sheet{3, 1842, 2667},
          Sheet{4, 2794, 4318}, Sheet{5, 2970, 4200}, Sheet{9, 1100, 2200}, Sheet{10, 2570, 3640},
          Sheet{11, 1820, 2570}, Sheet{16, 1480, 2100}, Sheet{17, 1050, 1480}, Sheet{25, 2159, 3302},
          Sheet{108, 2100, 2970}, Sheet{231, 0, 0}}) {
        EXPECT_EQ(pclXlPaper(sheet.number).width, sheet.width) << sheet.number;
        EXPECT_EQ(pclXlPaper(sheet.number).height, sheet.height) << sheet.number;
    }
}

TEST(PclPaper, KnowsNamesOfPclXlInAnyCase)
{
    EXPECT_EQ(pclXlPaper("A4").width, 2100);
    EXPECT_EQ(pclXlPaper("letter").width, 2159);
    EXPECT_EQ(pclXlPaper("nobody's").width, 0);
}

TEST(PclPaper, TurnsASheetForOddQuarterTurns)
{
    EXPECT_EQ(turned({1, 2}, 0).width, 1);
    EXPECT_EQ(turned({1, 2}, 1).width, 2);
    EXPECT_EQ(turned({1, 2}, 2).width, 1);
    EXPECT_EQ(turned({1, 2}, 3).width, 2);
}

} // namespace
} // namespace JobParser::Worker
