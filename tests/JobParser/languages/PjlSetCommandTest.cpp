#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/PjlParser.h"
#include "tests/support/OpenJob.h"

using JobParser::Duplex;
using JobParser::JobInfo;
using JobParser::Orientation;
using JobParser::Punch;
using JobParser::Staple;
using JobParser::Pjl::ProcessingType;
using Zem::Printer::OriginalBrand;

namespace
{

class PjlSetCommand : public testing::Test
{
protected:
    void set(std::string_view param)
    {
        parser.currentCmd.param = param;
        parser.parseSetCmd();
    }
    void ticket(std::string_view param)
    {
        parser.currentCmd.param = param;
        parser.parseXCPT();
    }
    /// Which groups of the record are known.
    int known() const { return parser.jobInfo.flags(JobInfo::AllFlags); }

    OpenJob job{""};
    JobParser::Pjl::Parser parser{job.parent};
    JobInfo& info = parser.jobInfo;
};

class PjlTicket : public PjlSetCommand
{
};

/// What a record says of finishing after one SET line in a fresh parser.
struct FinishingRow {
    const char* param;
    int known;
    Staple stapling;
    Punch punching;
    OriginalBrand brand;
};

} // namespace

TEST_F(PjlSetCommand, TakesTheGreatestCopies)
{
    const struct {
        const char* param;
        int copies;
    } rows[] = {{"COPIES=5", 5},    {"QTY=3", 5},    {"QTY=7", 7},
                {"copies = 8 ", 8}, {"COPIES 9", 9}, {"COPIES=20000", 10000}};
    for (const auto& row : rows) {
        set(row.param);

        EXPECT_EQ(info.copies, row.copies) << row.param;
        EXPECT_EQ(known(), 4);
    }
}

TEST_F(PjlSetCommand, TakesNoLessThanOneCopy)
{
    set("COPIES=0");

    EXPECT_EQ(info.copies, 1);
    EXPECT_EQ(known(), 4);
}

TEST_F(PjlSetCommand, IgnoresCopiesThatAreNoNumber)
{
    for (const char* param : {"COPIES=x", "COPIES=", "COPIES", "QTY=\"2\"", "QTY=99999999999", "COPIES==2"})
        set(param);

    EXPECT_EQ(known(), 0);
    EXPECT_EQ(info.copies, 1);
}

TEST_F(PjlSetCommand, KeepsDuplexForTheEndOfTheBlock)
{
    const struct {
        const char* param;
        bool on;
    } rows[] = {{"DUPLEX=ON", true},
                {"DUPLEX=OFF", false},
                {"duplex=on", true},
                {"DUPLEX=YES", false},
                {"DUPLEX ON", true}};
    for (const auto& row : rows) {
        set(row.param);

        EXPECT_EQ(parser.duplexOn, std::optional(row.on)) << row.param;
        EXPECT_EQ(known(), 0);
    }
}

TEST_F(PjlSetCommand, TakesTheBindingExactly)
{
    const struct {
        const char* param;
        Duplex binding;
    } rows[] = {{"BINDING=Longedge", Duplex::OneSided},  {"BINDING=LONGEDGE", Duplex::LongEdge},
                {"BINDING=NONE", Duplex::LongEdge},      {"binding=SHORTEDGE", Duplex::ShortEdge},
                {"BINDING=longedge", Duplex::ShortEdge}, {"BINDING=", Duplex::ShortEdge}};
    for (const auto& row : rows) {
        set(row.param);

        EXPECT_EQ(parser.binding, row.binding) << row.param;
        EXPECT_EQ(known(), 0);
    }
}

TEST_F(PjlSetCommand, LooksThePaperUp)
{
    const struct {
        const char* param;
        JobParser::Paper paper;
    } rows[] = {{"PAPER=A4", JobParser::PaperA4},
                {"paper=letter", JobParser::PaperLetter},
                {"PAPER=2970x4200", JobParser::PaperA3},
                {"PAPER=nonsense", JobParser::PaperOther},
                {"PAPER=", JobParser::PaperOther}};
    for (const auto& row : rows) {
        set(row.param);

        EXPECT_EQ(info.paper, row.paper) << row.param;
        EXPECT_EQ(known(), 8);
    }
}

TEST_F(PjlSetCommand, TakesPagesPerSheet)
{
    set("LPARM:PDF KMULTIPAGE=EIGHT");
    EXPECT_EQ(known(), 0);

    set("LPARM:PDF KMULTIPAGE=TWO");
    EXPECT_EQ(info.pagesPerSheet, 2);
    EXPECT_EQ(known(), 4096);

    set("lparm:pdf kmultipage = four");
    EXPECT_EQ(info.pagesPerSheet, 4);

    set("LPARM:PDF KMULTIPAGE=ONE");
    EXPECT_EQ(info.pagesPerSheet, 4);
}

TEST_F(PjlSetCommand, TakesTheFeedEdge)
{
    const struct {
        const char* param;
        bool shortEdge;
    } rows[] = {{"KFEEDEDGE=OTHER", false},    {"KFEEDEDGE=SHORTEDGE", true}, {"KFEEDEDGE=OTHER", true},
                {"kfeededge=longedge", false}, {"KFEEDEDGE=shortedge", true}, {"KFEEDEDGE=LONGEDGE", false}};
    for (const auto& row : rows) {
        info.originalBrand = OriginalBrand::None;
        set(row.param);

        EXPECT_EQ(info.kfeedShortEdge, row.shortEdge) << row.param;
        EXPECT_EQ(info.originalBrand, OriginalBrand::KxDriver);
        EXPECT_EQ(known(), 8192);
    }
}

TEST(PjlSetFinishing, TakesTheWordsOfEachVariable)
{
    constexpr auto none = OriginalBrand::None;
    constexpr auto kx = OriginalBrand::KxDriver;
    constexpr auto noStaple = Staple::None;
    constexpr auto noPunch = Punch::None;
    const FinishingRow rows[] = {
        {"FINISH=STAPLE", 256, Staple::DeviceDefault, noPunch, none},
        {"finish=staple", 256, Staple::DeviceDefault, noPunch, none},
        {"FINISH=KPUNCH", 512 | 8192, noStaple, Punch::UnknownKind, kx},
        {"FINISH=KPNCHANDSTPL", 256 | 512 | 8192, Staple::UnknownPosition, Punch::UnknownKind, kx},
        {"FINISH=NONE", 256 | 512, noStaple, noPunch, none},
        {"FINISH=FOLD", 0, noStaple, noPunch, none},
        {"FINISH=", 0, noStaple, noPunch, none},
        {"STAPLE=OFF", 256, noStaple, noPunch, none},
        {"STAPLE=LEFTTOP", 256, Staple::LeftTop, noPunch, none},
        {"STAPLE=LEFTTOPSLANTPORT", 256, Staple::LeftTop, noPunch, none},
        {"STAPLE=RIGHTTOP", 256, Staple::RightTop, noPunch, none},
        {"STAPLE=BOOKLET", 256, Staple::Two, noPunch, none},
        {"STAPLE=righttop", 256, Staple::RightTop, noPunch, none},
        {"STAPLE=ON", 256, Staple::UnknownPosition, noPunch, none},
        {"STAPLE=", 256, Staple::UnknownPosition, noPunch, none},
        {"PUNCHHOLE=OFF", 512, noStaple, Punch::UnknownKind, none},
        {"PUNCHHOLE ", 512, noStaple, Punch::UnknownKind, none},
        {"PUNCHHOLE", 0, noStaple, noPunch, none},
        {"PUNCH=OFF", 512, noStaple, noPunch, none},
        {"punch=off", 512, noStaple, noPunch, none},
        {"PUNCH=ON", 512, noStaple, Punch::UnknownKind, none},
        {"STAPLEOPTION=DEFAULT", 256, Staple::DeviceDefault, noPunch, none},
        {"STAPLEOPTION=ONE", 256, Staple::LeftTop, noPunch, none},
        {"STAPLEOPTION=ONEOPPOSED", 256, Staple::RightTop, noPunch, none},
        {"STAPLEOPTION=TWO", 256, Staple::Two, noPunch, none},
        {"StapleOption=two", 256, Staple::Two, noPunch, none},
        {"STAPLEOPTION=NONE", 256, Staple::UnknownPosition, noPunch, none},
        {"KPUNCHOPTION=MAIN", 512 | 8192, noStaple, Punch::DriverDefault, kx},
        {"KPUNCHOPTION=main", 512 | 8192, noStaple, Punch::DriverDefault, kx},
        {"KPUNCHOPTION=TWO", 512 | 8192, noStaple, Punch::UnknownKind, kx},
        {"OKIPUNCH=OFF", 8192, noStaple, noPunch, OriginalBrand::Oki},
        {"OKIPUNCH 3", 8192, noStaple, noPunch, OriginalBrand::Oki},
    };
    for (const FinishingRow& row : rows) {
        OpenJob job("");
        JobParser::Pjl::Parser parser(job.parent);
        parser.currentCmd.param = row.param;

        parser.parseSetCmd();

        EXPECT_EQ(parser.jobInfo.flags(JobInfo::AllFlags), row.known) << row.param;
        EXPECT_EQ(parser.jobInfo.stapling, row.stapling) << row.param;
        EXPECT_EQ(parser.jobInfo.punching, row.punching) << row.param;
        EXPECT_EQ(parser.jobInfo.originalBrand, row.brand) << row.param;
    }
}

TEST(PjlSetFinishing, ReplacesAKnownPlaceUnlessTheWordIsVague)
{
    const struct {
        const char* param;
        Staple stapling;
        Punch punching;
    } rows[] = {
        {"FINISH=STAPLE", Staple::RightTop, Punch::FourHoles},
        {"FINISH=KPUNCH", Staple::RightTop, Punch::FourHoles},
        {"FINISH=KPNCHANDSTPL", Staple::RightTop, Punch::FourHoles},
        {"FINISH=NONE", Staple::None, Punch::None},
        {"STAPLE=OFF", Staple::None, Punch::FourHoles},
        {"STAPLE=ON", Staple::UnknownPosition, Punch::FourHoles},
        {"STAPLEOPTION=ONE", Staple::LeftTop, Punch::FourHoles},
        {"PUNCHHOLE=2", Staple::RightTop, Punch::UnknownKind},
        {"PUNCH=OFF", Staple::RightTop, Punch::None},
        {"KPUNCHOPTION=MAIN", Staple::RightTop, Punch::DriverDefault},
        {"OKIPUNCH=2", Staple::RightTop, Punch::FourHoles},
    };
    for (const auto& row : rows) {
        OpenJob job("");
        JobParser::Pjl::Parser parser(job.parent);
        parser.jobInfo.setStapling(Staple::RightTop, true);
        parser.jobInfo.setPunching(Punch::FourHoles, true);
        parser.currentCmd.param = row.param;

        parser.parseSetCmd();

        EXPECT_EQ(parser.jobInfo.stapling, row.stapling) << row.param;
        EXPECT_EQ(parser.jobInfo.punching, row.punching) << row.param;
    }
}

TEST_F(PjlSetCommand, ReplacesAVagueStapleByAKnownOne)
{
    set("FINISH=STAPLE");
    set("STAPLE=RIGHTTOP");
    EXPECT_EQ(info.stapling, Staple::RightTop);

    set("FINISH=STAPLE");
    EXPECT_EQ(info.stapling, Staple::RightTop);
}

TEST_F(PjlSetCommand, KnowsOnlyNoneOfSharpsStapleOptions)
{
    set("STAPLEOPTION=ONE");
    EXPECT_EQ(info.stapling, Staple::LeftTop);

    set("DRIVERNAME=\"SHARP MX\"");
    const struct {
        const char* param;
        Staple stapling;
    } rows[] = {{"STAPLEOPTION=ONE", Staple::UnknownPosition},
                {"STAPLEOPTION=NONE", Staple::None},
                {"STAPLEOPTION=DEFAULT", Staple::UnknownPosition},
                {"STAPLEOPTION=none", Staple::None},
                {"STAPLEOPTION=TWO", Staple::UnknownPosition}};
    for (const auto& row : rows) {
        set(row.param);

        EXPECT_EQ(info.stapling, row.stapling) << row.param;
    }
}

TEST_F(PjlSetCommand, ClearsFinishingAtAProcessingType)
{
    const struct {
        const char* param;
        ProcessingType type;
        Staple stapling;
        Punch punching;
    } rows[] = {
        {"PROCESSINGTYPE=\"STAPLING\"", ProcessingType::Stapling, Staple::None, Punch::FourHoles},
        {"processingtype=\"stapling\"", ProcessingType::Stapling, Staple::None, Punch::FourHoles},
        {"PROCESSINGTYPE=\"PUNCH\"", ProcessingType::Punch, Staple::Two, Punch::None},
        {"PROCESSINGTYPE=\"Punch\"", ProcessingType::Punch, Staple::Two, Punch::None},
        {"PROCESSINGTYPE=\"BOOKLET_MAKER\"", ProcessingType::BookletMaker, Staple::Two, Punch::FourHoles},
        {"PROCESSINGTYPE=STAPLING", ProcessingType::None, Staple::Two, Punch::FourHoles},
        {"PROCESSINGTYPE=\"FOLD\"", ProcessingType::None, Staple::Two, Punch::FourHoles},
        {"PROCESSINGTYPE=", ProcessingType::None, Staple::Two, Punch::FourHoles},
    };
    for (const auto& row : rows) {
        info.setStapling(Staple::Two, true);
        info.setPunching(Punch::FourHoles, true);
        parser.processingType = ProcessingType::BookletMaker;

        set(row.param);

        EXPECT_EQ(parser.processingType, row.type) << row.param;
        EXPECT_EQ(info.stapling, row.stapling) << row.param;
        EXPECT_EQ(info.punching, row.punching) << row.param;
        EXPECT_EQ(known(), 256 | 512);
    }
}

TEST_F(PjlSetCommand, TakesAStaplingOption)
{
    set("PROCESSINGTYPE=\"STAPLING\"");
    set("PROCESSINGOPTION=\"LEFT_1PT\"");

    EXPECT_EQ(info.stapling, Staple::LeftTop);
    EXPECT_EQ(parser.stapleRotation, std::optional(0));
    EXPECT_EQ(info.originalBrand, OriginalBrand::Hp);
    EXPECT_EQ(parser.processingType, ProcessingType::None);
    EXPECT_EQ(known(), 256 | 8192);
}

TEST_F(PjlSetCommand, TakesAPunchingOption)
{
    const struct {
        const char* param;
        Punch punching;
        std::optional<std::int32_t> rotation;
    } rows[] = {{"PROCESSINGOPTION=\"LEFT\"", Punch::UnknownKind, {}},
                {"PROCESSINGOPTION=\"RIGHT_4PT\"", Punch::FourHoles, 2},
                {"PROCESSINGOPTION=\"TOP_2HOLE\"", Punch::TwoHoles, 1}};
    for (const auto& row : rows) {
        set("PROCESSINGTYPE=\"PUNCH\"");
        set(row.param);

        EXPECT_EQ(info.punching, row.punching) << row.param;
        EXPECT_EQ(parser.punchRotation, row.rotation) << row.param;
        EXPECT_EQ(info.originalBrand, OriginalBrand::Hp);
        EXPECT_EQ(parser.processingType, ProcessingType::None);
    }
}

TEST_F(PjlSetCommand, StaplesABooklet)
{
    set("STAPLE=BOOKLET");
    set("PROCESSINGTYPE=\"BOOKLET_MAKER\"");
    set("PROCESSINGOPTION=any");

    EXPECT_EQ(info.stapling, Staple::UnknownPosition);
    EXPECT_EQ(parser.processingType, ProcessingType::None);
    EXPECT_EQ(known(), 256);
}

TEST_F(PjlSetCommand, IgnoresAnOptionWithoutAType)
{
    set("PROCESSINGOPTION=\"LEFT_1PT\"");
    set("PROCESSINGOPTION=unquoted");

    EXPECT_EQ(known(), 0);
}

TEST_F(PjlSetCommand, RejectsAnOptionWithoutItsQuotationMarks)
{
    for (const ProcessingType type : {ProcessingType::Stapling, ProcessingType::Punch}) {
        for (const std::string option : {"LEFT_1PT", "\"LEFT_1PT", "LEFT_1PT\"", "\"", ""}) {
            parser.processingType = type;
            try {
                set("PROCESSINGOPTION=" + option);
                ADD_FAILURE() << option;
            } catch (const JobParser::JobParserException& e) {
                EXPECT_EQ(e.what(), "Not a quoted string: " + option);
            }
            EXPECT_EQ(parser.processingType, type);
        }
    }
    EXPECT_EQ(known(), 0);
}

TEST_F(PjlSetCommand, TakesForceMono)
{
    constexpr auto none = OriginalBrand::None;
    const struct {
        const char* param;
        bool mono;
        OriginalBrand brand;
    } rows[] = {
        {"KCOLORMODE=MONO", true, OriginalBrand::KxDriver},
        {"KCOLORMODE=mono", false, OriginalBrand::KxDriver},
        {"DATAMODE=GRAYSCALE", true, OriginalBrand::Ricoh},
        {"DATAMODE=Grayscale", false, OriginalBrand::Ricoh},
        {"RENDERMODE=GRAYSCALE", true, OriginalBrand::Ricoh},
        {"RENDERMODE=COLOR", false, OriginalBrand::Ricoh},
        {"PLANESINUSE=1", true, none},
        {"PLANESINUSE=3", false, none},
        {"PLANESINUSE=03", true, none},
        {"planesinuse=\"3\"", true, none},
        {"renderMode=GRAYSCALE", true, OriginalBrand::Ricoh},
        {"KCOLORMODE=", false, OriginalBrand::KxDriver},
    };
    for (const auto& row : rows) {
        info.reset(JobInfo::AllFlags);
        set(row.param);

        EXPECT_EQ(info.forceMono, row.mono) << row.param;
        EXPECT_EQ(info.originalBrand, row.brand) << row.param;
        EXPECT_EQ(known(), row.brand == none ? 128 : 128 | 8192) << row.param;
    }
}

TEST_F(PjlSetCommand, KeepsTheForceMonoReadLastButCountedPagesStayFolded)
{
    info.setPageCount(1, 2, 3);
    set("PLANESINUSE=1");
    set("PLANESINUSE=3");

    EXPECT_FALSE(info.forceMono);
    EXPECT_EQ(info.monoCount, 6);
    EXPECT_EQ(info.colorCount, 0);
}

TEST_F(PjlSetCommand, TakesEcoMode)
{
    const struct {
        const char* param;
        bool eco;
    } rows[] = {{"ECOPRINT=ON", true},   {"ECOPRINT=OFF", false},  {"ECOPRINT=LEVEL3", true},
                {"ecoprint=off", false}, {"ECOPRINT=", true},      {"ECONOMODE=OFF", false},
                {"ECONOMODE=on", true},  {"ECONOMODE=YES", false}, {"EconoMode=ON", true},
                {"ECONOMODE=", false}};
    for (const auto& row : rows) {
        info.reset(JobInfo::AllFlags);
        set(row.param);

        EXPECT_EQ(info.ecoMode, row.eco) << row.param;
        EXPECT_EQ(known(), 1024) << row.param;
    }
}

TEST_F(PjlSetCommand, TakesTheBrandOfNamesByTheirBeginning)
{
    const struct {
        const char* param;
        OriginalBrand brand;
    } rows[] = {{"HOSTPRINTERNAME=\"RICOH MP\"", OriginalBrand::Ricoh},
                {"hostprintername=\"ricoh", OriginalBrand::Ricoh},
                {"HOSTPRINTERNAME=RICOH MP", OriginalBrand::None},
                {"HOSTPRINTERNAME=\"SHARP\"", OriginalBrand::None},
                {"DRIVERNAME=\"SHARP MX\"", OriginalBrand::Sharp},
                {"DriverName=\"Sharp", OriginalBrand::Sharp},
                {"DRIVERNAME=SHARP", OriginalBrand::None},
                {"DRIVERNAME=\"RICOH\"", OriginalBrand::None}};
    for (const auto& row : rows) {
        info.reset(JobInfo::AllFlags);
        set(row.param);

        EXPECT_EQ(info.originalBrand, row.brand) << row.param;
        EXPECT_EQ(known(), row.brand == OriginalBrand::None ? 0 : 8192) << row.param;
    }
}

TEST_F(PjlSetCommand, IgnoresUnknownVariables)
{
    for (const char* param : {"", " ", "=", "COPIESX=2", "XCOPIES=2", "LPARM:PCL KMULTIPAGE=TWO",
                              "RESOLUTION=600", "COPIES 2=3", "\xFF=\xFE"})
        set(param);

    EXPECT_EQ(known(), 0);
    EXPECT_EQ(parser.duplexOn, std::optional(false));
    EXPECT_EQ(parser.binding, Duplex::OneSided);
}

TEST_F(PjlTicket, TakesTheGreatestCopies)
{
    ticket("<copies syntax=\"integer\">4</copies>");
    EXPECT_EQ(info.copies, 4);
    EXPECT_EQ(known(), 4);

    ticket(" \t<copies>\t6 pieces</copies> and more");
    EXPECT_EQ(info.copies, 6);

    ticket("<copies>2</copies>");
    EXPECT_EQ(info.copies, 6);

    ticket("<copies>20000</copies>");
    EXPECT_EQ(info.copies, 10000);
}

TEST_F(PjlTicket, LooksForNoSidesBehindCopies)
{
    ticket("<copies>2</copies><sides>two-sided-long-edge</sides>");

    EXPECT_EQ(known(), 4);
}

TEST_F(PjlTicket, TakesTheSides)
{
    const struct {
        const char* param;
        Duplex duplex;
    } rows[] = {{"<sides syntax=\"keyword\">two-sided-short-edge</sides>", Duplex::ShortEdge},
                {"<sides>two-sided-long-edge</sides>", Duplex::LongEdge},
                {"<sides>Two-sided-short-edge</sides>", Duplex::LongEdge},
                {"<sides> two-sided-short-edge</sides>", Duplex::LongEdge},
                {"<sides></sides>", Duplex::LongEdge},
                {"\t<sidesx>one-sided</sides>", Duplex::OneSided}};
    for (const auto& row : rows) {
        ticket(row.param);

        EXPECT_EQ(info.duplex, row.duplex) << row.param;
        EXPECT_EQ(known(), 16) << row.param;
    }
}

TEST_F(PjlTicket, IgnoresOtherElements)
{
    for (const char* param :
         {"", "copies", "<Copies>4</copies>", "<copies>4</Copies>", "<copies>4", "x<copies>4</copies>",
          "<a/>\n<copies>4</copies>", "<copies>4<b/></copies>", "<sides>one-sided</copies>",
          "<Sides>one-sided</Sides>", "<sides>duplex</sides>"})
        ticket(param);

    EXPECT_EQ(known(), 0);
}

TEST_F(PjlTicket, PassesOnThatCopiesAreNoNumber)
{
    EXPECT_THROW(ticket("<copies>many</copies>"), std::invalid_argument);
    EXPECT_THROW(ticket("<copies></copies>"), std::invalid_argument);
    EXPECT_THROW(ticket("<copies>99999999999</copies>"), std::out_of_range);

    EXPECT_EQ(known(), 0);
}
