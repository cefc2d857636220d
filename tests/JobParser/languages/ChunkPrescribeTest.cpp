#include "JobParser/languages/ChunkPrescribe.h"

#include <gtest/gtest.h>
#include <limits>

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

ChunkPrescribe parsed(const char* dto)
{
    UnserializationContext context;
    return {context, Torv::Json::parse(dto)};
}

TEST(ChunkPrescribe, WritesItsRangeOfTheFile)
{
    OpenJob job("ab!R! EXIT;cd"sv);
    const ChunkPrescribe chunk(2, 9);
    Torv::IO::StringStream stream;

    chunk.save(job.file, stream);

    EXPECT_EQ(stream.str(), "!R! EXIT;");
    EXPECT_EQ(chunk.size(), 9);
}

TEST(ChunkPrescribe, ThrowsForARangeThatRunsPastTheEndOfTheFile)
{
    OpenJob job("!R!"sv);
    Torv::IO::StringStream stream;

    EXPECT_THROW(ChunkPrescribe(1, 5).save(job.file, stream), UnexpectedEndOfFileException);
}

TEST(ChunkPrescribe, KeepsOffsetAndSizeAsData)
{
    SerializationContext context;

    EXPECT_EQ(ChunkPrescribe(5000000000, 17).toJson(context), R"({"ofs":5000000000,"size":17})");
}

TEST(ChunkPrescribe, IsReadBackAsSixtyFourBits)
{
    const ChunkPrescribe chunk = parsed(R"({"ofs":-9223372036854775808,"size":9223372036854775807})");

    EXPECT_EQ(chunk.ofs, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(chunk.size(), 9223372036854775807);
}

TEST(ChunkPrescribe, RejectsDataThatMakeNoSenseWhenItIsRead)
{
    EXPECT_THROW(parsed(R"({"ofs":0,"size":-1})"), JobParserException);
    for (const char* dto : {"{}", R"({"ofs":1})", R"({"size":1})", R"({"ofs":"1","size":1})", "[]"})
        EXPECT_THROW(parsed(dto), Torv::VariantInvalidOperationException) << dto;
}

TEST(ChunkPrescribe, DumpsALineWithItsSize)
{
    ChunkPrescribe chunk(0, 123);
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "Prescribe (123 bytes)\n");
}

} // namespace
} // namespace JobParser
