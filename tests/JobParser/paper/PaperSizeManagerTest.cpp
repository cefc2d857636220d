#include "JobParser/paper/PaperSizeManager.h"

#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <string>

#include "tests/JobParser/paper/PaperSupport.h"

namespace JobParser
{
namespace
{

std::string oneMegabyteOf(char byte)
{
    return std::string(1 << 20, byte);
}

TEST(PaperSizeManager, KnowsTheDefaultNames)
{
    const PaperSizeManager papers;

    for (const NameRow& row : defaultNames) {
        EXPECT_EQ(papers.paperById(row.name, false), row.paper) << row.name;
        EXPECT_EQ(papers.paperById(row.name, true), row.paper) << row.name;
    }
}

TEST(PaperSizeManager, FindsNamesInAnyCase)
{
    PaperSizeManager papers;
    papers.add("Office Sheet", PaperA3);

    EXPECT_EQ(papers.paperById("a4", false), PaperA4);
    EXPECT_EQ(papers.paperById("Letter", false), PaperLetter);
    EXPECT_EQ(papers.paperById("b5 (jis)", false), PaperB5);
    EXPECT_EQ(papers.paperById("ledger (11 x 17)", false), PaperLedger);
    EXPECT_EQ(papers.paperById("unknown paper size (46)", false), PaperB4);
    EXPECT_EQ(papers.paperById("OFFICE SHEET", false), PaperA3);
}

TEST(PaperSizeManager, TakesAnUnknownNameForAnotherPaper)
{
    const PaperSizeManager papers;

    for (const char* name : {"", "A6", "A4 ", " A4", "UNKNOWN PAPER SIZE (16)", "LETTERHEAD"}) {
        EXPECT_EQ(papers.paperById(name, false), PaperOther) << name;
        EXPECT_EQ(papers.paperById(name, true), PaperOther) << name;
    }
}

TEST(PaperSizeManager, TreatsAnyByteOfANameAsItself)
{
    using namespace std::string_literals;
    PaperSizeManager papers;
    papers.add("A4\0glossy"s, PaperA3);
    papers.add("\xFF\xE4"s, PaperLegal);

    EXPECT_EQ(papers.paperById("a4\0GLOSSY"s, false), PaperA3);
    EXPECT_EQ(papers.paperById("A4\0"s, false), PaperOther);
    EXPECT_EQ(papers.paperById("A4", false), PaperA4);
    EXPECT_EQ(papers.paperById("\xFF\xE4"s, true), PaperLegal);
    EXPECT_EQ(papers.paperById("\xFF\xC4"s, true), PaperOther);
    EXPECT_EQ(papers.paperById("2100x2970\0"s, true), PaperOther);
}

TEST(PaperSizeManager, LetsTheLastPaperOfANameCount)
{
    PaperSizeManager papers;

    papers.add("a4", PaperLegal);

    EXPECT_EQ(papers.paperById("A4", false), PaperLegal);
    EXPECT_EQ(papers.paperById("EA4PAPER", false), PaperA4);
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperLegal);
}

TEST(PaperSizeManager, GivesTheUnknownPaperOfANameAsItIs)
{
    PaperSizeManager papers;

    papers.add("A4", PaperUnknown);

    EXPECT_EQ(papers.paperById("A4", true), PaperUnknown);
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperUnknown);
}

TEST(PaperSizeManager, ForgetsTheDefaultNamesTooWhenCleared)
{
    PaperSizeManager papers;

    papers.clear();

    for (const NameRow& row : defaultNames)
        EXPECT_EQ(papers.paperById(row.name, false), PaperOther) << row.name;
}

TEST(PaperSizeManager, DoesNotBringDefaultNamesBackWithANameAddedAfterClear)
{
    PaperSizeManager papers;
    papers.clear();

    papers.add("Office", PaperA3);

    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA3);
    EXPECT_EQ(papers.paperById("A4", false), PaperOther);
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperOther);
}

TEST(PaperSizeManager, AddsTheDefaultNamesOverWhatIsThere)
{
    PaperSizeManager papers;
    papers.clear();
    papers.add("Office", PaperA3);
    papers.add("A4", PaperLegal);
    ASSERT_EQ(papers.paperBySize("2100x2970"), PaperLegal);

    papers.addDefaultPapers();

    for (const NameRow& row : defaultNames)
        EXPECT_EQ(papers.paperById(row.name, false), row.paper) << row.name;
    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA3);
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperA4);
}

TEST(PaperSizeManager, KeepsAddedSizesWhenCleared)
{
    PaperSizeManager papers;
    papers.add("1000x1000", PaperLegal);

    papers.clear();

    EXPECT_EQ(papers.paperById("1000x1000", false), PaperOther);
    EXPECT_EQ(papers.paperBySize("1000x1000"), PaperLegal);
    EXPECT_EQ(papers.paperByCustomSize({100, 100, PaperUnknown}), PaperLegal);
}

TEST(PaperSizeManager, DropsCachedAnswersWhenCleared)
{
    PaperSizeManager papers;
    ASSERT_EQ(papers.paperBySize("2100x2970"), PaperA4);

    papers.clear();

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperOther);
}

TEST(PaperSizeManager, DropsCachedAnswersWhenAnythingIsAdded)
{
    PaperSizeManager papers;
    ASSERT_EQ(papers.paperBySize("2100x2970"), PaperA4);
    ASSERT_EQ(papers.paperBySize("1050x1480"), PaperOther);

    papers.add("2100x2980", PaperLedger);
    papers.add("A6", PaperStatement);

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperLedger);
    EXPECT_EQ(papers.paperBySize("1050x1480"), PaperStatement);
}

TEST(PaperSizeManager, AnswersAllTextsAlikeHoweverManyCome)
{
    const PaperSizeManager papers;

    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 10000; ++i)
            ASSERT_EQ(papers.paperBySize(std::to_string(100000 + i) + "x2970"), PaperOther);
        ASSERT_EQ(papers.paperBySize("2100x2970"), PaperA4);
        ASSERT_EQ(papers.paperBySize("2159x2794"), PaperLetter);
    }
}

TEST(PaperSizeManager, TellsTextsApartByEveryByte)
{
    PaperSizeManager papers;
    papers.add("2100x2970", PaperLegal);

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperLegal);
    EXPECT_EQ(papers.paperBySize("2100x2970 "), PaperLegal);
    EXPECT_EQ(papers.paperBySize("2100X3970"), PaperOther);
    EXPECT_THROW(papers.paperBySize(std::string("2100x2970\0", 10)), std::invalid_argument);
}

TEST(PaperSizeManager, ParsesASizeInTenthsOfAMillimetreShortSideFirst)
{
    const PaperSizeManager papers;

    for (const char* text : {"2100x2970", "2970x2100", "2100 x 2970", "2100X2970", " \t2100\n x\v2970 \r\n\f",
                             "2100.0x2970.", "02100x2970", "2100.0.7x2970-1"}) {
        const PaperSizeManager::Size size = papers.parseSize(text);

        EXPECT_EQ(size.width, 210.0F) << text;
        EXPECT_EQ(size.height, 297.0F) << text;
        EXPECT_EQ(size.paper, PaperOther) << text;
    }
}

TEST(PaperSizeManager, ParsesABoxInPointsShortSideFirst)
{
    const PaperSizeManager papers;

    for (const char* text : {"paperbox: 0 0 595.28 841.89", "PAPERBOX:0 0 841.89 595.28",
                             "  PaperBox:\t0\n0\r595.28\v841.89 \f"}) {
        const PaperSizeManager::Size size = papers.parseSize(text);

        EXPECT_NEAR(size.width, 210.0016F, 0.0001F) << text;
        EXPECT_NEAR(size.height, 297.0001F, 0.0001F) << text;
        EXPECT_EQ(size.paper, PaperOther) << text;
    }
}

TEST(PaperSizeManager, TakesTheDifferencesOfABoxCorners)
{
    const PaperSizeManager papers;

    const PaperSizeManager::Size size = papers.parseSize("PAPERBOX: -36 100 36 388");

    EXPECT_FLOAT_EQ(size.width, 25.4F);
    EXPECT_FLOAT_EQ(size.height, 101.6F);
}

TEST(PaperSizeManager, ParsesSizesBelowZeroAsTheyStand)
{
    const PaperSizeManager papers;

    const PaperSizeManager::Size tenths = papers.parseSize("-2100x-2970");
    const PaperSizeManager::Size box = papers.parseSize("PAPERBOX: 72 0 0 72");

    EXPECT_EQ(tenths.width, -297.0F);
    EXPECT_EQ(tenths.height, -210.0F);
    EXPECT_FLOAT_EQ(box.width, -25.4F);
    EXPECT_FLOAT_EQ(box.height, 25.4F);
}

TEST(PaperSizeManager, ReadsTheLongestLeadingNumberOfAGroup)
{
    const PaperSizeManager papers;

    const PaperSizeManager::Size size = papers.parseSize("1.5.9x30-7");

    EXPECT_EQ(size.width, 0.15F);
    EXPECT_EQ(size.height, 3.0F);
}

TEST(PaperSizeManager, RejectsATextThatIsNoSize)
{
    const PaperSizeManager papers;

    for (const char* text : {"",
                             " ",
                             "A4",
                             "x",
                             "2100",
                             "2100x",
                             "x2970",
                             "2100x2970x1",
                             "2100x2970mm",
                             "a2100x2970",
                             "+2100x2970",
                             "2100,0x2970",
                             "2100 2970",
                             "2100*2970",
                             "1e3x1e3",
                             "PAPERBOX",
                             "PAPERBOX: 0 0 595",
                             "0 0 595 842",
                             "PAPERBOX 0 0 595 842",
                             "PAPERBOX : 0 0 595 842",
                             "PAPERBOX: 0 0 595 842 1",
                             "PAPERBOX: 0,0,595,842",
                             "MYPAPERBOX: 0 0 595 842",
                             "PAPERBOX: 2100x2970"}) {
        EXPECT_THROW(papers.parseSize(text), std::invalid_argument) << text;
        EXPECT_THROW(papers.paperBySize(text), std::invalid_argument) << text;
        EXPECT_EQ(papers.paperById(text, true), text == std::string("A4") ? PaperA4 : PaperOther) << text;
    }
}

TEST(PaperSizeManager, NamesTheTextThatIsNoSize)
{
    const PaperSizeManager papers;

    try {
        papers.parseSize("21 by 29");
        FAIL() << "Parsed";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "Invalid paper size syntax | size=21 by 29");
    }
}

TEST(PaperSizeManager, PassesOnWhatTheConversionOfAGroupThrows)
{
    const PaperSizeManager papers;
    const std::string huge(60, '9');

    for (const char* text : {"-x2970", "2100x-", ".x.", "--1x2970", "PAPERBOX: 0 0 - 842"}) {
        EXPECT_THROW(papers.parseSize(text), std::invalid_argument) << text;
        EXPECT_THROW(papers.paperBySize(text), std::invalid_argument) << text;
        EXPECT_EQ(papers.paperById(text, true), PaperOther) << text;
    }
    EXPECT_THROW(papers.parseSize(huge + "x1"), std::out_of_range);
    EXPECT_THROW(papers.paperBySize("PAPERBOX: 0 0 1 " + huge), std::out_of_range);
    EXPECT_EQ(papers.paperById(huge + "x1", true), PaperOther);
}

TEST(PaperSizeManager, TakesABoxThatOverflowsForAnotherPaper)
{
    PaperSizeManager papers;
    const std::string huge = "3" + std::string(38, '0');
    const std::string box = "PAPERBOX: -" + huge + " -" + huge + " " + huge + " " + huge;

    EXPECT_EQ(papers.paperBySize(box), PaperOther);

    papers.add(box, PaperLegal);

    EXPECT_EQ(papers.parseSize(box).width, std::numeric_limits<float>::infinity());
    EXPECT_EQ(papers.paperById(box, false), PaperLegal);
    EXPECT_EQ(papers.paperBySize(box), PaperOther);
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperA4);
}

TEST(PaperSizeManager, CopesWithTextsOfAnyLength)
{
    const PaperSizeManager papers;

    EXPECT_EQ(papers.paperById(oneMegabyteOf(' ') + "2100x2970" + oneMegabyteOf(' '), true), PaperA4);
    EXPECT_EQ(papers.paperById(oneMegabyteOf('0') + "2100x2970", true), PaperA4);
    EXPECT_EQ(papers.paperById(oneMegabyteOf('1'), true), PaperOther);
    EXPECT_EQ(papers.paperById(oneMegabyteOf('-') + "x" + oneMegabyteOf('.'), true), PaperOther);
    EXPECT_EQ(papers.paperById("PAPERBOX:" + oneMegabyteOf(' ') + "0 0 595.28" + oneMegabyteOf(' '), true),
              PaperOther);
}

TEST(PaperSizeManager, ReadsAnUnknownNameAsASizeOnlyIfAsked)
{
    const PaperSizeManager papers;

    EXPECT_EQ(papers.paperById("2100x2970", true), PaperA4);
    EXPECT_EQ(papers.paperById("2100x2970", false), PaperOther);
}

TEST(PaperSizeManager, FindsThePaperOfASize)
{
    const PaperSizeManager papers;
    const struct {
        const char* text;
        Paper paper;
    } rows[] = {
        {"2970x4200", PaperA3},
        {"2100x2970", PaperA4},
        {"1480x2100", PaperA5},
        {"2500x3530", PaperB4},
        {"1760x2500", PaperB5},
        {"2570x3640", PaperB4},
        {"1820x2570", PaperB5},
        {"2159x2794", PaperLetter},
        {"2794x2159", PaperLetter},
        {"2159x3556", PaperLegal},
        {"2159x3302", PaperFolio},
        {"2250x3200", PaperFolio},
        {"2794x4318", PaperLedger},
        {"1397x2159", PaperStatement},
        {"PAPERBOX: 0 0 612 792", PaperLetter},
        {"PAPERBOX: 0 0 1224 792", PaperLedger},
        {"PAPERBOX: 10 20 605.28 861.89", PaperA4},
        {"1050x1480", PaperOther}, // A6
        {"2290x3240", PaperOther}, // C4
        {"10x10", PaperOther},
        {"0x0", PaperOther},
        {"-2100x-2970", PaperOther},
    };

    for (const auto& row : rows) {
        EXPECT_EQ(papers.paperBySize(row.text), row.paper) << row.text;
        EXPECT_EQ(papers.paperBySize(row.text), row.paper) << row.text << " asked again";
    }
}

TEST(PaperSizeManager, GivesAnAddedSizeBeforeARecognisedOne)
{
    PaperSizeManager papers;

    papers.add("2110x2960", PaperLegal);

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperLegal);
    EXPECT_EQ(papers.paperBySize("2970x2100"), PaperLegal);
    EXPECT_EQ(papers.paperBySize("2130x2980"), PaperLegal);
    EXPECT_EQ(papers.paperBySize("2080x2970"), PaperA4);
}

TEST(PaperSizeManager, AddsASizeByItsBox)
{
    PaperSizeManager papers;

    papers.add("PAPERBOX: 0 0 288 288", PaperB4);

    EXPECT_EQ(papers.paperById("paperbox: 0 0 288 288", false), PaperB4);
    EXPECT_EQ(papers.paperBySize("1016x1016"), PaperB4);
}

TEST(PaperSizeManager, TakesTheSmallestAddedSizeWithinTheToleranceNotTheNearest)
{
    PaperSizeManager papers;
    papers.add("1010x1000", PaperA3);
    papers.add("990x1010", PaperLegal);
    papers.add("1500x1700", PaperLedger);
    papers.add("1500x1690", PaperFolio);

    EXPECT_EQ(papers.paperBySize("1010x1000"), PaperLegal);
    EXPECT_EQ(papers.paperByCustomSize({100, 101, PaperUnknown}), PaperLegal);
    EXPECT_EQ(papers.paperBySize("1500x1700"), PaperFolio);
    EXPECT_EQ(papers.paperByCustomSize({150, 170, PaperUnknown}), PaperFolio);
    EXPECT_EQ(papers.paperBySize("1500x1715"), PaperLedger);
}

TEST(PaperSizeManager, LetsTheLastPaperOfANameButTheFirstOfASizeCount)
{
    PaperSizeManager papers;

    papers.add("2100x2970", PaperA4);
    papers.add("2100x2970", PaperLetter);

    EXPECT_EQ(papers.paperById("2100x2970", true), PaperLetter);
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperA4);
    EXPECT_EQ(papers.paperById("2100 x 2970", true), PaperA4);
}

TEST(PaperSizeManager, FallsThroughToGeometryAtAnAddedSizeOfUnknownPaper)
{
    PaperSizeManager papers;

    papers.add("2100x2970", PaperUnknown);
    papers.add("2105x2970", PaperLegal);

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperA4);
    EXPECT_EQ(papers.paperByCustomSize({210, 297, PaperA4}), PaperUnknown);
}

TEST(PaperSizeManager, ComparesACustomSizeUnsorted)
{
    PaperSizeManager papers;
    papers.add("2100x2970", PaperA4);

    EXPECT_EQ(papers.paperByCustomSize({210, 297, PaperUnknown}), PaperA4);
    EXPECT_EQ(papers.paperByCustomSize({208, 299, PaperLegal}), PaperA4);
    EXPECT_EQ(papers.paperByCustomSize({212, 295, PaperUnknown}), PaperA4);
    EXPECT_EQ(papers.paperByCustomSize({297, 210, PaperUnknown}), PaperUnknown);
    EXPECT_EQ(papers.paperByCustomSize({212.01F, 297, PaperUnknown}), PaperUnknown);
    EXPECT_EQ(papers.paperByCustomSize({210, 294.99F, PaperUnknown}), PaperUnknown);
}

TEST(PaperSizeManager, KnowsNoCustomSizeOfItsOwn)
{
    const PaperSizeManager papers;

    EXPECT_EQ(papers.paperByCustomSize({210, 297, PaperA4}), PaperUnknown);
}

TEST(PaperSizeManager, KnowsNoCustomSizeThatIsNoNumber)
{
    PaperSizeManager papers;
    papers.add("2100x2970", PaperA4);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();

    EXPECT_EQ(papers.paperByCustomSize({nan, 297, PaperUnknown}), PaperUnknown);
    EXPECT_EQ(papers.paperByCustomSize({210, nan, PaperUnknown}), PaperUnknown);
    EXPECT_EQ(papers.paperByCustomSize({infinity, infinity, PaperUnknown}), PaperUnknown);
}

} // namespace
} // namespace JobParser
