#include "JobParser/model/ChunkUel.h"

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Log/LogString.h"

namespace JobParser
{
namespace
{

TEST(ChunkUel, WritesItsNineBytes)
{
    const ChunkUel chunk;
    JobFile file;
    Torv::IO::StringStream stream;

    chunk.save(file, stream);

    EXPECT_EQ(stream.str(), "\x1B%-12345X");
    EXPECT_EQ(chunk.size(), 9);
}

TEST(ChunkUel, HasNoData)
{
    SerializationContext context;

    EXPECT_EQ(ChunkUel().toJson(context), "{}");
}

TEST(ChunkUel, DumpsALine)
{
    ChunkUel chunk;
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "UEL\n");
}

} // namespace
} // namespace JobParser
