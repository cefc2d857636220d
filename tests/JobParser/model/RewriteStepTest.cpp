#include "JobParser/model/RewriteStep.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "JobParser/Job.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "tests/support/OpenJob.h"

#include "Torv/IO/StringStream.h"

namespace JobParser
{
namespace
{

using Kind = RewriteStep::Kind;

const std::vector<std::pair<std::string, std::string>> before{{"JOB", "NAME=\"old\" DISPLAY=\"d\""},
                                                              {"SET", "A=1"},
                                                              {"SET", "AB=2"},
                                                              {"SET", "A=1"},
                                                              {"ENTER", "LANGUAGE=PCL"}};

std::string changed(const RewriteStep& step)
{
    OpenJob open("");
    Job job;
    for (const auto& [cmd, param] : before)
        job.appendChunk(std::make_shared<ChunkPjlCmd>(cmd, param));
    step.applyTo(job);
    Torv::IO::StringStream stream;
    job.save(open.file, stream);
    return stream.str();
}

const std::string job = "@PJL JOB NAME=\"old\" DISPLAY=\"d\"\r\n";
const std::string enter = "@PJL ENTER LANGUAGE=PCL\r\n";

TEST(RewriteStep, DoesWhatItsKindSays)
{
    const std::string sets = "@PJL SET A=1\r\n@PJL SET AB=2\r\n@PJL SET A=1\r\n";

    EXPECT_EQ(changed({Kind::JobName, "new", ""}), "@PJL JOB NAME=\"new\"\r\n" + sets + enter);
    EXPECT_EQ(changed({Kind::JobParam, "DISPLAY", "x"}),
              "@PJL JOB NAME=\"old\" DISPLAY=x\r\n" + sets + enter);
    EXPECT_EQ(changed({Kind::Set, "A", "3"}), job + "@PJL SET AB=2\r\n@PJL SET A=3\r\n" + enter);
    EXPECT_EQ(changed({Kind::SetQuoted, "A", "3"}), job + "@PJL SET AB=2\r\n@PJL SET A=\"3\"\r\n" + enter);
    EXPECT_EQ(changed({Kind::Add, "A", "3"}), job + sets + "@PJL SET A=3\r\n" + enter);
    EXPECT_EQ(changed({Kind::Add, "A", "1"}), job + "@PJL SET AB=2\r\n@PJL SET A=1\r\n" + enter);
    EXPECT_EQ(changed({Kind::AddQuoted, "A", "3"}), job + sets + "@PJL SET A=\"3\"\r\n" + enter);
    EXPECT_EQ(changed({Kind::Unset, "A", "1"}), job + "@PJL SET AB=2\r\n" + enter);
    EXPECT_EQ(changed({Kind::UnsetFirst, "A", ""}), job + "@PJL SET AB=2\r\n@PJL SET A=1\r\n" + enter);
    EXPECT_EQ(changed({Kind::UnsetAll, "A", ""}), job + enter);
    EXPECT_EQ(changed({Kind::Finishing, "\"T\"", "\"O\""}),
              job + sets +
                  "@PJL SET PROCESSINGACTION=APPEND\r\n@PJL SET PROCESSINGTYPE=\"T\"\r\n"
                  "@PJL SET PROCESSINGOPTION=\"O\"\r\n@PJL SET PROCESSINGBOUNDARY=MOPY\r\n" +
                  enter);
    EXPECT_EQ(changed({Kind::PjlCode, "\\x41", ""}), job + sets + "\\x41" + enter);
    EXPECT_EQ(changed({Kind::StripPjl, "", ""}), "");
}

TEST(RewriteStep, StripsPrescribe)
{
    Job withBlock;
    withBlock.appendChunk(std::make_shared<ChunkPrescribe>(0, 1));

    RewriteStep{Kind::StripPrescribe, "", ""}.applyTo(withBlock);

    EXPECT_TRUE(withBlock.chunks.empty());
}

TEST(RewriteStep, WrapsAJobWithoutPjl)
{
    OpenJob open("");
    Job bare;

    RewriteStep{Kind::Wrap, "pcl", "n"}.applyTo(bare);

    Torv::IO::StringStream stream;
    bare.save(open.file, stream);
    EXPECT_EQ(stream.str(), "\x1B%-12345X@PJL JOB NAME=\"n\"\r\n@PJL ENTER LANGUAGE=PCL\r\n"
                            "\x1B%-12345X@PJL EOJ NAME=\"n\"\r\n\x1B%-12345X");
}

TEST(RewriteStep, MakesNoSenseForALanguageThatPjlDoesNotKnow)
{
    EXPECT_FALSE((RewriteStep{Kind::Wrap, "KLINGON", "n"}.makesSense()));
    EXPECT_TRUE((RewriteStep{Kind::Wrap, "PostScript", "n"}.makesSense()));
    EXPECT_TRUE((RewriteStep{Kind::JobName, "KLINGON", ""}.makesSense()));
}

TEST(RewriteStep, HasFourteenKindsWithTheirNumberOfTexts)
{
    const std::vector<int> texts{2, 1, 2, 2, 2, 2, 2, 2, 1, 1, 2, 1, 0, 0};

    for (std::int32_t number = 1; number <= 14; ++number) {
        SCOPED_TRACE(number);
        ASSERT_TRUE(RewriteStep::kindOf(number).has_value());
        EXPECT_EQ(RewriteStep::textsOf(*RewriteStep::kindOf(number)),
                  texts[static_cast<std::size_t>(number - 1)]);
    }
    for (const std::int32_t number : {-1, 0, 15, INT32_MAX, INT32_MIN})
        EXPECT_FALSE(RewriteStep::kindOf(number).has_value());
}

} // namespace
} // namespace JobParser
