#include "JobParser/model/ChunkText.h"

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;

TEST(ChunkText, WritesItsBytes)
{
    const ChunkText chunk("a\0b\xFF\r\n"s);
    JobFile file;
    Torv::IO::StringStream stream;

    chunk.save(file, stream);

    EXPECT_EQ(stream.str(), "a\0b\xFF\r\n"s);
    EXPECT_EQ(chunk.size(), 6);
}

TEST(ChunkText, MayBeEmpty)
{
    const ChunkText chunk("");
    JobFile file;
    Torv::IO::StringStream stream;

    chunk.save(file, stream);

    EXPECT_EQ(stream.str(), "");
    EXPECT_EQ(chunk.size(), 0);
}

TEST(ChunkText, KeepsItsTextAsData)
{
    SerializationContext context;

    EXPECT_EQ(ChunkText("a\"b").toJson(context), R"({"text":"a\"b"})");
}

TEST(ChunkText, IsReadBackByteForByte)
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    SerializationContext writing;
    UnserializationContext reading;

    const ChunkText chunk(reading, Torv::Json::parse(ChunkText(bytes).toJson(writing)));

    EXPECT_EQ(chunk.text, bytes);
}

TEST(ChunkText, RejectsDataWithoutText)
{
    UnserializationContext context;

    for (const char* dto : {"{}", R"({"text":1})", R"({"text":null})", "[]", "null"})
        EXPECT_THROW(ChunkText(context, Torv::Json::parse(dto)), Torv::VariantInvalidOperationException)
            << dto;
}

TEST(ChunkText, DumpsALine)
{
    ChunkText chunk("secret");
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "Text\n");
}

} // namespace
} // namespace JobParser
