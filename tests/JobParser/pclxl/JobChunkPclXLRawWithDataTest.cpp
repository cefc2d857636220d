#include "JobParser/pclxl/JobChunkPclXLRawWithData.h"

#include <gtest/gtest.h>

#include "tests/support/ChunkForms.h"

#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace ChunkForms;
using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& rawData)
{
    return made<JobChunkPclXLRawWithData>(R"({"rawData":")" + rawData + "\"}")->getData();
}

TEST(JobChunkPclXLRawWithData, WritesItsBytes)
{
    JobChunkPclXLRawWithData chunk;
    EXPECT_EQ(saved(chunk), "");
    EXPECT_EQ(chunk.size(), 0);

    chunk.setData({'a', 0, 255});

    EXPECT_EQ(saved(chunk), std::string("a\0\xFF", 3));
    EXPECT_EQ(chunk.size(), 3);
    EXPECT_EQ(dumped(chunk), "Raw with data (3 bytes)\n");
}

TEST(JobChunkPclXLRawWithData, ComesBackFromItsData)
{
    JobChunkPclXLRawWithData chunk;
    chunk.setData({0, 10, 255, 0x7B});

    EXPECT_EQ(json(chunk), R"({"rawData":"000aff7b"})");
    EXPECT_EQ(bytesOf("000aff7b"), (Bytes{0, 10, 255, 0x7B}));
}

TEST(JobChunkPclXLRawWithData, ReadsDigitsInEitherCaseAndAnyOtherCharacterAsZero)
{
    EXPECT_EQ(bytesOf("aFAf09"), (Bytes{0xAF, 0xAF, 0x09}));
    EXPECT_EQ(bytesOf("g1 1x"), (Bytes{0x01, 0x01}));
    EXPECT_EQ(bytesOf("1g--"), (Bytes{0x10, 0x00}));
    EXPECT_EQ(bytesOf("@`/:"), (Bytes{0x00, 0x00}));
    EXPECT_EQ(bytesOf("GgAa"), (Bytes{0x00, 0xAA}));
}

TEST(JobChunkPclXLRawWithData, LeavesOutAnOddDigit)
{
    EXPECT_EQ(bytesOf("123"), (Bytes{0x12}));
    EXPECT_EQ(bytesOf("1"), Bytes{});
    EXPECT_EQ(bytesOf(""), Bytes{});
}

TEST(JobChunkPclXLRawWithData, RefusesDataWithoutAText)
{
    for (const char* dto : {"{}", R"({"rawData":1})", R"({"rawData":null})", R"({"rawData":[1]})"})
        EXPECT_THROW(made<JobChunkPclXLRawWithData>(dto), Torv::VariantInvalidOperationException) << dto;
}

} // namespace
} // namespace JobParser
