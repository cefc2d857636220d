#include "JobParser/xps/ChunkXps.h"

#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "JobParser/model/UnserializationContext.h"
#include "tests/support/OpenJob.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

ChunkXps parsed(const char* dto)
{
    UnserializationContext context;
    return {context, Torv::Json::parse(dto)};
}

TEST(ChunkXps, WritesItsRangeOfTheFile)
{
    OpenJob job("abcdef"sv);
    const ChunkXps chunk(2, 3);
    Torv::IO::StringStream stream;

    chunk.save(job.file, stream);

    EXPECT_EQ(stream.str(), "cde");
    EXPECT_EQ(chunk.size(), 3);
}

TEST(ChunkXps, KeepsOffsetAndSizeAsData)
{
    SerializationContext context;

    EXPECT_EQ(ChunkXps(9, 1000).toJson(context), R"({"offset":9,"size":1000})");
    EXPECT_EQ(ChunkXps(5000000000, 6000000000).toJson(context), R"({"offset":5000000000,"size":6000000000})");
}

TEST(ChunkXps, IsReadBackAsSixtyFourBits)
{
    const ChunkXps chunk = parsed(R"({"offset":5000000000,"size":9223372036854775807})");

    EXPECT_EQ(chunk.offset, 5000000000);
    EXPECT_EQ(chunk.size(), 9223372036854775807);
}

TEST(ChunkXps, RejectsANegativeSizeWhenItIsRead)
{
    EXPECT_THROW(parsed(R"({"offset":0,"size":-1})"), JobParserException);
    EXPECT_THROW(parsed(R"({"offset":0,"size":-9223372036854775808})"), JobParserException);
    EXPECT_EQ(parsed(R"({"offset":0,"size":0})").size(), 0);
}

TEST(ChunkXps, RejectsDataWithoutOffsetOrSize)
{
    for (const char* dto :
         {"{}", R"({"offset":1})", R"({"size":1})", R"({"offset":"1","size":1})",
          R"({"offset":1,"size":null})", R"({"offset":1,"size":18446744073709551615})", "[]"})
        EXPECT_THROW(parsed(dto), Torv::VariantInvalidOperationException) << dto;
}

TEST(ChunkXps, ThrowsForARangeThatRunsPastTheEndOfTheFile)
{
    OpenJob job("abcdef"sv);
    Torv::IO::StringStream stream;

    EXPECT_THROW(ChunkXps(2, 5).save(job.file, stream), UnexpectedEndOfFileException);
}

TEST(ChunkXpsDeathTest, FailsTheAssertionOfTheFileForARangeOutside)
{
    OpenJob job("abcdef"sv);
    Torv::IO::StringStream stream;

    EXPECT_DEATH(ChunkXps(7, 1).save(job.file, stream), "ofs >= 0 && ofs <= m_realDataSize");
    EXPECT_DEATH(ChunkXps(-1, 1).save(job.file, stream), "ofs >= 0 && ofs <= m_realDataSize");
}

TEST(ChunkXps, DumpsItsSize)
{
    ChunkXps chunk(3, 5000000000);
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "XPS Raw (5000000000 bytes)\n");
}

} // namespace
} // namespace JobParser
