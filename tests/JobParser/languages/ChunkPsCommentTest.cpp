#include "JobParser/languages/ChunkPsComment.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "JobParser/model/SerializationContext.h"
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

using namespace std::string_literals;
using namespace std::string_view_literals;

std::string saved(const ChunkPsComment& chunk)
{
    OpenJob job(""sv);
    Torv::IO::StringStream stream;
    chunk.save(job.file, stream);
    return stream.str();
}

ChunkPsComment parsed(const std::string& dto)
{
    UnserializationContext context;
    return {context, Torv::Json::parse(dto)};
}

std::string dumped(const std::string& text)
{
    Torv::Log::LogString log;
    ChunkPsComment(text).dump(log);
    return log.getAndClear();
}

TEST(ChunkPsComment, WritesItsTextWithTheLineEnds)
{
    for (const char* text : {"%%EOF\n", "%%Pages: 3\r\n", "%%\r\r\n\n", "%%EOF", "", "%%\x80\xFF\n"}) {
        const ChunkPsComment chunk{std::string(text)};

        EXPECT_EQ(saved(chunk), text);
        EXPECT_EQ(chunk.size(), static_cast<std::int64_t>(std::string_view(text).size()));
    }
}

TEST(ChunkPsComment, WritesNothingFromAZeroByteOn)
{
    const ChunkPsComment chunk("%%a\0b\n"s);

    EXPECT_EQ(saved(chunk), "%%a");
    EXPECT_EQ(chunk.size(), 6);
    EXPECT_EQ(saved(ChunkPsComment("\0abc"s)), "");
}

TEST(ChunkPsComment, KeepsItsTextAsData)
{
    SerializationContext context;

    EXPECT_EQ(ChunkPsComment("%%Title: \"a\"\r\n"s).toJson(context), R"({"comment":"%%Title: \"a\"\r\n"})");
}

TEST(ChunkPsComment, IsReadBackFromItsData)
{
    EXPECT_EQ(parsed(R"({"comment":"%%Title: \"a\"\r\n"})").comment, "%%Title: \"a\"\r\n");
    EXPECT_EQ(parsed(R"({"comment":""})").comment, "");
}

TEST(ChunkPsComment, RejectsDataWithoutAText)
{
    for (const char* dto : {"{}", R"({"comment":1})", R"({"Comment":"a"})", "[]"})
        EXPECT_THROW(parsed(dto), Torv::VariantInvalidOperationException) << dto;
}

TEST(ChunkPsComment, DumpsItsTextWithoutTheWhiteSpaceAroundIt)
{
    EXPECT_EQ(dumped("%%EOF\r\n"), "%%EOF\n");
    EXPECT_EQ(dumped(" \t%%Pages: 3 \n"), "%%Pages: 3\n");
}

} // namespace
} // namespace JobParser
