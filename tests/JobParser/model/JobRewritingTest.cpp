#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPjlCmdBase64String.h"
#include "JobParser/model/UnserializationContext.h"
#include "tests/JobParser/model/JobLines.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;

std::string saved(const Job& job)
{
    JobFile noFile;
    Torv::IO::StringStream stream;
    job.save(noFile, stream);
    return stream.str();
}

// wrapIntoPjlJob

TEST(JobRewriting, WrapsAJobIntoAnEnvelopeOfPjl)
{
    Job job = jobOf({"FF", "null"});

    job.wrapIntoPjlJob(Pdl::PostScript, "My job");

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "JOB NAME=\"My job\"", "ENTER LANGUAGE=POSTSCRIPT", "FF", "null",
                                   "UEL", "EOJ NAME=\"My job\"", "UEL"}));
    EXPECT_TRUE(job.modified);
    EXPECT_TRUE(job.jobInfo.pjl);
    EXPECT_EQ(job.jobInfo.pdl, Pdl::PostScript);
    EXPECT_EQ(job.jobInfo.flags(JobInfo::FlagPdl), JobInfo::FlagPdl);
}

TEST(JobRewriting, WritesAWrappedJobAsPrintersReadIt)
{
    Job job = jobOf({"FF"});

    job.wrapIntoPjlJob(Pdl::Pcl5, "a");

    EXPECT_EQ(saved(job), "\x1B%-12345X@PJL JOB NAME=\"a\"\r\n@PJL ENTER LANGUAGE=PCL\r\n\f"
                          "\x1B%-12345X@PJL EOJ NAME=\"a\"\r\n\x1B%-12345X");
}

TEST(JobRewriting, WrapsAnEmptyJob)
{
    Job job;

    job.wrapIntoPjlJob(Pdl::Xps, "");

    EXPECT_EQ(linesOf(job),
              (Lines{"UEL", "JOB NAME=\"\"", "ENTER LANGUAGE=XPS", "UEL", "EOJ NAME=\"\"", "UEL"}));
}

TEST(JobRewriting, NamesEveryLanguageInTheEnvelope)
{
    const std::vector<std::pair<Pdl, std::string>> words{
        {Pdl::Unknown, ""},
        {Pdl::Pcl5, "PCL"},
        {Pdl::PostScript, "POSTSCRIPT"},
        {Pdl::EscP, "ESCP"},
        {Pdl::Prescribe, "PRESCRIBE"},
        {Pdl::PclXl, "PCLXL"},
        {Pdl::Pdf, "PDF"},
        {Pdl::Jpeg, "JPEG"},
        {Pdl::Xps, "XPS"},
        {Pdl::Urf, "URF"},
    };
    for (const auto& [pdl, word] : words) {
        Job job;

        job.wrapIntoPjlJob(pdl, "a");

        EXPECT_EQ(linesOf(job)[2], "ENTER LANGUAGE=" + word);
    }
}

TEST(JobRewriting, WrapsWithTheNameAsItIs)
{
    Job job;

    job.wrapIntoPjlJob(Pdl::Pcl5, "a\"b \xFC\0c"s);

    EXPECT_EQ(linesOf(job)[1], "JOB NAME=\"a\"b \xFC\0c\""s);
    EXPECT_EQ(linesOf(job)[4], "EOJ NAME=\"a\"b \xFC\0c\""s);
}

TEST(JobRewriting, WrapsNoJobThatHasPjl)
{
    for (const bool modified : {false, true}) {
        Job job = jobOf({"FF"});
        job.jobInfo.setPjl(true);
        job.modified = modified;

        job.wrapIntoPjlJob(Pdl::Pcl5, "a");

        EXPECT_EQ(linesOf(job), Lines{"FF"});
        EXPECT_EQ(job.modified, modified);
        EXPECT_EQ(job.jobInfo.flags(JobInfo::FlagPdl), 0);
    }
}

TEST(JobRewriting, WrapsAJobOnlyOnce)
{
    Job job = jobOf({"FF"});

    job.wrapIntoPjlJob(Pdl::Pcl5, "a");
    job.wrapIntoPjlJob(Pdl::PostScript, "b");

    EXPECT_EQ(linesOf(job).size(), 7U);
    EXPECT_EQ(job.jobInfo.pdl, Pdl::Pcl5);
}

// setPjlJobParam

TEST(JobRewriting, SetsAParameterOfTheFirstJobCommandOnly)
{
    Job job = jobOf({"UEL", "null", "COMMENT JOB", "job NAME=\"a\" DISPLAY=\"c\"", "JOB NAME=\"b\""});

    job.setPjlJobParam("display", "\"x\"");

    EXPECT_EQ(linesOf(job),
              (Lines{"UEL", "null", "COMMENT JOB", "job NAME=\"a\" DISPLAY=\"x\"", "JOB NAME=\"b\""}));
    EXPECT_FALSE(job.modified);
}

TEST(JobRewriting, AddsAParameterToTheJobCommand)
{
    Job job = jobOf({"JOB NAME=\"a\""});

    job.setPjlJobParam("PASSWORD", "123");

    EXPECT_EQ(linesOf(job), Lines{"JOB NAME=\"a\" PASSWORD=123"});
}

TEST(JobRewriting, SetsNoParameterWithoutAJobCommand)
{
    Job job = jobOf({"UEL", "EOJ NAME=\"a\"", "JOBNAME=a", "FF"});

    job.setPjlJobParam("NAME", "\"x\"");

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "EOJ NAME=\"a\"", "JOBNAME=a", "FF"}));
    EXPECT_FALSE(job.modified);
}

TEST(JobRewriting, LeavesAChangedJobChangedWhenItSetsAParameter)
{
    Job job = jobOf({"JOB"});
    job.modified = true;

    job.setPjlJobParam("NAME", "\"x\"");

    EXPECT_TRUE(job.modified);
}

// insertPjlCmd

TEST(JobRewriting, ReplacesEveryCommandOfTheSameNameBeforeEnter)
{
    Job job = jobOf({"UEL", "SET QTY=1", "SET COPIES=1", "SET QTY=2", "ENTER LANGUAGE=PCL", "FF"});

    job.insertPjlCmd("SET", "QTY", "3", false, false);

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "SET COPIES=1", "SET QTY=3", "ENTER LANGUAGE=PCL", "FF"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, ReplacesOnlyTheSameValueIfAskedTo)
{
    Job job = jobOf({"SET QTY=1", "SET QTY=2", "ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "QTY", "1", true, false);

    EXPECT_EQ(linesOf(job), (Lines{"SET QTY=2", "SET QTY=1", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, WritesANumberInDecimal)
{
    Job job = jobOf({"SET QTY=1", "SET QTY=2", "ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "QTY", 1, true, false);
    job.insertPjlCmd("SET", "QTY", -2147483647 - 1, true, true);

    EXPECT_EQ(linesOf(job),
              (Lines{"SET QTY=2", "SET QTY=1", "SET QTY=\"-2147483648\"", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, PutsAValueIntoQuotationMarksIfAskedTo)
{
    Job job = jobOf({"ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "NAME", "x", false, true);

    EXPECT_EQ(linesOf(job), (Lines{"SET NAME=\"x\"", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, ComparesAValueAsItStandsThere)
{
    Job job = jobOf({"SET ATTR=\"x\"", "SET ATTR=x", "ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "ATTR", "x", true, true);

    EXPECT_EQ(linesOf(job), (Lines{"SET ATTR=\"x\"", "SET ATTR=\"x\"", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, ComparesCommandsNamesAndValuesInAnyCase)
{
    Job job = jobOf({"set qty=one", "Set Qty=TWO", "enter language=pcl"});

    job.insertPjlCmd("SET", "QTY", "ONE", true, false);
    EXPECT_EQ(linesOf(job), (Lines{"Set Qty=TWO", "SET QTY=ONE", "enter language=pcl"}));

    job.insertPjlCmd("seT", "qTy", "3", false, false);
    EXPECT_EQ(linesOf(job), (Lines{"seT qTy=3", "enter language=pcl"}));
}

TEST(JobRewriting, FindsANameBehindBlanksAndWithoutAnEqualSign)
{
    Job job = jobOf({"SET  QTY = 1", "SET QTY 1", "SET QTY", "ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "QTY", "1", true, false);

    EXPECT_EQ(linesOf(job), (Lines{"SET QTY", "SET QTY=1", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, ReplacesOtherCommandsThanSet)
{
    Job job = jobOf({"SET A=1", "DEFAULT A=1", "COMMENT A=1", "ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("DEFAULT", "A", "2", false, false);

    EXPECT_EQ(linesOf(job), (Lines{"SET A=1", "COMMENT A=1", "DEFAULT A=2", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, KeepsCommandsBehindTheFirstEnter)
{
    Job job = jobOf({"SET QTY=1", "ENTER LANGUAGE=PCL", "FF", "SET QTY=2", "ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "QTY", "3", false, false);

    EXPECT_EQ(linesOf(job),
              (Lines{"SET QTY=3", "ENTER LANGUAGE=PCL", "FF", "SET QTY=2", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, AddsNoCommandWithoutAnEnter)
{
    Job job = jobOf({"UEL", "SET QTY=1", "SET A=1", "EOJ", "UEL"});

    job.insertPjlCmd("SET", "QTY", "3", false, false);
    EXPECT_EQ(linesOf(job), (Lines{"UEL", "SET A=1", "EOJ", "UEL"}));
    EXPECT_TRUE(job.modified);

    job.modified = false;
    job.insertPjlCmd("SET", "QTY", "3", false, false);
    EXPECT_EQ(linesOf(job), (Lines{"UEL", "SET A=1", "EOJ", "UEL"}));
    EXPECT_FALSE(job.modified);
}

TEST(JobRewriting, RemovesAnEnterThatIsToBeReplacedItself)
{
    Job job = jobOf({"ENTER LANGUAGE=PCL", "FF", "ENTER OTHER=PCL", "ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("enter", "LANGUAGE", "POSTSCRIPT", false, false);

    EXPECT_EQ(linesOf(job), (Lines{"FF", "ENTER OTHER=PCL"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, WritesTextsUpToTheirNul)
{
    Job job = jobOf({"ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "A", "x\0y"s, false, true);

    EXPECT_EQ(linesOf(job), (Lines{"SET A=\"x\"", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, WritesNoTextAsAPattern)
{
    Job job = jobOf({"ENTER LANGUAGE=PCL"});

    job.insertPjlCmd("SET", "%s", "%n%d", false, false);

    EXPECT_EQ(linesOf(job), (Lines{"SET %s=%n%d", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, TakesTextsThatBelongToWhatItRemoves)
{
    Job job = jobOf({"SET VALUE", "SET VALUE=VALUE", "ENTER LANGUAGE=PCL"});
    const auto& cmd = dynamic_cast<const ChunkPjlCmd&>(*job.chunks[0]);
    const auto& other = dynamic_cast<const ChunkPjlCmd&>(*job.chunks[1]);

    job.insertPjlCmd(other.cmd.c_str(), cmd.param.c_str(), other.param, false, false);

    EXPECT_EQ(linesOf(job), (Lines{"SET VALUE", "SET VALUE=VALUE=VALUE", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, TakesACommandOfStoredMetadataForAPjlCommand)
{
    Job job = jobOf({"ENTER LANGUAGE=PCL"});
    UnserializationContext context;
    job.chunks.insert(job.chunks.begin(),
                      std::make_shared<ChunkPjlCmdBase64String>(
                          context, Torv::Json::parse(R"({"cmd":"SET","param":"UVRZPTE="})")));
    ASSERT_EQ(linesOf(job)[0], "SET QTY=1");

    job.insertPjlCmd("SET", "QTY", "3", false, false);

    EXPECT_EQ(linesOf(job), (Lines{"SET QTY=3", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, RemovesEachPlaceOfAChunkThatStandsTwice)
{
    Job job = jobOf({"SET QTY=1", "FF", "ENTER LANGUAGE=PCL"});
    job.chunks.insert(job.chunks.begin() + 1, job.chunks[0]);

    job.insertPjlCmd("SET", "QTY", "3", false, false);

    EXPECT_EQ(linesOf(job), (Lines{"FF", "SET QTY=3", "ENTER LANGUAGE=PCL"}));
}

// insertPjlCode

TEST(JobRewriting, InsertsTextByteForByteBeforeTheFirstEnter)
{
    Job job = jobOf({"UEL", "enter LANGUAGE=PCL", "FF", "ENTER LANGUAGE=PCL"});

    EXPECT_TRUE(job.insertPjlCode("@PJL A\n\0\xFF"s));

    EXPECT_EQ(linesOf(job),
              (Lines{"UEL", "text @PJL A\n\0\xFF"s, "enter LANGUAGE=PCL", "FF", "ENTER LANGUAGE=PCL"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, InsertsTextsInTheOrderInWhichTheyCome)
{
    Job job = jobOf({"ENTER LANGUAGE=PCL"});

    job.insertPjlCode("a");
    job.insertPjlCode("");
    job.insertPjlCode("b");

    EXPECT_EQ(linesOf(job), (Lines{"text a", "text ", "text b", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, InsertsNoTextWithoutAnEnter)
{
    Job job = jobOf({"UEL", "SET ENTER=1", "FF"});

    EXPECT_FALSE(job.insertPjlCode("@PJL A\r\n"));

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "SET ENTER=1", "FF"}));
    EXPECT_FALSE(job.modified);
}

// setJobName

TEST(JobRewriting, RenamesTheJobInEveryJobCommand)
{
    Job job = jobOf({"UEL", "JOB NAME=\"b\" DISPLAY=\"c\"", "FF", "job", "EOJ NAME=\"b\"", "null"});

    job.setJobName("a");

    EXPECT_EQ(linesOf(job),
              (Lines{"UEL", "JOB NAME=\"a\"", "FF", "job NAME=\"a\"", "EOJ NAME=\"b\"", "null"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, TakesTheNewNameFromAJobCommandItself)
{
    Job job = jobOf({"JOB x", "JOB y"});

    job.setJobName(dynamic_cast<const ChunkPjlCmd&>(*job.chunks[0]).param);

    EXPECT_EQ(linesOf(job), (Lines{"JOB NAME=\"x\"", "JOB NAME=\"x\""}));
}

TEST(JobRewriting, RenamesNoJobWithoutAJobCommand)
{
    Job job = jobOf({"UEL", "JOBNAME a", "EOJ"});

    job.setJobName("b");

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "JOBNAME a", "EOJ"}));
    EXPECT_FALSE(job.modified);
}

// All of them

TEST(JobRewriting, LeavesAnEmptyJobAsItWas)
{
    Job job;

    job.setPjlJobParam("NAME", "a");
    job.insertPjlCmd("SET", "QTY", 1, false, false);
    job.insertHpPjlProcessingAction("X", "Y");
    EXPECT_FALSE(job.insertPjlCode("a"));
    EXPECT_FALSE(job.removePjlSetCmd("QTY", "1"));
    job.removePjlSetCmd("", true);
    job.removePjlSetCmd("", false);
    job.removePjl();
    job.removePrescribe();
    job.setJobName("a");

    EXPECT_EQ(linesOf(job), Lines{});
    EXPECT_FALSE(job.modified);
}

TEST(JobRewriting, LeavesSizesRight)
{
    Job job = jobOf({"FF"});
    job.wrapIntoPjlJob(Pdl::Pcl5, "a");
    job.insertPjlCmd("SET", "QTY", 3, false, false);
    job.insertPjlCode("@PJL SET A=1\r\n");
    job.setPjlJobParam("DISPLAY", "\"d\"");
    JobFile noFile;

    EXPECT_NO_THROW(job.checkChunkSizes(noFile));

    EXPECT_EQ(job.size(), static_cast<std::int64_t>(saved(job).size()));
    EXPECT_FALSE(job.modified);
}

} // namespace
} // namespace JobParser
