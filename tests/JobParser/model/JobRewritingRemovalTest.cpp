#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

#include "JobParser/Job.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkUel.h"
#include "tests/JobParser/model/JobLines.h"

namespace JobParser
{
namespace
{

class ChunkOfAnotherUel : public ChunkUel
{
};

class ChunkOfAnotherPrescribe : public ChunkPrescribe
{
public:
    using ChunkPrescribe::ChunkPrescribe;
};

// removePjlSetCmd

TEST(JobRewriting, RemovesEverySettingOfANameAndAValue)
{
    Job job = jobOf({"set qty = ONE", "SET QTY=two", "SET QTY one", "DEFAULT QTY=one", "SET QTY=\"one\"",
                     "SET QTY", "ENTER LANGUAGE=PCL", "FF", "SET QTY=One"});

    EXPECT_TRUE(job.removePjlSetCmd("QTY", "one"));

    EXPECT_EQ(linesOf(job), (Lines{"SET QTY=two", "DEFAULT QTY=one", "SET QTY=\"one\"", "SET QTY",
                                   "ENTER LANGUAGE=PCL", "FF"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, TellsThatNoSettingWasRemoved)
{
    Job job = jobOf({"SET QTY=2", "FF", "null"});

    EXPECT_FALSE(job.removePjlSetCmd("QTY", "1"));

    EXPECT_EQ(linesOf(job), (Lines{"SET QTY=2", "FF", "null"}));
    EXPECT_FALSE(job.modified);
}

TEST(JobRewriting, RemovesTheFirstSettingThatBeginsSo)
{
    Job job = jobOf({"SET A=1", "SET QTYX=1", "SET QTY=1", "SET QTY=2"});

    job.removePjlSetCmd("QTY", false);
    EXPECT_EQ(linesOf(job), (Lines{"SET A=1", "SET QTY=1", "SET QTY=2"}));
    EXPECT_TRUE(job.modified);

    job.removePjlSetCmd("QTY", false);
    EXPECT_EQ(linesOf(job), (Lines{"SET A=1", "SET QTY=2"}));
}

TEST(JobRewriting, RemovesAllSettingsThatBeginSo)
{
    Job job = jobOf({"SET A=1", "SET QTY=1", "set QTYX=1", "ENTER LANGUAGE=PCL", "SET QTY", "DEFAULT QTY=1"});

    job.removePjlSetCmd("QTY", true);

    EXPECT_EQ(linesOf(job), (Lines{"SET A=1", "ENTER LANGUAGE=PCL", "DEFAULT QTY=1"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, ComparesAPrefixExactly)
{
    Job job = jobOf({"SET qty=1", "SET  QTY=1"});

    job.removePjlSetCmd("QTY", true);
    job.removePjlSetCmd("QTY", false);

    EXPECT_EQ(linesOf(job), (Lines{"SET qty=1", "SET  QTY=1"}));
    EXPECT_FALSE(job.modified);
}

TEST(JobRewriting, TakesEverySettingForOneWithAnEmptyPrefix)
{
    Job job = jobOf({"UEL", "SET A=1", "SET", "SET B", "COMMENT A"});

    job.removePjlSetCmd("", false);
    EXPECT_EQ(linesOf(job), (Lines{"UEL", "SET", "SET B", "COMMENT A"}));

    job.removePjlSetCmd("", true);
    EXPECT_EQ(linesOf(job), (Lines{"UEL", "COMMENT A"}));
}

// removePjl

TEST(JobRewriting, RemovesEveryPjlCommandAndEveryUel)
{
    Job job =
        jobOf({"UEL", "JOB NAME=\"a\"", "ENTER LANGUAGE=PCL", "FF", "!R!", "null", "UEL", "EOJ", "UEL"});
    job.jobInfo.setPjl(true);

    job.removePjl();

    EXPECT_EQ(linesOf(job), (Lines{"FF", "!R!", "null"}));
    EXPECT_TRUE(job.modified);
    EXPECT_TRUE(job.jobInfo.pjl);
}

TEST(JobRewriting, WrapsNoJobWhosePjlWasRemoved)
{
    Job job = jobOf({"FF"});
    job.wrapIntoPjlJob(Pdl::Pcl5, "a");
    job.removePjl();

    job.wrapIntoPjlJob(Pdl::Pcl5, "a");

    EXPECT_EQ(linesOf(job), Lines{"FF"});
}

TEST(JobRewriting, KeepsClassesThatDeriveFromAUel)
{
    Job job;
    job.chunks = {std::make_shared<ChunkOfAnotherUel>(), std::make_shared<ChunkUel>()};

    job.removePjl();

    EXPECT_EQ(linesOf(job), Lines{"UEL"});
}

TEST(JobRewriting, LeavesAJobWithoutPjlAsItWas)
{
    for (const bool modified : {false, true}) {
        Job job = jobOf({"FF", "!R!"});
        job.modified = modified;

        job.removePjl();

        EXPECT_EQ(linesOf(job), (Lines{"FF", "!R!"}));
        EXPECT_EQ(job.modified, modified);
    }
}

// removePrescribe

TEST(JobRewriting, RemovesEveryPrescribeBlock)
{
    Job job = jobOf({"!R!", "UEL", "!R!", "!R!", "FF", "null"});

    job.removePrescribe();

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "FF", "null"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, KeepsClassesThatDeriveFromAPrescribeBlock)
{
    Job job;
    job.chunks = {std::make_shared<ChunkOfAnotherPrescribe>(0, 0), std::make_shared<ChunkPrescribe>(0, 0)};

    job.removePrescribe();

    EXPECT_EQ(linesOf(job), Lines{"!R!"});
}

TEST(JobRewriting, LeavesAJobWithoutPrescribeAsItWas)
{
    Job job = jobOf({"UEL", "FF"});

    job.removePrescribe();

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "FF"}));
    EXPECT_FALSE(job.modified);
}

} // namespace
} // namespace JobParser
