#include "JobParser/pclxl/JobChunkPclXLWatermark.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/pclxl/JobChunkPclXLRawWithData.h"
#include "tests/support/ChunkForms.h"
#include "tests/support/OpenJob.h"

#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace ChunkForms;

class JobChunkPclXLWatermarkTest : public testing::Test
{
protected:
    void SetUp() override { Library::init({}); }
};

TEST_F(JobChunkPclXLWatermarkTest, WritesItsChunksInOrder)
{
    JobChunkPclXLWatermark chunk;

    chunk.addChunk(std::make_shared<ChunkText>("ab"));
    chunk.addChunk(nullptr);
    chunk.addChunk(std::make_shared<ChunkText>("c"));

    EXPECT_EQ(saved(chunk), "abc");
    EXPECT_EQ(chunk.size(), 3);
    EXPECT_EQ(chunk.getChunks().size(), 3U);
}

TEST_F(JobChunkPclXLWatermarkTest, CountsAChunkAsItIsWhenItIsAdded)
{
    JobChunkPclXLWatermark chunk;
    const auto data = std::make_shared<JobChunkPclXLRawWithData>();

    data->setData({1, 2});
    chunk.addChunk(data);
    data->setData({1, 2, 3, 4});

    EXPECT_EQ(chunk.size(), 2);
    EXPECT_EQ(saved(chunk).size(), 4U);
}

TEST_F(JobChunkPclXLWatermarkTest, DumpsItsNumberOfChunksAndEach)
{
    JobChunkPclXLWatermark chunk;
    chunk.addChunk(nullptr);
    const auto data = std::make_shared<JobChunkPclXLRawWithData>();
    data->setData({1, 2});
    chunk.addChunk(data);

    EXPECT_EQ(dumped(chunk), "Watermark: chunk count 2\nRaw with data (2 bytes)\n");
}

TEST_F(JobChunkPclXLWatermarkTest, ComesBackFromItsDataWithTheSizeThatStandsThere)
{
    const std::string dto = R"({"size":77,"chunks":[{"class":"TextE","id":2,"dto":{"text":"ab"}},null,2]})";

    const auto chunk = made<JobChunkPclXLWatermark>(dto);

    EXPECT_EQ(json(*chunk), dto);
    EXPECT_EQ(chunk->size(), 77);
    EXPECT_EQ(saved(*chunk), "abab");
}

TEST_F(JobChunkPclXLWatermarkTest, WritesAChunkThatOthersHoldTooOnce)
{
    const auto text = std::make_shared<ChunkText>("a");
    JobChunkPclXLWatermark inner;
    inner.addChunk(text);
    JobChunkPclXLWatermark chunk;
    chunk.addChunk(std::make_shared<JobChunkPclXLWatermark>(inner));
    chunk.addChunk(text);

    EXPECT_EQ(json(chunk),
              R"({"size":2,"chunks":[{"class":"PclXLWatermarkE","id":2,"dto":{"size":1,"chunks":[)"
              R"({"class":"TextE","id":3,"dto":{"text":"a"}}]}},3]})");
}

TEST_F(JobChunkPclXLWatermarkTest, RefusesDataWithoutItsKeys)
{
    for (const char* dto : {"{}", R"({"size":1})", R"({"chunks":[]})", R"({"size":"1","chunks":[]})",
                            R"({"size":1,"chunks":{}})", R"({"size":1,"chunks":null})"})
        EXPECT_THROW(made<JobChunkPclXLWatermark>(dto), Torv::VariantInvalidOperationException) << dto;
    EXPECT_THROW(made<JobChunkPclXLWatermark>(R"({"size":1,"chunks":[9]})"), JobParserException);
}

} // namespace
} // namespace JobParser
