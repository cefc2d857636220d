#include "JobParser/model/SerializationContext.h"

#include <gtest/gtest.h>

#include "JobParser/Library.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/Reflection.h"

#include "Torv/GenericException.h"

namespace JobParser
{

/// A chunk that holds another one.
class ChunkHolder : public ChunkUel
{
public:
    std::string toJson(SerializationContext& context) const override
    {
        return "{\"held\":" + context.serializeChunk(held.lock()) + "}";
    }

    std::weak_ptr<IChunk> held;
};

/// Adds to what its base class writes.
class ChunkMarkedRange : public ChunkRawData
{
public:
    using ChunkRawData::ChunkRawData;

    std::string toJson(SerializationContext&) const override { return "{\"mark\":7}"; }
};

class ChunkAppended : public ChunkUel
{
public:
    std::string toJson(SerializationContext&) const override { return "{}"; }
    void appendJson(std::string& json, SerializationContext&) const { json += "{\"appended\":true}"; }
};

namespace
{

class SerializationContextTest : public testing::Test
{
protected:
    void SetUp() override
    {
        Library::init({});
        static const bool isRegistered = (Reflection::registerChunkClass<ChunkHolder>(),
                                          Reflection::registerChunkClass<ChunkMarkedRange>(),
                                          Reflection::registerChunkClass<ChunkAppended>(), true);
        ASSERT_TRUE(isRegistered);
    }

    SerializationContext context;
};

TEST_F(SerializationContextTest, WritesANullPointerAsNull)
{
    EXPECT_EQ(context.serializeChunk(nullptr), "null");
}

TEST_F(SerializationContextTest, NumbersChunksFromTwoOn)
{
    EXPECT_EQ(context.serializeChunk(std::make_shared<ChunkUel>()), R"({"class":"UelE","id":2,"dto":{}})");
    EXPECT_EQ(context.serializeChunk(nullptr), "null");
    EXPECT_EQ(context.serializeChunk(std::make_shared<ChunkRawData>(9, 1000)),
              R"({"class":"RawDataE","id":3,"dto":{"offset":9,"size":1000}})");
}

TEST_F(SerializationContextTest, WritesAChunkOnceAndThenItsNumber)
{
    const auto chunk = std::make_shared<ChunkText>("a");

    EXPECT_EQ(context.serializeChunk(chunk), R"({"class":"TextE","id":2,"dto":{"text":"a"}})");
    EXPECT_EQ(context.serializeChunk(chunk), "2");
    EXPECT_EQ(context.serializeChunk(chunk), "2");
}

TEST_F(SerializationContextTest, TellsChunksOfTheSameContentApart)
{
    context.serializeChunk(std::make_shared<ChunkText>("a"));

    EXPECT_EQ(context.serializeChunk(std::make_shared<ChunkText>("a")),
              R"({"class":"TextE","id":3,"dto":{"text":"a"}})");
}

TEST_F(SerializationContextTest, KeepsWhatItWroteAlive)
{
    auto chunk = std::make_shared<ChunkText>("a");
    const std::weak_ptr<ChunkText> watched = chunk;

    context.serializeChunk(chunk);
    chunk.reset();

    EXPECT_FALSE(watched.expired());
}

TEST_F(SerializationContextTest, GivesTheHolderTheLowerNumber)
{
    const auto inner = std::make_shared<ChunkUel>();
    const auto outer = std::make_shared<ChunkHolder>();
    outer->held = inner;

    EXPECT_EQ(context.serializeChunk(outer),
              R"({"class":"HolderE","id":2,"dto":{"held":{"class":"UelE","id":3,"dto":{}}}})");
    EXPECT_EQ(context.serializeChunk(inner), "3");
}

TEST_F(SerializationContextTest, EndsAChunkThatHoldsItselfWithItsNumber)
{
    const auto chunk = std::make_shared<ChunkHolder>();
    chunk->held = chunk;

    EXPECT_EQ(context.serializeChunk(chunk), R"({"class":"HolderE","id":2,"dto":{"held":2}})");
}

TEST_F(SerializationContextTest, WritesIdsOfAllLengths)
{
    std::string json;
    for (int id = 2; id < 12345; ++id)
        context.appendListed(json, std::make_shared<ChunkUel>());
    json.clear();

    context.appendListed(json, std::make_shared<ChunkUel>());
    context.appendListed(json, std::make_shared<ChunkText>("a"));

    EXPECT_EQ(json, R"({"class":"UelE","id":12345,"dto":{}})"
                    R"({"class":"TextE","id":12346,"dto":{"text":"a"}})");
}

TEST_F(SerializationContextTest, LetsAClassAppendItsData)
{
    EXPECT_EQ(context.serializeChunk(std::make_shared<ChunkAppended>()),
              R"({"class":"AppendedE","id":2,"dto":{"appended":true}})");
}

TEST_F(SerializationContextTest, AsksAClassForItsOwnDataWhateverItsBaseAppends)
{
    EXPECT_EQ(context.serializeChunk(std::make_shared<ChunkMarkedRange>(1, 2)),
              R"({"class":"MarkedRangeE","id":2,"dto":{"mark":7}})");
}

TEST_F(SerializationContextTest, RejectsAChunkOfAClassThatIsNotRegistered)
{
    class ChunkLocal : public ChunkUel
    {
    };

    EXPECT_THROW(context.serializeChunk(std::make_shared<ChunkLocal>()), Torv::GenericException);
}

} // namespace
} // namespace JobParser
