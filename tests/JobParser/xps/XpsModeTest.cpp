#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "JobParser/model/GlobalParser.h"
#include "JobParser/xps/ChunkXps.h"
#include "tests/JobParser/xps/XpsSupport.h"
#include "tests/support/OpenJob.h"
#include "tests/support/ZipBytes.h"

namespace JobParser
{
namespace
{

TEST(XpsMode, ReplacesTheRecordAndKeepsThePackageAsOneChunk)
{
    OpenJob job(ZipBytes().part("a", "").part("b", "").str());
    Global::Parser parser(job.job, job.file, job.papers);
    parser.pdlJobInfo.setCopies(7);
    parser.pdlJobInfo.addFonts({"Courier"});

    parser.xpsMode();

    EXPECT_EQ(parser.pdlJobInfo.flags(JobInfo::AllFlags), 0);
    EXPECT_TRUE(parser.pdlJobInfo.fonts.empty());
    ASSERT_EQ(job.job.chunks.size(), 1U);
    const auto& chunk = dynamic_cast<const ChunkXps&>(*job.job.chunks[0]);
    EXPECT_EQ(chunk.offset, 0);
    EXPECT_EQ(chunk.size(), job.file.m_offset);
    EXPECT_EQ(chunk.size(), job.file.m_realDataSize - 22);
}

TEST(XpsMode, LeavesRecordAndJobUntouchedIfThePackageFails)
{
    OpenJob job(ZipBytes().part(ticketName, std::string(mebibyte + 1, ' ')).str());
    Global::Parser parser(job.job, job.file, job.papers);
    parser.pdlJobInfo.setCopies(7);
    parser.pdlJobInfo.addFonts({"Courier"});

    EXPECT_THROW(parser.xpsMode(), JobParserException);

    EXPECT_EQ(parser.pdlJobInfo.copies, 7);
    EXPECT_EQ(parser.pdlJobInfo.fonts.size(), 1U);
    EXPECT_TRUE(job.job.chunks.empty());
}

} // namespace
} // namespace JobParser
