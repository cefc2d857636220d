#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPjlCmdBase64String.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;

using Lines = std::vector<std::string>;

class ChunkOfAnotherUel : public ChunkUel
{
};

class ChunkOfAnotherPrescribe : public ChunkPrescribe
{
public:
    using ChunkPrescribe::ChunkPrescribe;
};

/// "UEL", "FF" and "!R!" are these chunks, "null" is none; anything else is a PJL command.
std::shared_ptr<IChunk> chunkOf(const std::string& line)
{
    if (line == "UEL")
        return std::make_shared<ChunkUel>();
    if (line == "FF")
        return std::make_shared<ChunkFormFeed>();
    if (line == "!R!")
        return std::make_shared<ChunkPrescribe>(0, 0);
    if (line == "null")
        return nullptr;
    const std::size_t blank = line.find(' ');
    return std::make_shared<ChunkPjlCmd>(line.substr(0, blank),
                                         blank == std::string::npos ? "" : line.substr(blank + 1));
}

/// A job that was not changed since it was made.
Job jobOf(const Lines& lines)
{
    Job job;
    for (const std::string& line : lines)
        job.appendChunk(chunkOf(line));
    job.modified = false;
    return job;
}

std::string lineOf(const IChunk* chunk)
{
    if (chunk == nullptr)
        return "null";
    if (const auto* const cmd = dynamic_cast<const ChunkPjlCmd*>(chunk))
        return cmd->cmd + (cmd->param.empty() ? "" : " " + cmd->param);
    if (const auto* const text = dynamic_cast<const ChunkText*>(chunk))
        return "text " + text->text;
    if (dynamic_cast<const ChunkPrescribe*>(chunk) != nullptr)
        return "!R!";
    return dynamic_cast<const ChunkUel*>(chunk) != nullptr ? "UEL" : "FF";
}

Lines linesOf(const Job& job)
{
    Lines lines;
    for (const auto& chunk : job.chunks)
        lines.push_back(lineOf(chunk.get()));
    return lines;
}

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

// insertHpPjlProcessingAction

const Lines leftStaple{"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=\"STAPLING\"",
                       "SET PROCESSINGOPTION=\"LEFT_1PT\"", "SET PROCESSINGBOUNDARY=MOPY"};

Lines joined(std::initializer_list<Lines> parts)
{
    Lines whole;
    for (const Lines& part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

TEST(JobRewriting, InsertsAFinishingGroupBeforeEnter)
{
    Job job = jobOf({"UEL", "SET A=1", "enter LANGUAGE=PCL", "FF"});

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job), (Lines{"UEL", "SET A=1", "SET PROCESSINGACTION=APPEND",
                                   "SET PROCESSINGTYPE=\"STAPLING\"", "SET PROCESSINGOPTION=\"LEFT_1PT\"",
                                   "SET PROCESSINGBOUNDARY=MOPY", "enter LANGUAGE=PCL", "FF"}));
    EXPECT_TRUE(job.modified);
}

TEST(JobRewriting, InsertsAFinishingGroupOnceHoweverOften)
{
    Job job = jobOf({"UEL", "ENTER LANGUAGE=PCL"});

    for (int i = 0; i < 3; ++i)
        job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job), joined({{"UEL"}, leftStaple, {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, TakesTypeAndOptionAsTheyAre)
{
    Job job = jobOf({"ENTER LANGUAGE=PCL"});

    job.insertHpPjlProcessingAction("PUNCH", "");

    EXPECT_EQ(linesOf(job),
              (Lines{"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=PUNCH",
                     "SET PROCESSINGOPTION=", "SET PROCESSINGBOUNDARY=MOPY", "ENTER LANGUAGE=PCL"}));
}

TEST(JobRewriting, ReplacesAFinishingGroupInAnyCaseAndWithOthersBetween)
{
    Job job = jobOf({"UEL", "set processingaction=append", "SET A=1", "Set ProcessingType=\"stapling\"",
                     "null", "SET PROCESSINGOPTION=\"TOP_2PT\"", "FF", "SET processingboundary=mopy",
                     "SET B=1", "ENTER LANGUAGE=PCL"});

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job),
              joined({{"UEL", "SET A=1", "null", "FF", "SET B=1"}, leftStaple, {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, KeepsAFinishingGroupOfAnotherType)
{
    const Lines punch{"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=\"PUNCH\"",
                      "SET PROCESSINGOPTION=\"LEFT_2PT\"", "SET PROCESSINGBOUNDARY=MOPY"};
    Job job = jobOf(joined({punch, {"ENTER LANGUAGE=PCL"}}));

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job), joined({punch, leftStaple, {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, ReplacesOneOfTwoFinishingGroups)
{
    const Lines punch{"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=\"PUNCH\"",
                      "SET PROCESSINGOPTION=\"LEFT_2PT\"", "SET PROCESSINGBOUNDARY=MOPY"};
    Job job = jobOf(joined({punch, leftStaple, {"ENTER LANGUAGE=PCL"}}));

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"TOP_2PT\"");

    EXPECT_EQ(linesOf(job), joined({punch,
                                    {"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=\"STAPLING\"",
                                     "SET PROCESSINGOPTION=\"TOP_2PT\"", "SET PROCESSINGBOUNDARY=MOPY"},
                                    {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, ReplacesAFinishingGroupWithoutItsAction)
{
    Job job = jobOf({"SET A=1", "SET PROCESSINGTYPE=\"STAPLING\"", "SET PROCESSINGOPTION=\"TOP_2PT\"",
                     "SET PROCESSINGBOUNDARY=MOPY", "ENTER LANGUAGE=PCL"});

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job), joined({{"SET A=1"}, leftStaple, {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, KeepsAnActionThatBelongsToAnotherType)
{
    Job job = jobOf({"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=\"PUNCH\"",
                     "SET PROCESSINGTYPE=\"STAPLING\"", "SET PROCESSINGOPTION=\"TOP_2PT\"",
                     "SET PROCESSINGBOUNDARY=MOPY", "ENTER LANGUAGE=PCL"});

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job), joined({{"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=\"PUNCH\""},
                                    leftStaple,
                                    {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, RemovesTheLastActionBeforeTheType)
{
    Job job = jobOf({"SET PROCESSINGACTION=APPEND", "SET A=1", "SET PROCESSINGACTION=APPEND",
                     "SET PROCESSINGACTION=NONE", "SET PROCESSINGTYPE=X", "SET PROCESSINGOPTION=Y",
                     "SET PROCESSINGBOUNDARY=MOPY"});

    job.insertHpPjlProcessingAction("X", "Y");

    EXPECT_EQ(linesOf(job), (Lines{"SET PROCESSINGACTION=APPEND", "SET A=1", "SET PROCESSINGACTION=NONE"}));
}

TEST(JobRewriting, RemovesTheFirstOptionBehindTheType)
{
    Job job = jobOf({"SET PROCESSINGOPTION=0", "SET PROCESSINGTYPE=X", "SET PROCESSINGOPTION=1",
                     "SET PROCESSINGOPTION=2", "SET PROCESSINGBOUNDARY=MOPY"});

    job.insertHpPjlProcessingAction("X", "Y");

    EXPECT_EQ(linesOf(job), (Lines{"SET PROCESSINGOPTION=0", "SET PROCESSINGOPTION=2"}));
}

TEST(JobRewriting, KeepsAFinishingGroupThatIsNotClosed)
{
    const Lines open{"SET PROCESSINGACTION=APPEND",    "SET PROCESSINGTYPE=\"STAPLING\"",
                     "SET PROCESSINGBOUNDARY=MOPY",    "SET PROCESSINGOPTION=\"TOP_2PT\"",
                     "SET PROCESSINGBOUNDARY=OTHER",   "SET PROCESSINGBOUNDARY",
                     "COMMENT PROCESSINGBOUNDARY=MOPY"};
    Job job = jobOf(joined({open, {"ENTER LANGUAGE=PCL", "SET PROCESSINGBOUNDARY=MOPY"}}));

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job),
              joined({open, leftStaple, {"ENTER LANGUAGE=PCL", "SET PROCESSINGBOUNDARY=MOPY"}}));
}

TEST(JobRewriting, RemovesAFinishingGroupEvenWithoutAnEnter)
{
    Job job = jobOf(joined({{"UEL"}, leftStaple, {"FF"}}));

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");
    EXPECT_EQ(linesOf(job), (Lines{"UEL", "FF"}));
    EXPECT_TRUE(job.modified);

    job.modified = false;
    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");
    EXPECT_EQ(linesOf(job), (Lines{"UEL", "FF"}));
    EXPECT_FALSE(job.modified);
}

TEST(JobRewriting, RemovesByTheSamePositionsAtEachFurtherBoundary)
{
    // The second group stands where the first one did when its boundary is met, and the third one does not.
    Job job = jobOf(joined({leftStaple, leftStaple, {"SET A=1"}, leftStaple, {"FF", "ENTER LANGUAGE=PCL"}}));

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job),
              joined({{"SET PROCESSINGOPTION=\"LEFT_1PT\"", "FF"}, leftStaple, {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, RemovesAGroupOfAnotherTypeThatStandsWhereTheReplacedOneStood)
{
    const Lines punch{"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=\"PUNCH\"",
                      "SET PROCESSINGOPTION=\"LEFT_2PT\"", "SET PROCESSINGBOUNDARY=MOPY"};
    Job job = jobOf(joined({{"UEL"}, leftStaple, punch, {"ENTER LANGUAGE=PCL"}}));

    job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");

    EXPECT_EQ(linesOf(job), joined({{"UEL"}, leftStaple, {"ENTER LANGUAGE=PCL"}}));
}

TEST(JobRewriting, LeavesAPositionThatTheListNoLongerReachesAlone)
{
    Job job = jobOf({"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=X", "SET PROCESSINGOPTION=Y",
                     "SET PROCESSINGBOUNDARY=MOPY", "SET PROCESSINGBOUNDARY=MOPY"});

    job.insertHpPjlProcessingAction("X", "Y");

    EXPECT_EQ(linesOf(job), Lines{});
}

TEST(JobRewriting, TakesWhatAFurtherBoundaryLeavesOfTheList)
{
    // The second boundary stands first by then; of the positions 2, 1 and 0 behind it the last two are there.
    Job job =
        jobOf({"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=X", "SET PROCESSINGOPTION=Y",
               "SET PROCESSINGBOUNDARY=MOPY", "SET PROCESSINGBOUNDARY=MOPY", "ENTER LANGUAGE=PCL", "FF"});

    job.insertHpPjlProcessingAction("X", "Y");

    EXPECT_EQ(linesOf(job), Lines{});
}

TEST(JobRewriting, WalksOnFromTheStartIfItWouldGoBackBeforeIt)
{
    Job job = jobOf({"SET PROCESSINGTYPE=X", "SET PROCESSINGOPTION=Y", "SET PROCESSINGBOUNDARY=MOPY",
                     "SET PROCESSINGBOUNDARY=MOPY", "SET A=1", "SET B=1", "SET C=1", "ENTER LANGUAGE=PCL"});

    job.insertHpPjlProcessingAction("X", "Z");

    EXPECT_EQ(linesOf(job),
              (Lines{"SET C=1", "SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=X",
                     "SET PROCESSINGOPTION=Z", "SET PROCESSINGBOUNDARY=MOPY", "ENTER LANGUAGE=PCL"}));
}

/// The walk over the list as it is told: by indices, and by erasing from the list.
Lines withGroupReplaced(Lines lines, const std::string& type, const std::string& option)
{
    int action = -1;
    int typeAt = -1;
    int optionAt = -1;
    bool actionSeen = false;
    for (int i = 0; i < static_cast<int>(lines.size()); ++i) {
        const std::string& line = lines[static_cast<std::size_t>(i)];
        if (line == "ENTER LANGUAGE=PCL") {
            lines.insert(lines.begin() + i,
                         {"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=" + type,
                          "SET PROCESSINGOPTION=" + option, "SET PROCESSINGBOUNDARY=MOPY"});
            break;
        }
        if (typeAt < 0 && line == "SET PROCESSINGACTION=APPEND") {
            actionSeen = true;
            action = i;
        } else if (typeAt < 0 && line.starts_with("SET PROCESSINGTYPE=")) {
            if (line == "SET PROCESSINGTYPE=" + type)
                typeAt = i;
            else
                actionSeen = false;
        } else if (typeAt >= 0 && optionAt < 0 && line.starts_with("SET PROCESSINGOPTION=")) {
            optionAt = i;
        } else if (optionAt >= 0 && line == "SET PROCESSINGBOUNDARY=MOPY") {
            int removed = 0;
            for (const int index : {i, optionAt, typeAt, actionSeen ? action : -1}) {
                if (index < 0 || index >= static_cast<int>(lines.size()))
                    continue;
                lines.erase(lines.begin() + index);
                ++removed;
            }
            i = std::max(i - removed, -1);
        }
    }
    return lines;
}

TEST(JobRewriting, ReplacesFinishingGroupsAsAWalkByIndicesWould)
{
    const Lines vocabulary{"SET PROCESSINGACTION=APPEND", "SET PROCESSINGTYPE=X",
                           "SET PROCESSINGTYPE=Y",        "SET PROCESSINGOPTION=1",
                           "SET PROCESSINGOPTION=2",      "SET PROCESSINGBOUNDARY=MOPY",
                           "SET PROCESSINGBOUNDARY=MOPY", "FF"};
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        Lines lines;
        for (std::size_t left = random() % 24; left > 0; --left)
            lines.push_back(random() % 20 == 0 ? "ENTER LANGUAGE=PCL"
                                               : vocabulary[random() % vocabulary.size()]);
        Job job = jobOf(lines);

        job.insertHpPjlProcessingAction("X", "3");

        const Lines expected = withGroupReplaced(lines, "X", "3");
        ASSERT_EQ(linesOf(job), expected) << testing::PrintToString(lines);
        ASSERT_EQ(job.modified,
                  expected != lines || std::ranges::count(expected, "SET PROCESSINGOPTION=3") > 0);
    }
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
