#include "pdf/ChunkPdf.h"

#include <gtest/gtest.h>

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

ChunkPdf parsed(const char* dto)
{
    UnserializationContext context;
    return {context, Torv::Json::parse(dto)};
}

TEST(ChunkPdf, SavesItsBytes)
{
    OpenJob job("");
    const ChunkPdf chunk = parsed(R"({"pdf":"%PDF\u0000\n"})");
    Torv::IO::StringStream stream;

    chunk.save(job.file, stream);

    EXPECT_EQ(stream.str(), std::string("%PDF\0\n", 6));
    EXPECT_EQ(chunk.size(), 6);
}

TEST(ChunkPdf, KeepsItsBytesAsData)
{
    SerializationContext context;

    EXPECT_EQ(parsed(R"({"pdf":"a\"b"})").toJson(context), R"({"pdf":"a\"b"})");
}

TEST(ChunkPdf, NeedsItsBytes)
{
    EXPECT_THROW(parsed("{}"), Torv::VariantInvalidOperationException);
    EXPECT_THROW(parsed(R"({"pdf":1})"), Torv::VariantInvalidOperationException);
}

TEST(ChunkPdf, DumpsALine)
{
    ChunkPdf chunk = parsed(R"({"pdf":""})");
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "PdfChunk\n");
}

} // namespace
} // namespace JobParser
