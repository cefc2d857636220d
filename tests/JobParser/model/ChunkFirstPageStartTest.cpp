#include "JobParser/model/ChunkFirstPageStart.h"

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Log/LogString.h"

namespace JobParser
{
namespace
{

TEST(ChunkFirstPageStart, WritesNothing)
{
    const ChunkFirstPageStart chunk;
    JobFile file;
    Torv::IO::StringStream stream;

    chunk.save(file, stream);

    EXPECT_EQ(stream.str(), "");
    EXPECT_EQ(chunk.size(), 0);
}

TEST(ChunkFirstPageStart, HasNoData)
{
    SerializationContext context;

    EXPECT_EQ(ChunkFirstPageStart().toJson(context), "{}");
}

TEST(ChunkFirstPageStart, DumpsALine)
{
    ChunkFirstPageStart chunk;
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "First page start\n");
}

} // namespace
} // namespace JobParser
