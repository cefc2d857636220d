// The recognition of sheets by their sides, without a name.

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "JobParser/paper/PaperSizeManager.h"
#include "tests/JobParser/paper/PaperSupport.h"

namespace JobParser
{
namespace
{

struct SheetRow {
    float width;
    float height;
    const char* name;
};

constexpr SheetRow seriesSheets[] = {
    {841, 1189, "A0"},   {594, 841, "A1"},      {420, 594, "A2"},     {297, 420, "A3"},
    {210, 297, "A4"},    {148, 210, "A5"},      {105, 148, "A6"},     {74, 105, "A7"},
    {52, 74, "A8"},      {37, 52, "A9"},        {26, 37, "A10"},      {1000, 1414, "B0"},
    {707, 1000, "B1"},   {500, 707, "B2"},      {353, 500, "B3"},     {250, 353, "B4"},
    {176, 250, "B5"},    {125, 176, "B6"},      {88, 125, "B7"},      {62, 88, "B8"},
    {44, 62, "B9"},      {31, 44, "B10"},       {917, 1297, "C0"},    {648, 917, "C1"},
    {458, 648, "C2"},    {324, 458, "C3"},      {229, 324, "C4"},     {162, 229, "C5"},
    {114, 162, "C6"},    {81, 114, "C7"},       {57, 81, "C8"},       {40, 57, "C9"},
    {28, 40, "C10"},     {1030, 1456, "JISB0"}, {728, 1030, "JISB1"}, {515, 728, "JISB2"},
    {364, 515, "JISB3"}, {257, 364, "JISB4"},   {182, 257, "JISB5"},  {128, 182, "JISB6"},
    {91, 128, "JISB7"},  {64, 91, "JISB8"},     {22, 32, "JISB11"},   {16, 22, "JISB12"},
};

TEST(PaperSizeManagerGeometry, RecognisesTheSeriesEitherSideFirst)
{
    const PaperSizeManager papers;

    for (const SheetRow& row : seriesSheets) {
        EXPECT_EQ(papers.paperName(row.width, row.height), row.name);
        EXPECT_EQ(papers.paperName(row.height, row.width), row.name);
    }
}

TEST(PaperSizeManagerGeometry, PrefersTheEarlierSeriesWhereTwoAreWithinTheTolerance)
{
    PaperSizeManager papers;

    EXPECT_EQ(papers.paperName(45, 64), "B9");
    EXPECT_EQ(papers.paperName(32, 45), "B10");

    setTolerance(papers, "0.5");

    EXPECT_EQ(papers.paperName(45, 64), "JISB9");
    EXPECT_EQ(papers.paperName(32, 45), "JISB10");
}

TEST(PaperSizeManagerGeometry, StopsBehindTheHighestIndexOfASeries)
{
    PaperSizeManager papers;
    setTolerance(papers, "0.5");

    EXPECT_EQ(papers.paperName(18, 26), "");
    EXPECT_EQ(papers.paperName(22, 31), "");
    EXPECT_EQ(papers.paperName(20, 28), "");
    EXPECT_EQ(papers.paperName(11, 16), "");
}

TEST(PaperSizeManagerGeometry, RecognisesTheSeriesUpToTheTolerance)
{
    const PaperSizeManager papers;

    EXPECT_EQ(papers.paperName(208, 295), "A4");
    EXPECT_EQ(papers.paperName(212, 299), "A4");
    EXPECT_EQ(papers.paperName(208, 297), "A4");
    EXPECT_EQ(papers.paperName(210, 299), "A4");
    EXPECT_EQ(papers.paperName(207.99F, 297), "");
    EXPECT_EQ(papers.paperName(212.01F, 297), "");
    EXPECT_EQ(papers.paperName(210, 294.99F), "");
    EXPECT_EQ(papers.paperName(210, 299.01F), "");
}

TEST(PaperSizeManagerGeometry, DoesNotRecogniseARoundedSeriesSizeWithoutTolerance)
{
    PaperSizeManager papers;
    setTolerance(papers, "0");

    EXPECT_EQ(papers.paperName(210, 297), "");
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperOther);
    EXPECT_EQ(papers.paperName(225, 320), "FOLIO");
    EXPECT_EQ(papers.paperBySize("2250x3200"), PaperFolio);
}

struct FixedRow {
    float shortSide;
    float longSide;
    const char* name;
};

constexpr FixedRow fixedSheets[] = {
    {139.7F, 215.9F, "STATEMENT"}, {203.2F, 330.2F, "FOLIO"}, {209.9F, 329.8F, "FOLIO"},
    {215.9F, 279.4F, "LETTER"},    {215.9F, 342.9F, "FOLIO"}, {215.9F, 330.2F, "FOLIO"},
    {215.9F, 355.6F, "LEGAL"},     {225.0F, 320.0F, "FOLIO"}, {279.4F, 431.8F, "LEDGER"},
};

class FixedSheet : public testing::TestWithParam<FixedRow>
{
};

TEST_P(FixedSheet, IsRecognisedEitherSideFirst)
{
    const PaperSizeManager papers;
    const auto [shortSide, longSide, name] = GetParam();

    EXPECT_EQ(papers.paperName(shortSide, longSide), name);
    EXPECT_EQ(papers.paperName(longSide, shortSide), name);
}

TEST_P(FixedSheet, IsRecognisedUpToTheTolerance)
{
    const PaperSizeManager papers;
    const auto [shortSide, longSide, name] = GetParam();

    for (const float inside : {-1.99F, 1.99F}) {
        EXPECT_EQ(papers.paperName(shortSide + inside, longSide), name) << inside;
        EXPECT_EQ(papers.paperName(shortSide, longSide + inside), name) << inside;
        EXPECT_EQ(papers.paperName(shortSide + inside, longSide + inside), name) << inside;
        EXPECT_EQ(papers.paperName(shortSide - inside, longSide + inside), name) << inside;
    }
    for (const float outside : {-2.01F, 2.01F}) {
        EXPECT_EQ(papers.paperName(shortSide + outside, longSide), "") << outside;
        EXPECT_EQ(papers.paperName(shortSide, longSide + outside), "") << outside;
    }
}

INSTANTIATE_TEST_SUITE_P(PaperSizeManagerGeometry, FixedSheet, testing::ValuesIn(fixedSheets),
                         [](const auto& row) {
                             return row.param.name + std::to_string(static_cast<int>(row.param.shortSide)) +
                                    "By" + std::to_string(static_cast<int>(row.param.longSide));
                         });

TEST(PaperSizeManagerGeometry, ComparesInchSizesInDoublePrecision)
{
    const PaperSizeManager papers;

    // The single that is nearest to 141.7 lies below it, and so does that of 137.7.
    EXPECT_EQ(papers.paperName(141.7F, 215.9F), "STATEMENT");
    EXPECT_EQ(papers.paperName(137.7F, 215.9F), "");
    EXPECT_EQ(papers.paperName(215.9F, 281.4F), "LETTER");
    EXPECT_EQ(papers.paperName(215.9F, 277.4F), "");
}

TEST(PaperSizeManagerGeometry, ComparesTheMetricFolioInSinglePrecision)
{
    const PaperSizeManager papers;

    EXPECT_EQ(papers.paperName(223, 322), "FOLIO");
    EXPECT_EQ(papers.paperName(227, 318), "FOLIO");
    EXPECT_EQ(papers.paperName(222.99998F, 320), "");
    EXPECT_EQ(papers.paperName(227.00002F, 320), "");
}

TEST(PaperSizeManagerGeometry, LetsTheLongSideAloneDecideOnSheetsAsWideAsLetter)
{
    PaperSizeManager papers;
    EXPECT_EQ(papers.paperName(215.9F, 300), "");

    // 225 x 320 would fit as well now.
    setTolerance(papers, "9.5");

    EXPECT_EQ(papers.paperName(225, 311), "");
    EXPECT_EQ(papers.paperName(225.5F, 311), "FOLIO");
}

TEST(PaperSizeManagerGeometry, DoesNotNameOtherSheets)
{
    const PaperSizeManager papers;

    EXPECT_EQ(papers.paperName(1, 1), "");
    EXPECT_EQ(papers.paperName(0, 0), "");
    EXPECT_EQ(papers.paperName(2, 3), "");
    EXPECT_EQ(papers.paperName(210, 210), "");
    EXPECT_EQ(papers.paperName(100, 2000), "");
    EXPECT_EQ(papers.paperName(1682, 2378), "");
    EXPECT_EQ(papers.paperName(-210, -297), "");
    EXPECT_EQ(papers.paperName(-210, 297), "");
}

TEST(PaperSizeManagerGeometry, DoesNotNameHostileSidesWhateverTheTolerance)
{
    using Limits = std::numeric_limits<float>;
    constexpr std::array<float, 16> sides{0,
                                          -0.0F,
                                          1,
                                          -1,
                                          2,
                                          -2,
                                          5,
                                          100,
                                          210,
                                          1.0e30F,
                                          -1.0e30F,
                                          Limits::max(),
                                          Limits::lowest(),
                                          Limits::infinity(),
                                          -Limits::infinity(),
                                          Limits::quiet_NaN()};

    for (const char* tolerance : {"2", "0", "-2", "-5", "-1000000"}) {
        PaperSizeManager papers;
        setTolerance(papers, tolerance);

        for (const float width : sides) {
            for (const float height : sides)
                EXPECT_EQ(papers.paperName(width, height), "")
                    << width << " x " << height << ", " << tolerance;
        }
    }
}

TEST(PaperSizeManagerGeometry, StopsTheWalkThroughASeriesUnderANegativeTolerance)
{
    PaperSizeManager papers;
    setTolerance(papers, "-5");

    EXPECT_EQ(papers.paperName(1, 100), "");
    EXPECT_EQ(papers.paperBySize("10x1000"), PaperOther);
}

TEST(PaperSizeManagerGeometry, TakesTheFirstRowUnderAToleranceThatAllowsAll)
{
    PaperSizeManager papers;
    setTolerance(papers, "100000");

    EXPECT_EQ(papers.paperName(1, 1), "STATEMENT");
    EXPECT_EQ(papers.paperName(210, 297), "STATEMENT");
    EXPECT_EQ(papers.paperName(std::numeric_limits<float>::quiet_NaN(), 210), "");
    EXPECT_EQ(papers.paperName(210, std::numeric_limits<float>::quiet_NaN()), "");
    EXPECT_EQ(papers.paperName(std::numeric_limits<float>::infinity(), 210), "");
}

} // namespace
} // namespace JobParser
