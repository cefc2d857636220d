#include "JobParser/pclxl/JobChunkPclXLEmbeddedData.h"

#include <gtest/gtest.h>

#include "JobParser/Library.h"
#include "JobParser/pclxl/JobChunkPclXLRawWithData.h"
#include "tests/support/ChunkForms.h"

#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace ChunkForms;
using namespace std::string_view_literals;

class JobChunkPclXLEmbeddedDataTest : public testing::Test
{
protected:
    void SetUp() override { Library::init({}); }

    static JobChunkPclXLEmbeddedData ofSize(std::size_t size)
    {
        const auto data = std::make_shared<JobChunkPclXLRawWithData>();
        data->setData(std::vector<std::uint8_t>(size, 'x'));
        JobChunkPclXLEmbeddedData chunk;
        chunk.setData(data);
        return chunk;
    }
};

TEST_F(JobChunkPclXLEmbeddedDataTest, WritesUpTo255BytesBehindALengthOfOneByte)
{
    EXPECT_EQ(saved(ofSize(3)), "\xFB\x03xxx");
    EXPECT_EQ(ofSize(3).size(), 5);
    EXPECT_EQ(saved(ofSize(255)), "\xFB\xFF" + std::string(255, 'x'));
    EXPECT_EQ(ofSize(255).size(), 257);
}

TEST_F(JobChunkPclXLEmbeddedDataTest, WritesMoreBehindALengthOfFourBytes)
{
    EXPECT_EQ(saved(ofSize(256)), std::string("\xFA\0\x01\0\0"sv) + std::string(256, 'x'));
    EXPECT_EQ(ofSize(256).size(), 261);
    EXPECT_EQ(saved(ofSize(0x12345)).substr(0, 5), "\xFA\x45\x23\x01\0"sv);
}

TEST_F(JobChunkPclXLEmbeddedDataTest, IsEmptyWithoutData)
{
    JobChunkPclXLEmbeddedData chunk = ofSize(3);

    chunk.setData(nullptr);

    EXPECT_EQ(chunk.data, nullptr);
    EXPECT_EQ(saved(chunk), "\xFB\0"sv);
    EXPECT_EQ(chunk.size(), 2);
    EXPECT_EQ(dumped(chunk), "Embedded Data: 2\n");
}

TEST_F(JobChunkPclXLEmbeddedDataTest, DumpsItsSizeAndItsData)
{
    JobChunkPclXLEmbeddedData chunk = ofSize(3);

    EXPECT_EQ(dumped(chunk), "Embedded Data: 5\nRaw with data (3 bytes)\n");
}

TEST_F(JobChunkPclXLEmbeddedDataTest, ComesBackFromItsData)
{
    const std::string dto = R"({"data":{"class":"PclXLRawWithDataE","id":2,"dto":{"rawData":"787878"}}})";

    EXPECT_EQ(json(ofSize(3)), dto);
    EXPECT_EQ(json(*made<JobChunkPclXLEmbeddedData>(dto)), dto);
    EXPECT_EQ(json(*made<JobChunkPclXLEmbeddedData>(R"({"data":null})")), R"({"data":null})");
    EXPECT_THROW(made<JobChunkPclXLEmbeddedData>("{}"), Torv::VariantInvalidOperationException);
}

TEST_F(JobChunkPclXLEmbeddedDataTest, TakesTheSizeOfWhateverChunkItsDataNames)
{
    const auto below = made<JobChunkPclXLEmbeddedData>(
        R"({"data":{"class":"PclXLWatermarkE","id":2,"dto":{"size":-5,"chunks":[]}}})");
    const auto above = made<JobChunkPclXLEmbeddedData>(
        R"({"data":{"class":"PclXLWatermarkE","id":2,"dto":{"size":9223372036854775807,"chunks":[]}}})");

    EXPECT_EQ(below->size(), -3);
    EXPECT_EQ(saved(*below), "\xFB\xFB");
    EXPECT_EQ(saved(*above), "\xFA\xFF\xFF\xFF\xFF");
    EXPECT_LT(above->size(), 0) << "the sum wraps";
}

} // namespace
} // namespace JobParser
