#include "JobParser/model/UnserializationContext.h"

#include <array>
#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"

#include "Torv/Json/Json.h"
#include "Torv/NoFactoryException.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

class UnserializationContextTest : public testing::Test
{
protected:
    void SetUp() override { Library::init({}); }

    std::shared_ptr<IChunk> chunkOf(const std::string& json)
    {
        return context.unserializeChunk(Torv::Json::parse(json));
    }

    std::string failureOf(const std::string& json)
    {
        try {
            chunkOf(json);
        } catch (const JobParserException& error) {
            return error.what();
        }
        return "none";
    }

    UnserializationContext context;
};

TEST_F(UnserializationContextTest, ReadsNullAsANullPointer)
{
    EXPECT_EQ(chunkOf("null"), nullptr);
}

TEST_F(UnserializationContextTest, MakesAChunkFromItsDefinition)
{
    const auto chunk = chunkOf(R"({"class":"RawDataE","id":2,"dto":{"offset":9,"size":1000}})");

    const auto* raw = dynamic_cast<ChunkRawData*>(chunk.get());
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(raw->offset, 9);
    EXPECT_EQ(raw->size(), 1000);
}

TEST_F(UnserializationContextTest, MakesAnEmptyChunkWhateverItsData)
{
    EXPECT_NE(dynamic_cast<ChunkUel*>(chunkOf(R"({"class":"UelE","id":2,"dto":{}})").get()), nullptr);
    EXPECT_NE(dynamic_cast<ChunkUel*>(chunkOf(R"({"class":"UelE","id":3,"dto":null})").get()), nullptr);
}

TEST_F(UnserializationContextTest, ResolvesAReferenceToTheSameObject)
{
    const auto chunk = chunkOf(R"({"class":"UelE","id":-7,"dto":{}})");

    EXPECT_EQ(chunkOf("-7"), chunk);
    EXPECT_EQ(chunkOf("-7"), chunk);
}

TEST_F(UnserializationContextTest, KeepsTheFirstChunkOfANumberThatStandsTwice)
{
    const auto first = chunkOf(R"({"class":"TextE","id":2,"dto":{"text":"1"}})");
    const auto second = chunkOf(R"({"class":"TextE","id":2,"dto":{"text":"2"}})");

    EXPECT_NE(first, second);
    EXPECT_EQ(chunkOf("2"), first);
}

TEST_F(UnserializationContextTest, KeepsTheFirstChunkOfANumberThatStoodBeforeItsTurn)
{
    const auto first = chunkOf(R"({"class":"UelE","id":3,"dto":{}})");
    chunkOf(R"({"class":"UelE","id":2,"dto":{}})");
    chunkOf(R"({"class":"UelE","id":3,"dto":{}})");

    EXPECT_EQ(chunkOf("3"), first);
}

TEST_F(UnserializationContextTest, RejectsAReferenceToAChunkThatWasNotMade)
{
    EXPECT_EQ(failureOf("5"), "Unknown chunk ID | id=5");
    EXPECT_EQ(failureOf("-1"), "Unknown chunk ID | id=-1");
    EXPECT_EQ(failureOf("4294967298"), "Unknown chunk ID | id=4294967298");
    chunkOf(R"({"class":"UelE","id":2,"dto":{}})");
    EXPECT_EQ(failureOf("4294967298"), "Unknown chunk ID | id=4294967298");
}

TEST_F(UnserializationContextTest, RejectsValuesThatAreNoChunk)
{
    for (const char* json : {"\"text\"", "true", "[]", "1.5"})
        EXPECT_EQ(failureOf(json), "Cannot unserialize chunk. Chunk must be a map") << json;
}

TEST_F(UnserializationContextTest, RejectsDefinitionsWithMissingOrWrongKeys)
{
    for (const char* json :
         {"{}", R"({"id":2,"dto":{}})", R"({"class":"UelE","dto":{}})", R"({"class":"UelE","id":2})",
          R"({"class":1,"id":2,"dto":{}})", R"({"class":"UelE","id":"2","dto":{}})",
          R"({"class":"UelE","id":null,"dto":{}})", R"({"class":"UelE","id":4294967298,"dto":{}})"})
        EXPECT_THROW(chunkOf(json), Torv::VariantInvalidOperationException) << json;
}

TEST_F(UnserializationContextTest, RejectsAnUnknownClass)
{
    EXPECT_THROW(chunkOf(R"({"class":"NobodyE","id":2,"dto":{}})"), Torv::NoFactoryException);
    EXPECT_THROW(chunkOf(R"({"class":"","id":2,"dto":{}})"), Torv::NoFactoryException);
    EXPECT_THROW(chunkOf(R"({"class":"JobParser::ChunkText","id":2,"dto":{"text":""}})"),
                 Torv::NoFactoryException);
}

TEST_F(UnserializationContextTest, RegistersNoChunkWhoseDataIsRejected)
{
    EXPECT_THROW(chunkOf(R"({"class":"RawDataE","id":2,"dto":{"offset":0,"size":-1}})"), JobParserException);

    EXPECT_EQ(failureOf("2"), "Unknown chunk ID | id=2");
}

std::string group(int id, const std::string& chunks)
{
    return R"({"class":"PclXLWatermarkE","id":)" + std::to_string(id) + R"(,"dto":{"size":0,"chunks":[)" +
           chunks + "]}}";
}

TEST_F(UnserializationContextTest, HoldsBackChunksThatHoldEachOtherTooDeep)
{
    chunkOf(group(2, ""));
    for (int id = 3; id <= 65; ++id)
        chunkOf(group(id, std::to_string(id - 1)));

    EXPECT_EQ(failureOf(group(66, "65")), "Chunks in metadata nest too deep");
    EXPECT_EQ(failureOf(group(67, "64")), "none") << "64 levels are allowed";
    EXPECT_EQ(failureOf("65"), "none");
}

TEST_F(UnserializationContextTest, CountsTheLevelsOfTheDeepestChunkAmongOthers)
{
    chunkOf(group(2, ""));
    chunkOf(group(100, ""));
    for (int id = 3; id <= 65; ++id)
        chunkOf(group(id, "100," + std::to_string(id - 1) + ",100"));

    EXPECT_EQ(failureOf(group(66, "100,65,100")), "Chunks in metadata nest too deep");
}

TEST_F(UnserializationContextTest, HoldsBackReferencesThatStandForTooManyChunks)
{
    chunkOf(group(2, ""));
    int id = 3;
    std::string failure;
    for (; id < 60 && failure != "References in metadata stand for too many chunks"; ++id)
        failure = failureOf(group(id, std::to_string(id - 1) + "," + std::to_string(id - 1)));

    // Each holds twice what the one before it holds.
    EXPECT_EQ(id, 26);
}

TEST_F(UnserializationContextTest, AllowsAnyNumberOfReferencesToAChunkThatHoldsNone)
{
    chunkOf(R"({"class":"UelE","id":2,"dto":{}})");
    std::string references = "2";
    for (int count = 1; count < 100000; ++count)
        references += ",2";

    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(failureOf(group(10 + round, references)), "none");
}

/// "7,7,7" for 7 and 3.
std::string repeated(int id, int count)
{
    std::string list = std::to_string(id);
    for (int index = 1; index < count; ++index)
        list += "," + std::to_string(id);
    return list;
}

TEST_F(UnserializationContextTest, AllowsContentThatStandsOnEachOfManyPages)
{
    chunkOf(R"({"class":"UelE","id":2,"dto":{}})");
    chunkOf(group(3, repeated(2, 4095)));

    for (int page = 0; page < 100000; ++page)
        ASSERT_EQ(failureOf("3"), "none") << page;
}

TEST_F(UnserializationContextTest, CountsAllButTheFirst4096ChunksOfAReference)
{
    chunkOf(R"({"class":"UelE","id":2,"dto":{}})");
    chunkOf(group(3, repeated(2, 4095)));
    chunkOf(group(4, repeated(3, 4096)));
    chunkOf(group(5, repeated(2, 4096)));
    chunkOf(group(6, repeated(2, 8190)));

    EXPECT_EQ(failureOf("4"), "none") << "16773121 count";
    EXPECT_EQ(failureOf("6"), "none") << "4095 count, which is all that is allowed";
    EXPECT_EQ(failureOf("3"), "none") << "none counts";
    EXPECT_EQ(failureOf("5"), "References in metadata stand for too many chunks");
}

TEST_F(UnserializationContextTest, TakesATagFromAFullClassName)
{
    EXPECT_NE(dynamic_cast<ChunkUel*>(chunkOf(R"({"class":"::ChunkUelE","id":2,"dto":{}})").get()), nullptr);
}

TEST(UnserializationContext, LooksUpTagsAsTheyAreAndClassNamesByTheirLastPart)
{
    constexpr std::array<std::array<const char*, 2>, 6> rows{{{"TextE", "TextE"},
                                                              {"", ""},
                                                              {"no tag at all", "no tag at all"},
                                                              {"JobParser::ChunkText", "Text"},
                                                              {"JobParser::JobChunkPclXLRaw", "PclXLRaw"},
                                                              {"A:ChunkB:ChunkC", "C"}}};

    for (const auto& [name, tag] : rows)
        EXPECT_EQ(UnserializationContext::processChunkClass(name), tag);
}

TEST(UnserializationContext, RejectsClassNamesWithoutChunk)
{
    for (const std::string name :
         {"JobParser::Text", ":", "JobParser::Chunk", "ChunkText:", "JobParser::\nChunkText"}) {
        try {
            UnserializationContext::processChunkClass(name);
            FAIL() << name;
        } catch (const JobParserException& error) {
            EXPECT_EQ(error.what(), "Unknown chunk class name | name=" + name);
        }
    }
}

} // namespace
} // namespace JobParser
