#include "JobParser/paper/PaperSizeManager.h"

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Torv/Data/IniFile.h"

using namespace JobParser;

namespace
{

/// A configuration file that lasts as long as the test.
class ConfigFile
{
public:
    explicit ConfigFile(const std::string& text)
        : m_path(std::filesystem::path(testing::TempDir()) /
                 ("PaperSizeManagerTest" + std::to_string(getpid()) + ".ini"))
    {
        std::ofstream(m_path, std::ios::binary) << text;
    }

    ~ConfigFile() { std::filesystem::remove(m_path); }
    ConfigFile(const ConfigFile&) = delete;
    ConfigFile& operator=(const ConfigFile&) = delete;

    void openWith(Torv::Data::IniFile& ini) const { ASSERT_TRUE(ini.open(m_path.string())); }

private:
    std::filesystem::path m_path;
};

void configure(PaperSizeManager& papers, const std::string& text)
{
    const ConfigFile file(text);
    Torv::Data::IniFile ini;
    file.openWith(ini);
    papers.loadConfig(ini);
}

void setTolerance(PaperSizeManager& papers, const std::string& millimetres)
{
    configure(papers, "[JobParser]\npaperSizeTolerance = " + millimetres + "\n");
}

std::string oneMegabyteOf(char byte)
{
    return std::string(1 << 20, byte);
}

struct NameRow {
    const char* name;
    Paper paper;
};

constexpr NameRow defaultNames[] = {
    {"A5", PaperA5},
    {"A4", PaperA4},
    {"A3", PaperA3},
    {"B4", PaperB4},
    {"B5", PaperB5},
    {"FOLIO", PaperFolio},
    {"LEDGER", PaperLedger},
    {"LEGAL", PaperLegal},
    {"LETTER", PaperLetter},
    {"STATEMENT", PaperStatement},
    {"PAPEROTHER", PaperOther},
    {"JISB4", PaperB4},
    {"JISB5", PaperB5},
    {"B5 (JIS)", PaperB5},
    {"B5 (ISO)", PaperB5},
    {"EA4PAPER", PaperA4},
    {"ELETTERPAPER", PaperLetter},
    {"LEDGER (11 X 17)", PaperLedger},
    {"EA3PAPER", PaperA3},
    {"EJDOUBLEPOSTCARD", PaperA5},
    {"EJB4PAPER", PaperB4},
    {"EJB5PAPER", PaperB5},
    {"ELEGALPAPER", PaperLegal},
    {"JIS8K", PaperStatement},
    {"EA5PAPER", PaperA5},
    {"ELEDGERPAPER", PaperLedger},
    {"EB5ENVELOPE", PaperB5},
    {"UNKNOWN PAPER SIZE (2000)", PaperA5},
    {"UNKNOWN PAPER SIZE (46)", PaperB4},
    {"UNKNOWN PAPER SIZE (15)", PaperStatement},
};

} // namespace

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

} // namespace

TEST(PaperName, RecognisesTheSeriesEitherSideFirst)
{
    const PaperSizeManager papers;

    for (const SheetRow& row : seriesSheets) {
        EXPECT_EQ(papers.paperName(row.width, row.height), row.name);
        EXPECT_EQ(papers.paperName(row.height, row.width), row.name);
    }
}

TEST(PaperName, PrefersTheEarlierSeriesWhereTwoAreWithinTheTolerance)
{
    PaperSizeManager papers;

    EXPECT_EQ(papers.paperName(45, 64), "B9");
    EXPECT_EQ(papers.paperName(32, 45), "B10");
    setTolerance(papers, "0.5");

    EXPECT_EQ(papers.paperName(45, 64), "JISB9");
    EXPECT_EQ(papers.paperName(32, 45), "JISB10");
}

TEST(PaperName, StopsBehindTheHighestIndexOfASeries)
{
    PaperSizeManager papers;
    setTolerance(papers, "0.5");

    EXPECT_EQ(papers.paperName(18, 26), "");
    EXPECT_EQ(papers.paperName(22, 31), "");
    EXPECT_EQ(papers.paperName(20, 28), "");
    EXPECT_EQ(papers.paperName(11, 16), "");
}

TEST(PaperName, RecognisesTheSeriesUpToTheTolerance)
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

TEST(PaperName, DoesNotRecogniseARoundedSeriesSizeWithoutTolerance)
{
    PaperSizeManager papers;
    setTolerance(papers, "0");

    EXPECT_EQ(papers.paperName(210, 297), "");
    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperOther);
    EXPECT_EQ(papers.paperName(225, 320), "FOLIO");
    EXPECT_EQ(papers.paperBySize("2250x3200"), PaperFolio);
}

namespace
{

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

} // namespace

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

INSTANTIATE_TEST_SUITE_P(PaperName, FixedSheet, testing::ValuesIn(fixedSheets), [](const auto& row) {
    return row.param.name + std::to_string(static_cast<int>(row.param.shortSide)) + "By" +
           std::to_string(static_cast<int>(row.param.longSide));
});

TEST(PaperName, ComparesInchSizesInDoublePrecision)
{
    const PaperSizeManager papers;

    // The single that is nearest to 141.7 lies below it, and so does that of 137.7.
    EXPECT_EQ(papers.paperName(141.7F, 215.9F), "STATEMENT");
    EXPECT_EQ(papers.paperName(137.7F, 215.9F), "");
    EXPECT_EQ(papers.paperName(215.9F, 281.4F), "LETTER");
    EXPECT_EQ(papers.paperName(215.9F, 277.4F), "");
}

TEST(PaperName, ComparesTheMetricFolioInSinglePrecision)
{
    const PaperSizeManager papers;

    EXPECT_EQ(papers.paperName(223, 322), "FOLIO");
    EXPECT_EQ(papers.paperName(227, 318), "FOLIO");
    EXPECT_EQ(papers.paperName(222.99998F, 320), "");
    EXPECT_EQ(papers.paperName(227.00002F, 320), "");
}

TEST(PaperName, LetsTheLongSideAloneDecideOnSheetsAsWideAsLetter)
{
    PaperSizeManager papers;
    EXPECT_EQ(papers.paperName(215.9F, 300), "");

    // 225 x 320 would fit as well now.
    setTolerance(papers, "9.5");

    EXPECT_EQ(papers.paperName(225, 311), "");
    EXPECT_EQ(papers.paperName(225.5F, 311), "FOLIO");
}

TEST(PaperName, DoesNotNameOtherSheets)
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

TEST(PaperName, DoesNotNameHostileSidesWhateverTheTolerance)
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

TEST(PaperName, StopsTheWalkThroughASeriesUnderANegativeTolerance)
{
    PaperSizeManager papers;
    setTolerance(papers, "-5");

    EXPECT_EQ(papers.paperName(1, 100), "");
    EXPECT_EQ(papers.paperBySize("10x1000"), PaperOther);
}

TEST(PaperName, TakesTheFirstRowUnderAToleranceThatAllowsAll)
{
    PaperSizeManager papers;
    setTolerance(papers, "100000");

    EXPECT_EQ(papers.paperName(1, 1), "STATEMENT");
    EXPECT_EQ(papers.paperName(210, 297), "STATEMENT");
    EXPECT_EQ(papers.paperName(std::numeric_limits<float>::quiet_NaN(), 210), "");
    EXPECT_EQ(papers.paperName(210, std::numeric_limits<float>::quiet_NaN()), "");
    EXPECT_EQ(papers.paperName(std::numeric_limits<float>::infinity(), 210), "");
}

TEST(PaperConfiguration, ChangesNothingWithoutAFile)
{
    PaperSizeManager papers;
    Torv::Data::IniFile ini;

    papers.loadConfig(ini);

    for (const NameRow& row : defaultNames)
        EXPECT_EQ(papers.paperById(row.name, false), row.paper) << row.name;
    EXPECT_EQ(papers.paperName(212, 299), "A4");
    EXPECT_EQ(papers.paperName(212.01F, 299), "");
}

TEST(PaperConfiguration, SetsTheTolerance)
{
    PaperSizeManager papers;
    papers.add("1000x1000", PaperLegal);

    setTolerance(papers, "3.5");

    EXPECT_EQ(papers.paperName(213.5F, 297), "A4");
    EXPECT_EQ(papers.paperName(213.6F, 297), "");
    EXPECT_EQ(papers.paperBySize("1035x1000"), PaperLegal);
    EXPECT_EQ(papers.paperByCustomSize({103.5F, 100, PaperUnknown}), PaperLegal);
    EXPECT_EQ(papers.paperByCustomSize({103.6F, 100, PaperUnknown}), PaperUnknown);
}

TEST(PaperConfiguration, KeepsThePresentToleranceWhereNoneIsGiven)
{
    PaperSizeManager papers;
    setTolerance(papers, "5");

    configure(papers, "[JobParser]\naliasA4 = Office\n");

    EXPECT_EQ(papers.paperName(214, 297), "A4");
}

TEST(PaperConfiguration, KeepsCachedAnswersIfOnlyTheToleranceChanges)
{
    PaperSizeManager papers;
    ASSERT_EQ(papers.paperBySize("2100x2970"), PaperA4);

    setTolerance(papers, "0");

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperA4);
    EXPECT_EQ(papers.paperBySize("2100 x 2970"), PaperOther);
}

TEST(PaperConfiguration, AddsNamesAndSizes)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\n"
                      "aliasA4 = Office, 1000x1100 , \"Letterhead, first sheet\"\n"
                      "aliasLETTER = PAPERBOX: 0 0 288 288\n"
                      "aliasLEDGER (11 X 17) = Tabloid\n");

    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA4);
    EXPECT_EQ(papers.paperById("letterhead, FIRST sheet", false), PaperA4);
    EXPECT_EQ(papers.paperById("1000x1100", false), PaperA4);
    EXPECT_EQ(papers.paperBySize("1110x1010"), PaperA4);
    EXPECT_EQ(papers.paperBySize("1016x1016"), PaperLetter);
    EXPECT_EQ(papers.paperById("tabloid", false), PaperLedger);
    EXPECT_EQ(papers.paperById("A4", false), PaperA4);
}

TEST(PaperConfiguration, AddsAliasesOfEveryDefaultName)
{
    std::string text = "[JobParser]\n";
    for (const NameRow& row : defaultNames)
        text += std::string("alias") + row.name + " = Alias of " + row.name + "\n";
    PaperSizeManager papers;

    configure(papers, text);

    for (const NameRow& row : defaultNames)
        EXPECT_EQ(papers.paperById(std::string("ALIAS OF ") + row.name, false), row.paper) << row.name;
}

TEST(PaperConfiguration, StripsAliasesAndLeavesOutEmptyOnes)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\naliasA3 = \" \tOffice \v\", , \"\", \" \t \"\n");

    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA3);
    EXPECT_EQ(papers.paperById("", false), PaperOther);
    EXPECT_EQ(papers.paperById(" \t ", false), PaperOther);
}

TEST(PaperConfiguration, KeepsABadSizeAsAName)
{
    PaperSizeManager papers;
    const std::string huge(60, '9');

    configure(papers, "[JobParser]\naliasA3 = 2100x, -x-, " + huge + "x1\n");

    EXPECT_EQ(papers.paperById("2100X", false), PaperA3);
    EXPECT_EQ(papers.paperById("-x-", false), PaperA3);
    EXPECT_EQ(papers.paperById(huge + "x1", false), PaperA3);
    EXPECT_EQ(papers.paperByCustomSize({0, 0, PaperUnknown}), PaperUnknown);
}

TEST(PaperConfiguration, WalksTheNamesInAscendingOrder)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\n"
                      "aliasLETTER = Office, 5000x5000\n"
                      "aliasB4 = Office, 5000x5000\n"
                      "aliasA3 = Office, 5000x5000\n");

    EXPECT_EQ(papers.paperById("OFFICE", false), PaperLetter);
    EXPECT_EQ(papers.paperById("5000x5000", false), PaperLetter);
    EXPECT_EQ(papers.paperBySize("5000x5000"), PaperA3);
}

TEST(PaperConfiguration, DoesNotLookForAliasesOfAliases)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\naliasA4 = Office, ZZZ\naliasOFFICE = Desk\naliasZZZ = Desk\n");

    EXPECT_EQ(papers.paperById("DESK", false), PaperOther);
}

TEST(PaperConfiguration, TakesThePaperThatANameHadBeforeTheFile)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\naliasA4 = A5\naliasA5 = Booklet\n");

    EXPECT_EQ(papers.paperById("A5", false), PaperA4);
    EXPECT_EQ(papers.paperById("BOOKLET", false), PaperA5);
}

TEST(PaperConfiguration, AddsAliasesOfNamesThatTheHostAdded)
{
    PaperSizeManager papers;
    papers.add("Office", PaperB5);

    configure(papers, "[JobParser]\naliasOFFICE = Desk\n");

    EXPECT_EQ(papers.paperById("DESK", false), PaperB5);
}

TEST(PaperConfiguration, ReadsItsOwnSectionAndLeavesItChosen)
{
    const ConfigFile file("[Other]\npaperSizeTolerance = 50\naliasA4 = Foreign\n"
                          "[JobParser]\npaperSizeTolerance = 4\naliasA4 = Office\n");
    Torv::Data::IniFile ini;
    file.openWith(ini);
    ini.setSection("Other");
    PaperSizeManager papers;

    papers.loadConfig(ini);

    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA4);
    EXPECT_EQ(papers.paperById("FOREIGN", false), PaperOther);
    EXPECT_EQ(papers.paperName(214, 297), "A4");
    EXPECT_EQ(papers.paperName(214.1F, 297), "");
    EXPECT_EQ(ini.valueFloat("paperSizeTolerance", 0), 4.0F);
}

TEST(PaperConfiguration, LeavesTheDefaultsWithTheSampleFile)
{
    Torv::Data::IniFile ini;
    ASSERT_TRUE(ini.open(JOBPARSER_SOURCE_DIR "/docs/config.ini"));
    PaperSizeManager papers;

    papers.loadConfig(ini);

    EXPECT_EQ(ini.valueFloat("paperSizeTolerance", 0), 2.0F);
    for (const NameRow& row : defaultNames)
        EXPECT_EQ(papers.paperById(row.name, false), row.paper) << row.name;
    EXPECT_EQ(papers.paperById("OFFICE", false), PaperOther);
}

TEST(PaperSizeCache, AnswersAllTextsAlikeHoweverManyCome)
{
    const PaperSizeManager papers;

    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 10000; ++i)
            ASSERT_EQ(papers.paperBySize(std::to_string(100000 + i) + "x2970"), PaperOther);
        ASSERT_EQ(papers.paperBySize("2100x2970"), PaperA4);
        ASSERT_EQ(papers.paperBySize("2159x2794"), PaperLetter);
    }
}

TEST(PaperSizeCache, TellsTextsApartByEveryByte)
{
    PaperSizeManager papers;
    papers.add("2100x2970", PaperLegal);

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperLegal);
    EXPECT_EQ(papers.paperBySize("2100x2970 "), PaperLegal);
    EXPECT_EQ(papers.paperBySize("2100X3970"), PaperOther);
    EXPECT_THROW(papers.paperBySize(std::string("2100x2970\0", 10)), std::invalid_argument);
}

TEST(PaperSizeManagerThreads, MayAskWhileAnotherAddsAndConfigures)
{
    PaperSizeManager papers;
    const ConfigFile file("[JobParser]\npaperSizeTolerance = 2\naliasA4 = Office, 2095x2970\n");
    Torv::Data::IniFile ini;
    file.openWith(ini);
    std::atomic<bool> done = false;
    std::atomic<int> wrong = 0;
    const auto ask = [&] {
        while (!done) {
            const Paper bySize = papers.paperById("2100x2970", true);
            const Paper bySizeText = papers.paperBySize("2970 x 2100");
            const Paper custom = papers.paperByCustomSize({210, 297, PaperUnknown});
            if ((bySize != PaperA4 && bySize != PaperLetter) ||
                (bySizeText != PaperA4 && bySizeText != PaperLetter))
                ++wrong;
            if (custom != PaperUnknown && custom != PaperA4 && custom != PaperLetter)
                ++wrong;
            if (papers.paperName(210, 297) != "A4" || papers.paperById("legal", false) != PaperLegal)
                ++wrong;
        }
    };

    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(ask);
    for (int i = 0; i < 300; ++i) {
        papers.add("name" + std::to_string(i), PaperA3);
        papers.add(std::to_string(2100 + i % 3) + "x2970", PaperLetter);
        papers.addDefaultPapers();
        papers.loadConfig(ini);
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(papers.paperById("NAME299", false), PaperA3);
    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA4);
}

TEST(PaperSizeManagerThreads, NeverKeepAnAnswerThatAnAddMadeOutdated)
{
    PaperSizeManager papers;
    std::atomic<bool> done = false;
    std::thread asking([&] {
        while (!done)
            papers.paperById("2100x2970", true);
    });
    constexpr std::array<Paper, 3> turns{PaperLegal, PaperLedger, PaperLetter};

    int outdated = 0;
    for (int i = 0; i < 2000; ++i) {
        const Paper paper = turns[static_cast<std::size_t>(i) % turns.size()];
        papers.add("A4", paper);
        if (papers.paperById("2100x2970", true) != paper)
            ++outdated;
    }
    done = true;
    asking.join();

    EXPECT_EQ(outdated, 0);
}

TEST(PaperSizeManagerThreads, MayAllBeTheFirstToAsk)
{
    for (int round = 0; round < 20; ++round) {
        const PaperSizeManager papers;
        std::array<Paper, 4> answers{};

        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < answers.size(); ++i)
            threads.emplace_back(
                [&papers, &answers, i] { answers[i] = papers.paperById("2970x2100", true); });
        for (std::thread& thread : threads)
            thread.join();

        for (const Paper answer : answers)
            EXPECT_EQ(answer, PaperA4);
    }
}
