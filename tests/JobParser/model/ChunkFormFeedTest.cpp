#include "JobParser/model/ChunkFormFeed.h"

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Log/LogString.h"

namespace JobParser
{
namespace
{

TEST(ChunkFormFeed, WritesItsByte)
{
    const ChunkFormFeed chunk;
    JobFile file;
    Torv::IO::StringStream stream;

    chunk.save(file, stream);

    EXPECT_EQ(stream.str(), "\x0C");
    EXPECT_EQ(chunk.size(), 1);
}

TEST(ChunkFormFeed, HasNoData)
{
    SerializationContext context;

    EXPECT_EQ(ChunkFormFeed().toJson(context), "{}");
}

TEST(ChunkFormFeed, DumpsALine)
{
    ChunkFormFeed chunk;
    Torv::Log::LogString log;

    chunk.dump(log);

    EXPECT_EQ(log.getAndClear(), "Form Feed\n");
}

} // namespace
} // namespace JobParser
