#include "JobParser/JobInfo.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>

#include "tests/JobParser/model/JobInfoRecords.h"

#include "Torv/Json/Json.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using Zem::Printer::OriginalBrand;

constexpr int highest = std::numeric_limits<int>::max();
constexpr int lowest = std::numeric_limits<int>::min();

JobInfo parsed(const std::string& json)
{
    return JobInfo(Torv::Json::parse(json));
}

TEST(JobInfo, KnowsNothingAtFirst)
{
    const JobInfo info;

    EXPECT_EQ(info.flags(65535), 0);
    EXPECT_FALSE(info.kfeedShortEdge);
    EXPECT_EQ(info.pdl, Pdl::Unknown);
    EXPECT_EQ(info.copies, 1);
    EXPECT_EQ(info.duplex, Duplex::OneSided);
    EXPECT_EQ(counts(info), (Counts{0, 0, 0}));
    EXPECT_EQ(info.paper, 7);
    EXPECT_FALSE(info.pjl);
    EXPECT_FALSE(info.forceMono);
    EXPECT_FALSE(info.ecoMode);
    EXPECT_EQ(info.stapling, Staple::None);
    EXPECT_EQ(info.punching, Punch::None);
    EXPECT_EQ(info.orientation, Orientation::Portrait);
    EXPECT_EQ(info.pagesPerSheet, 1);
    EXPECT_EQ(info.originalBrand, OriginalBrand::None);
    EXPECT_TRUE(info.fonts.empty());
}

TEST(JobInfo, KnowsTheGroupThatWasSetAndNoOther)
{
    for (const Group& group : groups) {
        JobInfo info;

        group.set(info);

        EXPECT_EQ(info.flags(65535), group.bit) << group.name;
        EXPECT_NE(info.toJson().find(group.json), std::string::npos) << group.name << info.toJson();
    }
}

TEST(JobInfo, ForgetsTheGroupsOfTheMaskAlone)
{
    for (const Group& group : groups) {
        JobInfo info = fullRecord();

        info.reset(group.bit);

        EXPECT_EQ(info.flags(65535), 16350 & ~group.bit) << group.name;
        EXPECT_TRUE(info.pjl);
        EXPECT_TRUE(info.kfeedShortEdge);
        EXPECT_EQ(info.fonts.size(), 2U);
    }
}

TEST(JobInfo, GivesAForgottenGroupItsDefault)
{
    JobInfo info = fullRecord();

    info.reset(65534);

    EXPECT_EQ(info.flags(65535), 0);
    EXPECT_EQ(counts(info), (Counts{0, 0, 0}));
    EXPECT_EQ(info.copies, 1);
    EXPECT_EQ(info.paper, PaperOther);
    EXPECT_EQ(info.duplex, Duplex::OneSided);
    EXPECT_EQ(info.pdl, Pdl::Unknown);
    EXPECT_FALSE(info.forceMono);
    EXPECT_EQ(info.stapling, Staple::None);
    EXPECT_EQ(info.punching, Punch::None);
    EXPECT_FALSE(info.ecoMode);
    EXPECT_EQ(info.orientation, Orientation::Portrait);
    EXPECT_EQ(info.pagesPerSheet, 1);
    EXPECT_EQ(info.originalBrand, OriginalBrand::None);
    EXPECT_TRUE(info.pjl);
    EXPECT_TRUE(info.kfeedShortEdge);
    EXPECT_EQ(info.fonts.size(), 2U);
}

TEST(JobInfo, ForgetsFontsWithTheMaskOfAllGroupsAlone)
{
    JobInfo info = fullRecord();

    info.reset(255);
    EXPECT_EQ(info.fonts.size(), 2U);
    info.reset(-1);
    EXPECT_EQ(info.fonts.size(), 2U);
    EXPECT_EQ(info.flags(65535), 0);
    info.reset(65535);
    EXPECT_TRUE(info.fonts.empty());
    EXPECT_FALSE(info.pjl);
    EXPECT_FALSE(info.kfeedShortEdge);
}

TEST(JobInfo, ShowsAForgottenPaperAsNull)
{
    JobInfo info;
    info.setPaper(PaperA4);

    info.reset(8);

    EXPECT_EQ(info.paper, 7);
    EXPECT_EQ(info.toJson(), defaultJson);
}

TEST(JobInfo, GivesTheKnownGroupsOfAMask)
{
    JobInfo info;
    info.setCopies(2);
    info.setPaper(PaperA4);

    EXPECT_EQ(info.flags(65535), 12);
    EXPECT_EQ(info.flags(4), 4);
    EXPECT_EQ(info.flags(6), 4);
    EXPECT_EQ(info.flags(2), 0);
}

TEST(JobInfo, ClampsCopiesToTenThousand)
{
    constexpr std::array<std::array<int, 2>, 9> rows{{{0, 1},
                                                      {20000, 10000},
                                                      {-5, 1},
                                                      {1, 1},
                                                      {2, 2},
                                                      {10000, 10000},
                                                      {10001, 10000},
                                                      {highest, 10000},
                                                      {lowest, 1}}};

    for (const auto& [given, kept] : rows) {
        JobInfo byValue;
        byValue.setCopies(given);
        JobInfo byMaximum;
        byMaximum.setCopiesMax(given);

        EXPECT_EQ(byValue.copies, kept) << given;
        EXPECT_EQ(byValue.flags(65535), 4) << given;
        EXPECT_EQ(byMaximum.copies, kept) << given;
        EXPECT_EQ(byMaximum.flags(65535), 4) << given;
    }
}

TEST(JobInfo, KeepsTheGreaterNumberOfCopiesUnlessItIsOverwritten)
{
    JobInfo info;

    info.setCopiesMax(3);
    info.setCopiesMax(2);
    EXPECT_EQ(info.copies, 3);
    info.setCopiesMax(4);
    EXPECT_EQ(info.copies, 4);
    info.setCopies(2);
    EXPECT_EQ(info.copies, 2);
}

TEST(JobInfo, CountsPagesByClass)
{
    JobInfo info;

    info.incMonoCount();
    EXPECT_EQ(info.flags(65535), 2);
    info.incGrayCount();
    info.incGrayCount();
    info.incColorCount();
    info.incColorCount();
    info.incColorCount();

    EXPECT_EQ(counts(info), (Counts{1, 2, 3}));
    EXPECT_EQ(info.flags(65535), 2);
}

TEST(JobInfo, CountsAllPagesAsMonoIfMonoIsForced)
{
    JobInfo info;
    info.setForceMono(true);

    info.incMonoCount();
    info.incGrayCount();
    info.incColorCount();

    EXPECT_EQ(counts(info), (Counts{3, 0, 0}));
    EXPECT_EQ(info.flags(65535), 130);
    info.setPageCount(1, 2, 3);
    EXPECT_EQ(counts(info), (Counts{6, 0, 0}));
}

TEST(JobInfo, FoldsThePagesCountedSoFarForGood)
{
    JobInfo info;
    info.setPageCount(1, 2, 3);

    info.setForceMono(true);
    EXPECT_EQ(counts(info), (Counts{6, 0, 0}));
    info.setForceMono(false);
    EXPECT_EQ(counts(info), (Counts{6, 0, 0}));
    EXPECT_FALSE(info.forceMono);
}

TEST(JobInfo, ForcingMonoLeavesTheCountsUnknown)
{
    JobInfo info;

    info.setForceMono(true);

    EXPECT_EQ(info.flags(65535), 128);
}

TEST(JobInfo, LetsCountsWrap)
{
    JobInfo info;
    info.setForceMono(true);

    info.setPageCount(highest, highest, highest);
    EXPECT_EQ(counts(info), (Counts{2147483645, 0, 0}));
    info.setPageCount(highest, 0, 0);
    info.incColorCount();
    EXPECT_EQ(counts(info), (Counts{lowest, 0, 0}));
    info.setForceMono(false);
    info.setPageCount(highest, highest, highest);
    info.incMonoCount();
    info.incGrayCount();
    info.incColorCount();
    EXPECT_EQ(counts(info), (Counts{lowest, lowest, lowest}));
    info.setForceMono(true);
    EXPECT_EQ(counts(info), (Counts{lowest, 0, 0}));
}

struct Stapling {
    int present;
    int given;
    bool force;
    int kept;
};

constexpr std::array<Stapling, 10> staplings{{
    {0, 1, false, 1},
    {100, 1, false, 1},
    {100, 0, false, 0},
    {1, 2, false, 1},
    {101, 1, false, 101},
    {3, 100, false, 3},
    {1, 0, true, 0},
    {1, 2, true, 2},
    {101, 100, true, 100},
    {0, 0, true, 0},
}};

TEST(JobInfo, DisplacesAKnownStaplingOrPunchingOnlyByForce)
{
    for (const Stapling& row : staplings) {
        JobInfo info;
        info.stapling = static_cast<Staple>(row.present);
        info.punching = static_cast<Punch>(row.present);

        info.setStapling(static_cast<Staple>(row.given), row.force);
        info.setPunching(static_cast<Punch>(row.given), row.force);

        EXPECT_EQ(static_cast<int>(info.stapling), row.kept) << row.present << ' ' << row.given;
        EXPECT_EQ(static_cast<int>(info.punching), row.kept) << row.present << ' ' << row.given;
        const bool isStored = row.force || row.present == 0 || row.present == 100;
        EXPECT_EQ(info.flags(65535), isStored ? 768 : 0) << row.present << ' ' << row.given;
    }
}

TEST(JobInfo, TakesTheOrientationFromTheSidesOfAPage)
{
    constexpr std::array<std::array<int, 3>, 5> rows{
        {{600, 500, 1}, {500, 600, 0}, {500, 500, 0}, {-1, -2, 1}, {-2, -1, 0}}};

    for (const auto& [width, height, orientation] : rows) {
        JobInfo info;
        info.setOrientation(width, height);

        EXPECT_EQ(static_cast<int>(info.orientation), orientation) << width << 'x' << height;
        EXPECT_EQ(info.flags(65535), 2048);
    }
}

TEST(JobInfo, TakesNoOrientationFromASideOfZero)
{
    JobInfo info;

    info.setOrientation(0, 500);
    info.setOrientation(500, 0);
    info.setOrientation(0, 0);

    EXPECT_EQ(info.flags(65535), 0);
    EXPECT_EQ(info.orientation, Orientation::Portrait);
}

TEST(JobInfo, SetsPjlAndFontsWithoutABit)
{
    JobInfo info;

    info.setPjl(true);
    info.addFonts({"B"});
    info.addFonts({"A", "B"});

    EXPECT_TRUE(info.pjl);
    EXPECT_EQ(info.fonts, (std::set<std::string>{"A", "B"}));
    EXPECT_EQ(info.flags(65535), 0);
}

TEST(JobInfo, WritesAnUnknownGroupAsNull)
{
    EXPECT_EQ(JobInfo().toJson(), defaultJson);
    EXPECT_EQ(JobInfo().toJsonFull(), defaultJson);
    EXPECT_EQ(JobInfo().json().str(), defaultJson);
}

TEST(JobInfo, WritesEveryGroupInItsPlace)
{
    EXPECT_EQ(fullRecord().toJson(), std::string(fullJson) + "}");
    EXPECT_EQ(fullRecord().toJsonFull(), std::string(fullJson) + R"(,"fonts":["Arial","Courier"]})");
}

TEST(JobInfo, IsReadBackAsItWasWritten)
{
    const JobInfo shortForm = parsed(fullRecord().toJson());
    EXPECT_EQ(shortForm.toJson(), fullRecord().toJson());
    EXPECT_EQ(shortForm.flags(65535), 16350);
    EXPECT_TRUE(shortForm.fonts.empty());

    const JobInfo longForm = parsed(fullRecord().toJsonFull());
    EXPECT_EQ(longForm.toJsonFull(), fullRecord().toJsonFull());
    EXPECT_EQ(longForm.fonts, (std::set<std::string>{"Arial", "Courier"}));

    EXPECT_EQ(parsed(defaultJson).toJsonFull(), defaultJson);
    EXPECT_EQ(parsed(defaultJson).flags(65535), 0);
    for (const Group& group : groups) {
        JobInfo info;
        group.set(info);
        EXPECT_EQ(parsed(info.toJson()).toJson(), info.toJson()) << group.name;
    }
}

TEST(JobInfo, ReadsValuesWithoutTheRulesOfTheSetters)
{
    const JobInfo info =
        parsed(R"({"copies":20000,"forceMono":true,"colorCount":7,"stapling":55,"pdl":-3,"duplex":9})");

    EXPECT_EQ(info.copies, 20000);
    EXPECT_EQ(counts(info), (Counts{0, 0, 7}));
    EXPECT_EQ(static_cast<int>(info.stapling), 55);
    EXPECT_EQ(static_cast<int>(info.pdl), -3);
    EXPECT_EQ(static_cast<int>(info.duplex), 9);
    EXPECT_EQ(info.flags(65535), 4 + 128 + 2 + 256 + 64 + 16);
}

TEST(JobInfo, KnowsTheCountsByAnyOneOfThem)
{
    EXPECT_EQ(parsed(R"({"monoCount":1})").flags(65535), 2);
    EXPECT_EQ(parsed(R"({"grayCount":1})").flags(65535), 2);
    EXPECT_EQ(parsed(R"({"colorCount":1})").flags(65535), 2);
}

TEST(JobInfo, ReadsTheLastOfAKeyThatStandsTwice)
{
    const JobInfo info = parsed(R"({"ecoMode":false,"copies":2,"ecoMode":true,"copies":3})");

    EXPECT_TRUE(info.ecoMode);
    EXPECT_EQ(info.copies, 3);
}

TEST(JobInfo, ReadsNoVersionAndNoUnknownKeys)
{
    EXPECT_EQ(parsed(R"({"version":77,"unknown":{"copies":3}})").toJsonFull(), defaultJson);
    EXPECT_EQ(parsed("{}").toJsonFull(), defaultJson);
}

TEST(JobInfo, ReadsFontsOfNullAsNone)
{
    EXPECT_TRUE(parsed(R"({"fonts":null})").fonts.empty());
    EXPECT_TRUE(parsed(R"({"fonts":[]})").fonts.empty());
    EXPECT_EQ(parsed(R"({"fonts":["b","a","b"]})").fonts, (std::set<std::string>{"a", "b"}));
}

TEST(JobInfo, HasTheDefaultsForWhatIsNoObject)
{
    for (const char* json : {"null", "1", "true", "\"text\"", "[1,2]"})
        EXPECT_EQ(parsed(json).toJsonFull(), defaultJson) << json;
}

TEST(JobInfo, RejectsValuesOfTheWrongKind)
{
    for (const char* json :
         {R"({"pdl":"PCL"})", R"({"copies":true})", R"({"copies":[1]})", R"({"forceMono":1})",
          R"({"pjl":"yes"})", R"({"kfeedShortEdge":0})", R"({"fonts":"Arial"})", R"({"fonts":[1]})",
          R"({"fonts":{}})", R"({"copies":99999999999})"})
        EXPECT_THROW(parsed(json), Torv::VariantInvalidOperationException) << json;
}

TEST(JobInfo, ShowsUnknownGroupsAsDashesInTheLog)
{
    EXPECT_EQ(
        JobInfo().toString(),
        "pdl=- | mono=- | gray=- | color=- | paper=- | orientation=- | duplex=- | copies=- | forceMono=- | "
        "stapling=- | punching=- | tonerSaving=- | pagesPerSheet=- | originalBrand=- | pjl=no ");
}

TEST(JobInfo, ShowsEveryGroupInTheLog)
{
    EXPECT_EQ(
        fullRecord().toString(),
        "pdl=PCL 6 | mono=1 | gray=2 | color=3 | paper=A4 | orientation=3 | duplex=yes | copies=4 | "
        "forceMono=yes | stapling=yes | punching=yes | tonerSaving=yes | pagesPerSheet=6 | originalBrand=9 | "
        "pjl=yes ");
}

TEST(JobInfo, ShowsZerosAsNoInTheLog)
{
    JobInfo info;
    info.setPdl(Pdl::Unknown);
    info.setDuplex(Duplex::OneSided);
    info.setStapling(Staple::None, true);
    info.setPunching(Punch::None, true);
    info.setForceMono(false);
    info.setEcoMode(false);

    EXPECT_EQ(
        info.toString(),
        "pdl=- | mono=- | gray=- | color=- | paper=- | orientation=- | duplex=no | copies=- | forceMono=no | "
        "stapling=no | punching=no | tonerSaving=no | pagesPerSheet=- | originalBrand=- | pjl=no ");
}

} // namespace
} // namespace JobParser
