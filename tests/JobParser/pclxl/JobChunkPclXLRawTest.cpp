#include "JobParser/pclxl/JobChunkPclXLRaw.h"

#include <gtest/gtest.h>
#include <limits>

#include "JobParser/JobParserException.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/support/ChunkForms.h"
#include "tests/support/OpenJob.h"

#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace ChunkForms;
using namespace std::string_view_literals;

TEST(JobChunkPclXLRaw, WritesItsRangeWithBothEnds)
{
    OpenJob job("0123456789"sv);

    EXPECT_EQ(saved(JobChunkPclXLRaw(2, 4), job.file), "234");
    EXPECT_EQ(JobChunkPclXLRaw(2, 4).size(), 3);
    EXPECT_EQ(saved(JobChunkPclXLRaw(9, 9), job.file), "9");
    EXPECT_EQ(saved(JobChunkPclXLRaw(3, 2), job.file), "");
    EXPECT_EQ(JobChunkPclXLRaw(3, 2).size(), 0);
}

TEST(JobChunkPclXLRaw, ThrowsForARangeBehindTheEndOfTheFile)
{
    OpenJob job("0123456789"sv);

    EXPECT_THROW(saved(JobChunkPclXLRaw(8, 10), job.file), UnexpectedEndOfFileException);
}

TEST(JobChunkPclXLRaw, DumpsTheDistanceOfItsEnds)
{
    JobChunkPclXLRaw chunk(2, 4);
    JobChunkPclXLRaw large(0, 5000000000);

    EXPECT_EQ(dumped(chunk), "Raw (2 bytes)\n");
    EXPECT_EQ(dumped(large), "Raw (5000000000 bytes)\n");
}

TEST(JobChunkPclXLRaw, ComesBackFromItsData)
{
    const std::string dto = R"({"start":5000000000,"end":5000000009})";

    EXPECT_EQ(json(JobChunkPclXLRaw(5000000000, 5000000009)), dto);
    EXPECT_EQ(json(*made<JobChunkPclXLRaw>(dto)), dto);
    EXPECT_EQ(made<JobChunkPclXLRaw>(dto)->size(), 10);
    EXPECT_EQ(made<JobChunkPclXLRaw>(R"({"start":1,"end":0})")->size(), 0);
}

TEST(JobChunkPclXLRaw, RefusesDataThatMakeNoSense)
{
    for (const char* dto : {R"({"start":2,"end":0})", R"({"start":0,"end":9223372036854775807})",
                            R"({"start":9223372036854775807,"end":0})"})
        EXPECT_THROW(made<JobChunkPclXLRaw>(dto), JobParserException) << dto;
    for (const char* dto : {"{}", R"({"start":1})", R"({"end":1})", R"({"start":"1","end":1})", "[]"})
        EXPECT_THROW(made<JobChunkPclXLRaw>(dto), Torv::VariantInvalidOperationException) << dto;
}

TEST(JobChunkPclXLRaw, CountsAnyRangeWithoutOverflow)
{
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    JobChunkPclXLRaw chunk(least, most);

    EXPECT_EQ(chunk.size(), 0);
    EXPECT_EQ(dumped(chunk), "Raw (-1 bytes)\n");
}

} // namespace
} // namespace JobParser
