#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "JobParser/Job.h"
#include "tests/JobParser/model/JobLines.h"

namespace JobParser
{
namespace
{

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

} // namespace
} // namespace JobParser
