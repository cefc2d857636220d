// What a record takes over from another one.

#include <gtest/gtest.h>
#include <string>

#include "JobParser/JobInfo.h"
#include "tests/JobParser/model/JobInfoRecords.h"

namespace JobParser
{
namespace
{

TEST(JobInfo, TakesOverAllThatAnotherRecordKnows)
{
    JobInfo info;

    info.combineWith(fullRecord(), 65535);

    // The other record's pages are folded, since it forces mono.
    EXPECT_EQ(
        info.toJsonFull(),
        R"({"version":1,"pjl":true,"pdl":5,"paper":5,"monoCount":6,"grayCount":0,"colorCount":0,"duplex":2,)"
        R"("copies":4,"forceMono":true,"stapling":3,"punching":3,"orientation":3,"ecoMode":true,)"
        R"("ecoMode":true,"pagesPerSheet":6,"originalBrand":9,"kfeedShortEdge":true,)"
        R"("fonts":["Arial","Courier"]})");
}

TEST(JobInfo, TakesOverAGroupOnlyIfMaskAndOtherRecordHaveItsBit)
{
    for (const Group& group : groups) {
        JobInfo other;
        group.set(other);
        JobInfo taken;
        JobInfo masked;

        taken.combineWith(other, group.bit);
        masked.combineWith(other, 65535 & ~group.bit);

        EXPECT_EQ(taken.toJson(), other.toJson()) << group.name;
        EXPECT_EQ(masked.toJson(), defaultJson) << group.name;
    }
}

TEST(JobInfo, KeepsWhatAnotherRecordDoesNotKnow)
{
    JobInfo info = fullRecord();

    info.combineWith(JobInfo(), 65535);

    EXPECT_EQ(info.toJson(), std::string(fullJson) + "}");
}

TEST(JobInfo, TakesOverFontsAndPjlWhateverTheMask)
{
    JobInfo info;
    info.setOrientation(Orientation::Landscape);
    JobInfo other = fullRecord();

    info.combineWith(other, 63487);
    EXPECT_EQ(info.orientation, Orientation::Landscape);
    EXPECT_EQ(info.fonts.size(), 2U);
    EXPECT_TRUE(info.pjl);

    JobInfo untouched;
    untouched.combineWith(other, 0);
    EXPECT_EQ(untouched.flags(65535), 0);
    EXPECT_EQ(untouched.fonts.size(), 2U);
    EXPECT_TRUE(untouched.pjl);
    EXPECT_TRUE(untouched.kfeedShortEdge);
}

TEST(JobInfo, KeepsPjlAndTheFeedEdgeOnceTheyAreTrue)
{
    JobInfo info;
    info.setPjl(true);
    info.kfeedShortEdge = true;

    info.combineWith(JobInfo(), 65535);

    EXPECT_TRUE(info.pjl);
    EXPECT_TRUE(info.kfeedShortEdge);
}

TEST(JobInfo, MergesCopiesToTheirMaximum)
{
    JobInfo info;
    info.setCopies(3);
    JobInfo fewer;
    fewer.setCopies(2);
    JobInfo more;
    more.copies = 20000;
    more.m_flags = 4;

    info.combineWith(fewer, 65535);
    EXPECT_EQ(info.copies, 3);
    info.combineWith(more, 65535);
    EXPECT_EQ(info.copies, 10000);
}

TEST(JobInfo, KeepsADuplexAgainstASourceThatSaysOneSided)
{
    JobInfo oneSided;
    oneSided.setDuplex(Duplex::OneSided);
    JobInfo duplex;
    duplex.setDuplex(Duplex::ShortEdge);
    JobInfo info;

    info.combineWith(oneSided, 65535);
    EXPECT_EQ(info.duplex, Duplex::OneSided);
    EXPECT_EQ(info.flags(65535), 16);
    info.combineWith(duplex, 65535);
    info.combineWith(oneSided, 65535);
    EXPECT_EQ(info.duplex, Duplex::ShortEdge);
}

TEST(JobInfo, ForcesMonoIfEitherSourceSaysSo)
{
    JobInfo forcing;
    forcing.setForceMono(true);
    JobInfo notForcing;
    notForcing.setForceMono(false);

    JobInfo first;
    first.setPageCount(1, 2, 3);
    first.combineWith(forcing, 65535);
    EXPECT_TRUE(first.forceMono);
    EXPECT_EQ(counts(first), (Counts{6, 0, 0}));
    first.combineWith(notForcing, 65535);
    EXPECT_TRUE(first.forceMono);

    JobInfo second;
    second.combineWith(notForcing, 65535);
    EXPECT_FALSE(second.forceMono);
    EXPECT_EQ(second.flags(65535), 128);
}

TEST(JobInfo, TakesOverForceMonoIfItsOwnIsNotKnown)
{
    JobInfo info;
    info.forceMono = true;
    JobInfo notForcing;
    notForcing.setForceMono(false);

    info.combineWith(notForcing, 65535);

    EXPECT_FALSE(info.forceMono);
}

TEST(JobInfo, FoldsMergedPagesByItsOwnForceMono)
{
    JobInfo info;
    info.setForceMono(true);
    JobInfo other;
    other.setPageCount(1, 2, 3);

    info.combineWith(other, 65535);

    EXPECT_EQ(counts(info), (Counts{6, 0, 0}));
}

TEST(JobInfo, MergesFinishingWithoutTheRuleOfTheSetters)
{
    JobInfo info;
    info.setStapling(Staple::Two, true);
    info.setPunching(Punch::FourHoles, true);
    JobInfo other;
    other.setStapling(Staple::UnknownPosition, true);
    other.setPunching(Punch::None, true);

    info.combineWith(other, 65535);

    EXPECT_EQ(info.stapling, Staple::UnknownPosition);
    EXPECT_EQ(info.punching, Punch::None);
}

} // namespace
} // namespace JobParser
