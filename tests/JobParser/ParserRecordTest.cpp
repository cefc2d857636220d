// How the records of PJL, of the language and of Prescribe become the record of the job.

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "JobParser/JobInfo.h"
#include "JobParser/Parser.h"
#include "tests/JobParser/RecordJson.h"
#include "tests/support/OpenJob.h"
#include "tests/support/WholeJobs.h"

namespace JobParser
{
namespace
{

using WholeJobs::parse;

constexpr const char* noPages = R"("monoCount":0,"grayCount":0,"colorCount":0)";

TEST(ParserRecord, MergesWhatPjlSays)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "8";
    expected.paper = "5";
    expected.duplex = "2";
    expected.copies = "3";
    expected.ecoMode = "true";

    EXPECT_EQ(recordOf(JobBytes()
                           .uel()
                           .pjl("SET COPIES=3")
                           .pjl("SET DUPLEX=ON")
                           .pjl("SET BINDING=SHORTEDGE")
                           .pjl("SET PAPER=A4")
                           .pjl("SET ECONOMODE=ON")
                           .pjl("ENTER LANGUAGE=XPS")
                           .raw("body")
                           .uel()
                           .str()),
              expected.json());
}

TEST(ParserRecord, LetsPjlOverrulePostScript)
{
    OpenJob job(
        JobBytes()
            .uel()
            .pjl("SET DUPLEX=ON")
            .pjl("SET BINDING=LONGEDGE")
            .pjl("ENTER LANGUAGE=POSTSCRIPT")
            .raw("%!PS\n%%BeginFeature: *Duplex DuplexTumble\n%%EndFeature\n")
            .raw("%%BeginFeature: *StapleLocation x\n/MediaProcessingOption (LEFT_2PT)\n%%EndFeature\n")
            .uel());

    const JobInfo info = parse(job)->job->jobInfo;

    EXPECT_EQ(info.duplex, Duplex::LongEdge);
    EXPECT_EQ(info.stapling, Staple::Two);
    EXPECT_EQ(info.originalBrand, Zem::Printer::OriginalBrand::Hp);
}

TEST(ParserRecord, LetsPrescribeOverrulePjlAndPjlOverrulePcl)
{
    OpenJob job(JobBytes()
                    .uel()
                    .pjl("SET COPIES=3")
                    .pjl("SET PAPER=A4")
                    .pjl("ENTER LANGUAGE=PCL")
                    .esc("&l27A")
                    .esc("&l1S")
                    .esc("&l5X")
                    .raw("!R!SPSZ 6;DUPX 0;COPY 4;EXIT;")
                    .uel());
    OpenJob withoutPrescribe(
        JobBytes().uel().pjl("SET PAPER=A4").pjl("ENTER LANGUAGE=PCL").esc("&l27A").uel());

    const JobInfo info = parse(job)->job->jobInfo;
    const JobInfo infoWithoutPrescribe = parse(withoutPrescribe)->job->jobInfo;

    EXPECT_EQ(info.paper, PaperLetter);
    EXPECT_EQ(info.copies, 5) << "the greatest stands";
    EXPECT_EQ(info.duplex, Duplex::LongEdge) << "none displaces nothing";
    EXPECT_EQ(info.pdl, Pdl::Pcl5);
    EXPECT_EQ(infoWithoutPrescribe.paper, PaperA4);
}

TEST(ParserRecord, FoldsThePagesIfPjlForcesMono)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "7";
    expected.counts = R"("monoCount":0,"grayCount":0,"colorCount":1)";
    expected.forceMono = "false";
    expected.originalBrand = "3";
    EXPECT_EQ(recordOf(JobBytes().raw(jpegStart).uel().pjl("SET DATAMODE=COLOR").uel().str()),
              expected.json());

    expected.counts = R"("monoCount":1,"grayCount":0,"colorCount":0)";
    expected.forceMono = "true";
    EXPECT_EQ(recordOf(JobBytes().raw(jpegStart).uel().pjl("SET DATAMODE=GRAYSCALE").uel().str()),
              expected.json());
}

TEST(ParserRecord, ClearsWhatWasCollectedIfNobodyWantsIt)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "7";
    expected.copies = "3";
    expected.forceMono = "false";
    expected.originalBrand = "3";
    const std::string job = JobBytes()
                                .raw(jpegStart)
                                .uel()
                                .pjl("SET COPIES=3")
                                .pjl("SET DUPLEX=ON")
                                .pjl("SET BINDING=LONGEDGE")
                                .pjl("SET PAPER=A4")
                                .pjl("SET ECONOMODE=ON")
                                .pjl("SET STAPLE=LEFTTOP")
                                .pjl("SET PUNCH=ON")
                                .pjl("SET DATAMODE=COLOR")
                                .uel()
                                .str();

    EXPECT_EQ(recordOf(job, {Pdl::Detect, false, true}), expected.json());

    expected.paper = "5";
    expected.duplex = "1";
    expected.ecoMode = "true";
    expected.stapling = "1";
    expected.punching = "100";
    expected.counts = oneColourPage;
    EXPECT_EQ(recordOf(job), expected.json());
}

TEST(ParserRecord, KeepsTheOrientationEvenIfNobodyWantsWhatIsCollected)
{
    OpenJob job(JobBytes().esc("E").esc("&l1O").esc("&l26A").esc("&l1S").raw("a"));

    const JobInfo info = parse(job, {Pdl::Detect, false, true})->job->jobInfo;

    EXPECT_EQ(info.orientation, Orientation::Landscape);
    EXPECT_EQ(info.flags(JobInfo::AllFlags),
              JobInfo::FlagOrientation | JobInfo::FlagPdl | JobInfo::FlagCopies);
}

TEST(ParserRecord, TurnsPagesIntoSidesOfPaper)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "7";
    expected.pagesPerSheet = "2";
    expected.counts = oneColourPage;

    EXPECT_EQ(recordOf(JobBytes().raw(jpegStart).uel().pjl("SET LPARM:PDF KMULTIPAGE=TWO").uel().str()),
              expected.json());
}

struct Sides {
    const char* pagesPerSheet;
    const char* pages;
    int mono;
    int color;
};

TEST(ParserRecord, KeepsColourPagesAsColourSidesAsLongAsThereAreSides)
{
    constexpr std::array<Sides, 8> rows{{
        {"TWO", "Color=2,Mono=4", 1, 2},
        {"TWO", "Color=5,Mono=1", 0, 3},
        {"TWO", "Color=1,Mono=0", 0, 1},
        {"TWO", "Color=0,Mono=3", 2, 0},
        {"TWO", "Color=0,Mono=0", 0, 0},
        {"FOUR", "Color=1,Mono=7", 1, 1},
        {"FOUR", "Color=4,Mono=1", 0, 2},
        {"NONE", "Color=2,Mono=4", 4, 2},
    }};

    for (const Sides& row : rows) {
        OpenJob job(JobBytes()
                        .uel()
                        .pjl(std::string("SET LPARM:PDF KMULTIPAGE=") + row.pagesPerSheet)
                        .raw(std::string("!R!CMNT ") + row.pages + ";EXIT;"));

        const JobInfo info = parse(job)->job->jobInfo;

        EXPECT_EQ(info.monoCount, row.mono) << row.pagesPerSheet << row.pages;
        EXPECT_EQ(info.grayCount, 0) << row.pagesPerSheet << row.pages;
        EXPECT_EQ(info.colorCount, row.color) << row.pagesPerSheet << row.pages;
    }
}

TEST(ParserRecord, CountsZeroSidesIfPagesPerSheetAreKnownAlone)
{
    Record expected;
    expected.pjl = true;
    expected.counts = noPages;
    expected.pagesPerSheet = "4";
    const std::string job = JobBytes().uel().pjl("SET LPARM:PDF KMULTIPAGE=FOUR").uel().str();

    EXPECT_EQ(recordOf(job), expected.json());
    EXPECT_EQ(recordOf(job, {Pdl::Detect, false, true}), expected.json());
}

TEST(ParserRecord, CorrectsTheFinishingOfHpJobs)
{
    Record expected;
    expected.pjl = true;
    expected.stapling = "1";
    expected.punching = "100";
    expected.originalBrand = "2";

    EXPECT_EQ(recordOf(JobBytes()
                           .uel()
                           .pjl("SET PROCESSINGTYPE=\"STAPLING\"")
                           .pjl("SET PROCESSINGOPTION=\"LEFT_1PT\"")
                           .pjl("SET PROCESSINGTYPE=\"PUNCH\"")
                           .pjl("SET PROCESSINGOPTION=\"RIGHT_2PT\"")
                           .uel()
                           .str()),
              expected.json());
}

TEST(ParserRecord, CorrectsTheFinishingOfKxJobs)
{
    Record expected;
    expected.pjl = true;
    expected.originalBrand = "1";
    expected.stapling = "2";
    expected.punching = "100";
    expected.last = R"(,"kfeedShortEdge":true)";
    EXPECT_EQ(recordOf(JobBytes()
                           .uel()
                           .pjl("SET KFEEDEDGE=SHORTEDGE")
                           .pjl("SET STAPLE=LEFTTOP")
                           .pjl("SET KPUNCHOPTION=MAIN")
                           .uel()
                           .str()),
              expected.json());

    expected.stapling = "1";
    expected.punching = "101";
    expected.last = "";
    EXPECT_EQ(recordOf(JobBytes().uel().pjl("SET STAPLE=LEFTTOP").pjl("SET KPUNCHOPTION=MAIN").uel().str()),
              expected.json());
}

struct TurnedFinishing {
    const char* orientation;
    int hpStapling;
    int hpPunching;
    int kxStapling;
    int kxPunching;
};

TEST(ParserRecord, TurnsTheFinishingOfHpAndKxJobsWithThePage)
{
    constexpr std::array<TurnedFinishing, 4> rows{{
        {"&l0O", 1, 100, 1, 101},
        {"&l1O", 2, 1, 2, 101},
        {"&l2O", 100, 100, 100, 100},
        {"&l3O", 100, 100, 100, 100},
    }};

    for (const TurnedFinishing& row : rows) {
        const std::string page =
            JobBytes().pjl("ENTER LANGUAGE=PCL").esc(row.orientation).raw("a").uel().str();
        OpenJob hp(JobBytes()
                       .uel()
                       .pjl("SET PROCESSINGTYPE=\"STAPLING\"")
                       .pjl("SET PROCESSINGOPTION=\"ONE_STAPLE\"")
                       .pjl("SET PROCESSINGTYPE=\"PUNCH\"")
                       .pjl("SET PROCESSINGOPTION=\"TOP_2HOLE\"")
                       .raw(page));
        OpenJob kx(JobBytes().uel().pjl("SET STAPLE=LEFTTOP").pjl("SET KPUNCHOPTION=MAIN").raw(page));

        const JobInfo hpInfo = parse(hp)->job->jobInfo;
        const JobInfo kxInfo = parse(kx)->job->jobInfo;

        EXPECT_EQ(static_cast<int>(hpInfo.stapling), row.hpStapling) << row.orientation;
        EXPECT_EQ(static_cast<int>(hpInfo.punching), row.hpPunching) << row.orientation;
        EXPECT_EQ(static_cast<int>(kxInfo.stapling), row.kxStapling) << row.orientation;
        EXPECT_EQ(static_cast<int>(kxInfo.punching), row.kxPunching) << row.orientation;
    }
}

TEST(ParserRecord, KnowsThatThereIsNoFinishingForHpAndKxJobsThatTellNone)
{
    Record expected;
    expected.pjl = true;
    expected.stapling = "0";
    expected.punching = "0";
    expected.originalBrand = "2";

    const std::string job = JobBytes().uel().pjl("COMMENT \"HP Universal Printing\"").uel().str();

    EXPECT_EQ(recordOf(job), expected.json());
    EXPECT_EQ(recordOf(job, {Pdl::Detect, false, true}), expected.json());
}

TEST(ParserRecord, LeavesTheFinishingOfOtherBrandsAlone)
{
    Record expected;
    expected.pjl = true;
    expected.stapling = "101";
    expected.originalBrand = "10";

    EXPECT_EQ(recordOf(JobBytes().uel().pjl("COMMENT Lexmark").pjl("SET STAPLEOPTION=DEFAULT").uel().str()),
              expected.json());
}

} // namespace
} // namespace JobParser
