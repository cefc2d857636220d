#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

#include "JobParser/Job.h"
#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/model/ChunkFirstPageStart.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"
#include "tests/support/SparseFile.h"

#include "Torv/GenericException.h"
#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/NoFactoryException.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

constexpr const char* defaultInfo =
    R"({"version":1,"pjl":false,"pdl":null,"paper":null,"monoCount":null,"grayCount":null,"colorCount":null,)"
    R"("duplex":null,"copies":null,"forceMono":null,"stapling":null,"punching":null,"orientation":null,)"
    R"("ecoMode":null,"ecoMode":null,"pagesPerSheet":null,"originalBrand":null})";

std::string withChunks(const std::string& chunks)
{
    return std::string(R"({"jobInfo":)") + defaultInfo + R"(,"chunks":[)" + chunks + "]}";
}

Job parsed(const std::string& json)
{
    return Job(Torv::Json::parse(json));
}

class JobMetadata : public testing::Test
{
protected:
    void SetUp() override { Library::init({}); }
};

TEST_F(JobMetadata, OfAnEmptyJobIsReadBackAsAnEmptyJob)
{
    EXPECT_EQ(Job().toJson(), withChunks(""));

    const Job job = parsed(withChunks(""));

    EXPECT_TRUE(job.chunks.empty());
    EXPECT_FALSE(job.modified);
    EXPECT_EQ(job.toJson(), withChunks(""));
}

TEST_F(JobMetadata, HoldsTheChunksInOrder)
{
    Job job;
    job.appendChunk(std::make_shared<ChunkUel>());
    job.appendChunk(std::make_shared<ChunkRawData>(9, 1000));
    job.appendChunk(std::make_shared<ChunkPjlCmd>("SET", "COPIES=2"));
    job.appendChunk(std::make_shared<ChunkText>("a\nb"));
    job.appendChunk(std::make_shared<ChunkFormFeed>());
    job.appendChunk(std::make_shared<ChunkFirstPageStart>());

    EXPECT_EQ(job.toJson(), withChunks(R"({"class":"UelE","id":2,"dto":{}},)"
                                       R"({"class":"RawDataE","id":3,"dto":{"offset":9,"size":1000}},)"
                                       R"({"class":"PjlCmdE","id":4,"dto":{"cmd":"SET","param":"COPIES=2"}},)"
                                       R"({"class":"TextE","id":5,"dto":{"text":"a\nb"}},)"
                                       R"({"class":"FormFeedE","id":6,"dto":{}},)"
                                       R"({"class":"FirstPageStartE","id":7,"dto":{}})"));
    EXPECT_TRUE(job.modified);
    EXPECT_EQ(parsed(job.toJson()).toJson(), job.toJson());
}

TEST_F(JobMetadata, NumbersChunksAnewEachTime)
{
    Job job;
    job.appendChunk(std::make_shared<ChunkUel>());

    const std::string first = job.toJson();

    EXPECT_EQ(job.toJson(), first);
}

TEST_F(JobMetadata, StoresAChunkThatStandsTwiceOnce)
{
    Job job;
    const auto uel = std::make_shared<ChunkUel>();
    job.appendChunks({uel, uel});
    EXPECT_EQ(job.toJson(), withChunks(R"({"class":"UelE","id":2,"dto":{}},2)"));

    const Job readBack = parsed(job.toJson());

    ASSERT_EQ(readBack.chunks.size(), 2U);
    EXPECT_EQ(readBack.chunks[0], readBack.chunks[1]);
}

TEST_F(JobMetadata, KeepsNullChunks)
{
    const Job job = parsed(withChunks(R"(null,{"class":"UelE","id":2,"dto":{}},null)"));

    ASSERT_EQ(job.chunks.size(), 3U);
    EXPECT_EQ(job.chunks[0], nullptr);
    EXPECT_NE(job.chunks[1], nullptr);
    EXPECT_EQ(job.size(), 9);
    EXPECT_EQ(job.toJson(), withChunks(R"(null,{"class":"UelE","id":2,"dto":{}},null)"));
}

TEST_F(JobMetadata, HoldsTheRecordWithFonts)
{
    Job job;
    job.jobInfo.setCopies(3);
    job.jobInfo.setPjl(true);
    job.jobInfo.addFonts({"Arial", "Caf\xC3\xA9"});

    const Job readBack = parsed(job.toJson());

    EXPECT_EQ(readBack.jobInfo.toJsonFull(), job.jobInfo.toJsonFull());
    EXPECT_EQ(readBack.jobInfo.fonts, (std::set<std::string>{"Arial", "Caf\xC3\xA9"}));
    EXPECT_EQ(readBack.jobInfo.copies, 3);
}

TEST_F(JobMetadata, AppendsToTheChunksThatAreThere)
{
    Job job;
    job.fillFrom(Torv::Json::parse(withChunks(R"({"class":"UelE","id":2,"dto":{}})")));

    EXPECT_EQ(job.chunks.size(), 1U);
    EXPECT_FALSE(job.modified);
}

TEST_F(JobMetadata, TakesARecordThatIsNoObjectAsUnknown)
{
    EXPECT_EQ(parsed(R"({"jobInfo":null,"chunks":[]})").toJson(), withChunks(""));
}

TEST_F(JobMetadata, RejectsWhatHasNotBothParts)
{
    for (const char* json :
         {"{}", R"({"jobInfo":{}})", R"({"chunks":[]})", R"({"jobInfo":{},"chunks":null})",
          R"({"jobInfo":{},"chunks":{}})", R"({"jobInfo":{"copies":"2"},"chunks":[]})", "[]", "null"})
        EXPECT_THROW(parsed(json), Torv::VariantInvalidOperationException) << json;
}

TEST_F(JobMetadata, RejectsChunksThatMakeNoSense)
{
    EXPECT_THROW(parsed(withChunks("5")), JobParserException);
    EXPECT_THROW(parsed(withChunks(R"(2,{"class":"UelE","id":2,"dto":{}})")), JobParserException);
    EXPECT_THROW(parsed(withChunks("\"UelE\"")), JobParserException);
    EXPECT_THROW(parsed(withChunks("[]")), JobParserException);
    EXPECT_THROW(parsed(withChunks(R"({"class":"RawDataE","id":2,"dto":{"offset":0,"size":-1}})")),
                 JobParserException);
    EXPECT_THROW(parsed(withChunks(R"({"class":"UelX","id":2,"dto":{}})")), Torv::NoFactoryException);
}

TEST_F(JobMetadata, RejectsAChunkOfAClassThatIsNotRegistered)
{
    class ChunkLocal : public ChunkUel
    {
    };
    Job job;
    job.appendChunk(std::make_shared<ChunkLocal>());

    EXPECT_THROW(job.toJson(), Torv::GenericException);
    Torv::IO::StringStream stream;
    EXPECT_THROW(job.writeMetadata(stream), Torv::GenericException);
}

/// Keeps what is written, and the size of the largest piece.
class PieceStream : public Torv::IO::StringStream
{
public:
    void write(const void* data, std::uint32_t size) override
    {
        largest = std::max(largest, size);
        StringStream::write(data, size);
    }

    std::uint32_t largest = 0;
};

TEST_F(JobMetadata, IsWrittenToAStreamAsItIsGivenAsAText)
{
    Job job;
    job.appendChunk(std::make_shared<ChunkUel>());
    job.appendChunk(nullptr);
    job.appendChunk(std::make_shared<ChunkRawData>(9, 1000));
    Torv::IO::StringStream stream;

    job.writeMetadata(stream);

    EXPECT_EQ(stream.str(), withChunks(R"({"class":"UelE","id":2,"dto":{}},null,)"
                                       R"({"class":"RawDataE","id":3,"dto":{"offset":9,"size":1000}})"));
}

TEST_F(JobMetadata, OfManyChunksIsWrittenInSmallPieces)
{
    Job job;
    const auto shared = std::make_shared<ChunkText>("stands in all pieces");
    for (std::int64_t i = 0; i < 10000; ++i) {
        job.appendChunk(std::make_shared<ChunkRawData>(i, 1));
        job.appendChunk(shared);
    }
    PieceStream stream;

    job.writeMetadata(stream);

    EXPECT_EQ(stream.str(), job.toJson());
    EXPECT_GT(stream.str().size(), 500000U);
    EXPECT_LT(stream.largest, 66000U);
}

TEST_F(JobMetadata, WithALongChunkIsWrittenWhole)
{
    Job job;
    job.appendChunk(std::make_shared<ChunkText>(std::string(300000, 'x')));
    job.appendChunk(std::make_shared<ChunkRawData>(0, 1));
    job.appendChunk(std::make_shared<ChunkText>("short again"));
    Torv::IO::StringStream stream;

    job.writeMetadata(stream);

    EXPECT_EQ(stream.str(), job.toJson());
}

TEST(JobMetadataPath, HasTheSuffixOnce)
{
    constexpr std::array<std::array<const char*, 2>, 12> rows{{
        {"/a/job.prn", "/a/job.prn.meta.json"},
        {"/a/job.meta.json", "/a/job.meta.json"},
        {"/a/job.meta.json.old", "/a/job.meta.json.old.meta.json"},
        {".meta.json", ".meta.json"},
        {"a.meta.json.meta.json", "a.meta.json.meta.json"},
        {"a.meta.json/b", "a.meta.json/b.meta.json"},
        {"job.META.JSON", "job.META.JSON.meta.json"},
        {"12345.prn", "12345.prn"},
        {"meta.json", "meta.json"},
        {"1234.prn", "1234.prn.meta.json"},
        {"123456.prn", "123456.prn.meta.json"},
        {"", ".meta.json"},
    }};

    for (const auto& [path, metadata] : rows)
        EXPECT_EQ(Job::getMedataFile(path), metadata) << path;
}

/// A file with the metadata of a job that has no file of its own.
class MetadataFile
{
public:
    explicit MetadataFile(const std::string& json) : m_path(m_place.path() + ".meta.json")
    {
        std::ofstream(m_path, std::ios::binary) << json;
    }
    ~MetadataFile() { std::remove(m_path.c_str()); }
    MetadataFile(const MetadataFile&) = delete;
    MetadataFile& operator=(const MetadataFile&) = delete;

    const std::string& jobPath() const { return m_place.path(); }
    const std::string& path() const { return m_path; }

private:
    SparseFile m_place;
    std::string m_path;
};

TEST_F(JobMetadata, IsReadFromTheFileBesideTheJob)
{
    const MetadataFile file(withChunks(R"({"class":"UelE","id":2,"dto":{}})"));

    EXPECT_EQ(Job(file.jobPath()).size(), 9);
    EXPECT_EQ(Job(file.path()).size(), 9);
    EXPECT_EQ(Job(file.jobPath().c_str()).size(), 9);
}

std::string failureOfReading(const std::string& path)
{
    try {
        Job job(path);
    } catch (const Torv::GenericException& error) {
        return error.what();
    }
    return "none";
}

TEST_F(JobMetadata, IsNamedWithTheCauseIfItCannotBeRead)
{
    const MetadataFile syntax("{\"jobInfo\":");
    const MetadataFile reference(withChunks("5"));
    const MetadataFile className(withChunks(R"({"class":"Nobody","id":2,"dto":{}})"));

    EXPECT_TRUE(failureOfReading(syntax.jobPath())
                    .starts_with("Error while reading job metadata. | path=" + syntax.path() + " | error="));
    EXPECT_EQ(failureOfReading(reference.jobPath()),
              "Error while reading job metadata. | path=" + reference.path() +
                  " | error=Unknown chunk ID | id=5");
    EXPECT_EQ(failureOfReading(className.jobPath()),
              "Error while reading job metadata. | path=" + className.path() +
                  " | error=Factory: no factory for the reference Nobody");
    EXPECT_TRUE(
        failureOfReading("/nowhere/job.prn")
            .starts_with("Error while reading job metadata. | path=/nowhere/job.prn.meta.json | error="));
}

TEST_F(JobMetadata, RethrowsEveryCauseAsTheGeneralException)
{
    const MetadataFile file(withChunks("5"));

    try {
        Job job(file.jobPath());
        FAIL() << "read";
    } catch (const JobParserException&) {
        FAIL() << "not rewrapped";
    } catch (const Torv::GenericException&) {
        SUCCEED();
    }
}

[[noreturn]] void writeMetadataWithoutInitialisation()
{
    Job job;
    job.appendChunk(std::make_shared<ChunkUel>());
    try {
        job.toJson();
    } catch (const Torv::GenericException& error) {
        std::fputs(error.what(), stderr);
        std::_Exit(0);
    }
    std::_Exit(1);
}

TEST(JobMetadataDeathTest, CannotBeWrittenBeforeTheLibraryIsInitialised)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(writeMetadataWithoutInitialisation(), testing::ExitedWithCode(0),
                "^Chunk class is not registered \\| class=N9JobParser8ChunkUelE");
}

} // namespace
} // namespace JobParser
