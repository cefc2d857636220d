#include "JobParser/languages/ChunkPjlCmdBase64String.h"

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"

using JobParser::ChunkPjlCmdBase64String;

namespace
{

ChunkPjlCmdBase64String fromJson(const std::string& text)
{
    JobParser::UnserializationContext context;
    return ChunkPjlCmdBase64String(context, Torv::Json::parse(text));
}

std::string json(const JobParser::IChunk& chunk)
{
    JobParser::SerializationContext context;
    return chunk.toJson(context);
}

} // namespace

TEST(ChunkPjlCmdBase64String, ReadsItsParameterFromBase64)
{
    const ChunkPjlCmdBase64String chunk = fromJson(R"({"cmd":"SET","param":"TkFNRT3k"})");

    EXPECT_EQ(chunk.cmd, "SET");
    EXPECT_EQ(chunk.param, "NAME=\xE4");
}

TEST(ChunkPjlCmdBase64String, ReadsWhatIsNoBase64UpToThere)
{
    EXPECT_EQ(fromJson(R"({"cmd":"SET","param":"QUJD*QUJD"})").param, "ABC");
    EXPECT_EQ(fromJson(R"({"cmd":"SET","param":""})").param, "");
}

TEST(ChunkPjlCmdBase64String, WritesItsParameterAsBase64)
{
    EXPECT_EQ(json(fromJson(R"({"param":"TkFNRT3k","cmd":"SET"})")), R"({"cmd":"SET","param":"TkFNRT3k"})");
}

TEST(ChunkPjlCmdBase64String, SavesAndDumpsLikeAnyCommand)
{
    ChunkPjlCmdBase64String chunk = fromJson(R"({"cmd":"SET","param":"QT0x"})");
    JobParser::JobFile noFile;
    Torv::IO::StringStream stream;
    Torv::Log::LogString log;

    chunk.save(noFile, stream);
    chunk.dump(log);

    EXPECT_EQ(stream.str(), "@PJL SET A=1\r\n");
    EXPECT_EQ(chunk.size(), 14);
    EXPECT_EQ(log.getAndClear(), "@PJL SET A=1\n");
}

TEST(ChunkPjlCmdBase64String, RejectsJsonWithoutItsTwoStrings)
{
    for (const char* text : {R"({"cmd":"A"})", R"({"param":"QQ=="})", R"({"cmd":"A","param":5})"})
        EXPECT_THROW(fromJson(text), Torv::VariantInvalidOperationException) << text;
}
