#include "JobParser/model/Reflection.h"

#include <array>
#include <gtest/gtest.h>

#include "JobParser/Library.h"
#include "JobParser/model/ChunkFirstPageStart.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/UnserializationContext.h"
#include "tests/support/MessageOf.h"

#include "Torv/Json/Json.h"
#include "Torv/NoFactoryException.h"

namespace JobParser
{

class ChunkOfNobody : public ChunkUel
{
};
class JobChunkOfChunkTest : public ChunkUel
{
};
class Nameless : public ChunkUel
{
};

namespace
{

TEST(Reflection, FindsTheNameBehindTheLastChunkOfAClassName)
{
    struct Row {
        std::string_view className;
        std::string_view name;
    };
    constexpr std::array<Row, 17> rows{{
        {"N9JobParser8ChunkUelE", "UelE"},
        {"N9JobParser17JobChunkPclXLRawE", "PclXLRawE"},
        {"N3Pdf8ChunkPdfE", "PdfE"},
        {"JobParser::ChunkText", "Text"},
        {"class JobParser::ChunkText", "Text"},
        {"ChunkChunkText", "Text"},
        {"ChunkChunk", "Chunk"},
        {"Chunk_1a", "_1a"},
        {"ChunkText::Inner", ""},
        {"Chunk", ""},
        {"JobParser::Chunk", ""},
        {"JobParser::Text", ""},
        {"chunkText", ""},
        {"ChunkText ", ""},
        {"", ""},
        {"a:\nChunkText", ""},
        {"a:\rChunkText", ""},
    }};

    for (const Row& row : rows)
        EXPECT_EQ(Reflection::nameBehindChunk(row.className), row.name) << row.className;
}

TEST(Reflection, RejectsAClassWithoutChunkInItsName)
{
    EXPECT_EQ(messageOf([] { Reflection::registerChunkClass<Nameless>(); }),
              "Invalid chunk class. It must be ZZZChunkYYY. | class=N9JobParser8NamelessE");
}

TEST(Reflection, RejectsAClassThatIsRegistered)
{
    Library::init({});

    EXPECT_EQ(messageOf([] { Reflection::registerChunkClass<ChunkUel>(); }),
              "Duplicate chunk class. | class=N9JobParser8ChunkUelE");
    EXPECT_EQ(Reflection::chunkClass(ChunkUel()), "UelE");
}

TEST(Reflection, RejectsAChunkWhoseClassIsNotRegistered)
{
    Library::init({});

    EXPECT_EQ(messageOf([] { Reflection::chunkClass(ChunkOfNobody()); }),
              "Chunk class is not registered | class=N9JobParser13ChunkOfNobodyE");
}

TEST(Reflection, RejectsATagThatNobodyHas)
{
    Library::init({});

    EXPECT_THROW(Reflection::factory("Uel"), Torv::NoFactoryException);
    EXPECT_EQ(messageOf([] { Reflection::factory("Uel"); }), "Factory: no factory for the reference Uel");
}

TEST(Reflection, MakesChunksOfARegisteredClass)
{
    static const bool isRegistered = (Reflection::registerChunkClass<JobChunkOfChunkTest>(), true);
    UnserializationContext context;

    const auto chunk = Reflection::factory("TestE")(context, Torv::Json::parse("{}"));

    EXPECT_TRUE(isRegistered);
    EXPECT_NE(dynamic_cast<JobChunkOfChunkTest*>(chunk.get()), nullptr);
    EXPECT_EQ(Reflection::chunkClass(*chunk), "TestE");
}

TEST(Reflection, HasTheTagsThatStandInStoredFiles)
{
    Library::init({});

    EXPECT_EQ(Reflection::chunkClass(ChunkUel()), "UelE");
    EXPECT_EQ(Reflection::chunkClass(ChunkFormFeed()), "FormFeedE");
    EXPECT_EQ(Reflection::chunkClass(ChunkFirstPageStart()), "FirstPageStartE");
    EXPECT_EQ(Reflection::chunkClass(ChunkRawData(0, 0)), "RawDataE");
    EXPECT_EQ(Reflection::chunkClass(ChunkText("")), "TextE");
}

} // namespace
} // namespace JobParser
