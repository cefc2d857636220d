// What a configuration file makes of a manager.

#include <gtest/gtest.h>
#include <string>

#include "JobParser/paper/PaperSizeManager.h"
#include "tests/JobParser/paper/PaperSupport.h"

#include "Torv/Data/IniFile.h"

namespace JobParser
{
namespace
{

TEST(PaperSizeManagerConfig, ChangesNothingWithoutAFile)
{
    PaperSizeManager papers;
    Torv::Data::IniFile ini;

    papers.loadConfig(ini);

    for (const NameRow& row : defaultNames)
        EXPECT_EQ(papers.paperById(row.name, false), row.paper) << row.name;
    EXPECT_EQ(papers.paperName(212, 299), "A4");
    EXPECT_EQ(papers.paperName(212.01F, 299), "");
}

TEST(PaperSizeManagerConfig, SetsTheTolerance)
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

TEST(PaperSizeManagerConfig, KeepsThePresentToleranceWhereNoneIsGiven)
{
    PaperSizeManager papers;
    setTolerance(papers, "5");

    configure(papers, "[JobParser]\naliasA4 = Office\n");

    EXPECT_EQ(papers.paperName(214, 297), "A4");
}

TEST(PaperSizeManagerConfig, KeepsCachedAnswersIfOnlyTheToleranceChanges)
{
    PaperSizeManager papers;
    ASSERT_EQ(papers.paperBySize("2100x2970"), PaperA4);

    setTolerance(papers, "0");

    EXPECT_EQ(papers.paperBySize("2100x2970"), PaperA4);
    EXPECT_EQ(papers.paperBySize("2100 x 2970"), PaperOther);
}

TEST(PaperSizeManagerConfig, AddsNamesAndSizes)
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

TEST(PaperSizeManagerConfig, AddsAliasesOfEveryDefaultName)
{
    std::string text = "[JobParser]\n";
    for (const NameRow& row : defaultNames)
        text += std::string("alias") + row.name + " = Alias of " + row.name + "\n";
    PaperSizeManager papers;

    configure(papers, text);

    for (const NameRow& row : defaultNames)
        EXPECT_EQ(papers.paperById(std::string("ALIAS OF ") + row.name, false), row.paper) << row.name;
}

TEST(PaperSizeManagerConfig, StripsAliasesAndLeavesOutEmptyOnes)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\naliasA3 = \" \tOffice \v\", , \"\", \" \t \"\n");

    EXPECT_EQ(papers.paperById("OFFICE", false), PaperA3);
    EXPECT_EQ(papers.paperById("", false), PaperOther);
    EXPECT_EQ(papers.paperById(" \t ", false), PaperOther);
}

TEST(PaperSizeManagerConfig, KeepsABadSizeAsAName)
{
    PaperSizeManager papers;
    const std::string huge(60, '9');

    configure(papers, "[JobParser]\naliasA3 = 2100x, -x-, " + huge + "x1\n");

    EXPECT_EQ(papers.paperById("2100X", false), PaperA3);
    EXPECT_EQ(papers.paperById("-x-", false), PaperA3);
    EXPECT_EQ(papers.paperById(huge + "x1", false), PaperA3);
    EXPECT_EQ(papers.paperByCustomSize({0, 0, PaperUnknown}), PaperUnknown);
}

TEST(PaperSizeManagerConfig, WalksTheNamesInAscendingOrder)
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

TEST(PaperSizeManagerConfig, DoesNotLookForAliasesOfAliases)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\naliasA4 = Office, ZZZ\naliasOFFICE = Desk\naliasZZZ = Desk\n");

    EXPECT_EQ(papers.paperById("DESK", false), PaperOther);
}

TEST(PaperSizeManagerConfig, TakesThePaperThatANameHadBeforeTheFile)
{
    PaperSizeManager papers;

    configure(papers, "[JobParser]\naliasA4 = A5\naliasA5 = Booklet\n");

    EXPECT_EQ(papers.paperById("A5", false), PaperA4);
    EXPECT_EQ(papers.paperById("BOOKLET", false), PaperA5);
}

TEST(PaperSizeManagerConfig, AddsAliasesOfNamesThatTheHostAdded)
{
    PaperSizeManager papers;
    papers.add("Office", PaperB5);

    configure(papers, "[JobParser]\naliasOFFICE = Desk\n");

    EXPECT_EQ(papers.paperById("DESK", false), PaperB5);
}

TEST(PaperSizeManagerConfig, ReadsItsOwnSectionAndLeavesItChosen)
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

TEST(PaperSizeManagerConfig, LeavesTheDefaultsWithTheSampleFile)
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

} // namespace
} // namespace JobParser
