#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include "JobParser/JobParserC.h"
#include "tests/JobParser/JobParserCFixture.h"
#include "tests/support/JobBytes.h"

namespace
{

TEST_F(JobParserC, TellsWhyAFileCannotBeRead)
{
    const auto parse = [](const std::string& path) {
        return outcomeOf([&](char** error) {
            JobParserJob* job = reinterpret_cast<JobParserJob*>(1);
            const JobParserStatus status = jobParserParse(path.c_str(), nullptr, &job, error);
            EXPECT_EQ(job, nullptr);
            return status;
        });
    };
    std::filesystem::create_symlink("loop", m_directory.path("loop"));

    for (const std::string& path :
         {m_directory.path("gone\xFF"), m_directory.path(""), m_directory.path("loop"), std::string(),
          std::string(5000, 'x'), std::string("/dev/null"), m_directory.path("gone/job.prn")}) {
        const Outcome outcome = parse(path);
        EXPECT_EQ(outcome.status, JOBPARSER_CANNOT_READ) << path;
        EXPECT_NE(outcome.error.find("path=" + path), std::string::npos) << outcome.error;
    }
}

TEST_F(JobParserC, OutlivesAFileThatVanishes)
{
    JobParserJob* const job = parsed(pclJob);
    std::filesystem::remove(m_directory.path("job.prn"));

    EXPECT_EQ(jobParserSave(job, m_directory.path("out").c_str(), nullptr), JOBPARSER_OK);

    EXPECT_EQ(contentsOf(m_directory.path("out")), pclJob);
}

TEST_F(JobParserC, TellsWhyMetadataCannotBeRead)
{
    const std::string path = write(pclJob);
    for (const std::string text : {"", "{", "[]", "{\"jobInfo\":{}}", "{\"jobInfo\":{},\"chunks\":[5]}",
                                   R"({"jobInfo":{},"chunks":[{"class":"NoneE","id":2,"dto":{}}]})"}) {
        const std::string metadata = m_directory.file("x.meta.json", text);
        const Outcome outcome = outcomeOf([&](char** error) {
            JobParserJob* job = nullptr;
            return jobParserLoad(path.c_str(), metadata.c_str(), &job, error);
        });
        EXPECT_EQ(outcome.status, JOBPARSER_CANNOT_READ);
        EXPECT_EQ(outcome.error.find("Error while reading job metadata. | path=" + metadata), 0U)
            << outcome.error;
    }
}

TEST_F(JobParserC, TellsThatADiskIsFull)
{
    JobParserJob* const job = parsed(pclJob);

    const Outcome outcome = outcomeOf([&](char** error) { return jobParserSave(job, "/dev/full", error); });

    EXPECT_EQ(outcome.status, JOBPARSER_CANNOT_WRITE);
    EXPECT_EQ(outcome.error, "Cannot write file | path=/dev/full | error=No space left on device");
}

TEST_F(JobParserC, TellsThatAFolderTakesNothing)
{
    JobParserJob* const job = parsed(pclJob);

    for (const std::string& path :
         {m_directory.path("none/out"), m_directory.path(""), std::string(), std::string("/proc/out")}) {
        const Outcome outcome =
            outcomeOf([&](char** error) { return jobParserSave(job, path.c_str(), error); });
        EXPECT_EQ(outcome.status, JOBPARSER_CANNOT_WRITE) << path;
        EXPECT_EQ(outcome.error.find("Cannot write file | path="), 0U) << outcome.error;
    }
    EXPECT_EQ(files(), std::vector<std::string>{"job.prn"});
}

TEST_F(JobParserC, OutlivesAPipeWhoseReaderWentAway)
{
    JobParserJob* const job = parsed(std::string(1 << 20, 'x'));
    const std::string path = m_directory.path("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::thread reader([&] { std::ifstream(path).get(); });

    GivenText error;
    const JobParserStatus status = jobParserSave(job, path.c_str(), &error);
    reader.join();

    EXPECT_EQ(status, JOBPARSER_CANNOT_WRITE);
    EXPECT_EQ(error.str(), "Cannot write file | path=" + path + " | error=Broken pipe");
}

TEST_F(JobParserC, MakesAFailedAssertionAnErrorAndLeavesTheOldFile)
{
    JobParserJob* const job =
        loaded(std::string(chunkInside) + R"(,{"class":"RawDataE","id":3,"dto":{"offset":9,"size":1}})");
    const std::string out = m_directory.file("out", "old");

    const Outcome outcome = outcomeOf([&](char** error) { return jobParserSave(job, out.c_str(), error); });

    EXPECT_EQ(outcome.status, JOBPARSER_ASSERTION_FAILED);
    EXPECT_EQ(outcome.error,
              "Assertion failed: ofs >= 0 && ofs <= m_realDataSize | file=JobFile | function=copyToFile");
    EXPECT_EQ(contentsOf(out), "old");
    EXPECT_EQ(files(), (std::vector<std::string>{"job.meta.json", "job.prn", "out"}));
}

TEST_F(JobParserC, ListsAndDescribesChunksThatCannotBeSaved)
{
    JobParserJob* const job = loaded(chunkOutside);
    JobParserChunk chunk{};
    GivenText metadata;

    EXPECT_EQ(jobParserChunks(job, 0, 1, &chunk, sizeof chunk, nullptr), JOBPARSER_OK);
    EXPECT_EQ(jobParserMetadata(job, &metadata, nullptr, nullptr), JOBPARSER_OK);

    EXPECT_EQ(chunk.offset, -1);
    EXPECT_EQ(chunk.fileSize, 3);
    EXPECT_NE(metadata.str().find(chunkOutside), std::string::npos);
}

TEST_F(JobParserC, CallsChunksThatRunPastTheFileMalformed)
{
    JobParserJob* const job = loaded(chunkTooLong);

    const Outcome outcome =
        outcomeOf([&](char** error) { return jobParserSave(job, m_directory.path("out").c_str(), error); });

    EXPECT_EQ(outcome.status, JOBPARSER_MALFORMED);
    EXPECT_NE(outcome.error, "");
    EXPECT_EQ(files(), (std::vector<std::string>{"job.meta.json", "job.prn"}));
}

TEST_F(JobParserC, CallsAJobMalformedWhoseNumbersAreNone)
{
    const auto pageOf = [](const std::string& matrix) {
        return "%!PS\n%%EndPageSetup\n[" + matrix + "]msf\n%%Page: 2 2\n";
    };
    for (const std::string& bytes :
         {JobBytes().uel().pjl("XCPT <copies>x</copies>").uel().str(),
          JobBytes().uel().pjl("XCPT <copies>99999999999</copies>").uel().str(), pageOf("a b c d e f")}) {
        SCOPED_TRACE(bytes);
        const std::string path = write(bytes);

        const Outcome outcome = outcomeOf([&](char** error) {
            JobParserJob* job = nullptr;
            return jobParserParse(path.c_str(), nullptr, &job, error);
        });

        EXPECT_EQ(outcome.status, JOBPARSER_MALFORMED);
        EXPECT_EQ(outcome.error.find("A number of the job cannot be read | error=sto"), 0U) << outcome.error;
    }
}

TEST_F(JobParserC, SaysThatAPdfEndsTooEarly)
{
    const std::string path = write("%PDF-1.4\nstartxref\n9");
    constexpr JobParserParseOptions options{sizeof options, JOBPARSER_LANGUAGE_DETECT,
                                            JOBPARSER_PARSE_REFUSE_RESTRICTED};

    const Outcome outcome = outcomeOf([&](char** error) {
        JobParserJob* job = nullptr;
        return jobParserParse(path.c_str(), &options, &job, error);
    });

    EXPECT_EQ(outcome.status, JOBPARSER_MALFORMED);
    EXPECT_EQ(outcome.error, "The job ends too early");
}

TEST_F(JobParserC, KeepsTheJobThroughAFailure)
{
    JobParserJob* const job = parsed(pclJob);

    EXPECT_EQ(jobParserSave(job, "/dev/full", nullptr), JOBPARSER_CANNOT_WRITE);
    EXPECT_EQ(jobParserSave(job, m_directory.path("out").c_str(), nullptr), JOBPARSER_OK);

    EXPECT_EQ(contentsOf(m_directory.path("out")), pclJob);
}

} // namespace
