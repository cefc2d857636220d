#include "JobParser/JobParserC.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "JobParser/ParseJobInfo.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/JobBytes.h"

namespace
{

const std::string pclJob = JobBytes()
                               .uel()
                               .pjl("JOB NAME=\"old\"")
                               .pjl("SET COPIES=2")
                               .pjl("ENTER LANGUAGE=PCL")
                               .raw("\x1B"
                                    "E")
                               .raw("text")
                               .uel()
                               .str();
const std::string malformedJob = JobBytes().uel().pjl("SET COPIES=3").raw("@PXL").str();

/// A text that the library gave.
class GivenText
{
public:
    GivenText() = default;
    GivenText(const GivenText&) = delete;
    GivenText& operator=(const GivenText&) = delete;
    ~GivenText() { jobParserFreeText(m_text); }

    char** operator&() { return &m_text; } // NOLINT(google-runtime-operator): it stands for the out-argument.
    bool isNull() const { return m_text == nullptr; }
    std::string str() const { return m_text == nullptr ? "(null)" : m_text; }

private:
    char* m_text = nullptr;
};

/// The outcome of one call.
struct Outcome {
    JobParserStatus status;
    std::string error;
};

Outcome outcomeOf(const std::function<JobParserStatus(char**)>& call)
{
    char* text = reinterpret_cast<char*>(1);
    const JobParserStatus status = call(&text);
    const std::string error = text == nullptr ? "" : text;
    jobParserFreeText(text);
    EXPECT_EQ(call(nullptr), status); // The text is the caller's choice.
    return {status, error};
}

class JobParserC : public testing::Test
{
protected:
    ~JobParserC() override
    {
        for (JobParserJob* job : m_jobs)
            jobParserFreeJob(job);
    }

    std::string write(const std::string& bytes, const std::string& name = "job.prn") const
    {
        return m_directory.file(name, bytes);
    }

    JobParserJob* parsed(const std::string& bytes, const JobParserParseOptions* options = nullptr)
    {
        GivenText error;
        JobParserJob* job = nullptr;
        EXPECT_EQ(jobParserParse(write(bytes).c_str(), options, &job, &error), JOBPARSER_OK) << error.str();
        m_jobs.push_back(job);
        return job;
    }

    /// A job of that metadata's chunks, over a file of seven bytes.
    JobParserJob* loaded(const std::string& chunks)
    {
        const std::string path = write("1234567");
        const std::string metadata =
            m_directory.file("job.meta.json", R"({"jobInfo":{},"chunks":[)" + chunks + "]}");
        GivenText error;
        JobParserJob* job = nullptr;
        EXPECT_EQ(jobParserLoad(path.c_str(), metadata.c_str(), &job, &error), JOBPARSER_OK) << error.str();
        m_jobs.push_back(job);
        return job;
    }

    static std::string recordOf(const JobParserJob* job)
    {
        GivenText text;
        EXPECT_EQ(jobParserRecord(job, 0, &text, nullptr, nullptr), JOBPARSER_OK);
        return text.str();
    }

    static std::string contentsOf(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_directory.path("")))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    Torv::Test::TemporaryDirectory m_directory;
    std::vector<JobParserJob*> m_jobs;
};

constexpr const char* chunkOutside = R"({"class":"RawDataE","id":2,"dto":{"offset":-1,"size":3}})";
constexpr const char* chunkTooLong = R"({"class":"RawDataE","id":2,"dto":{"offset":0,"size":8}})";
constexpr const char* chunkInside = R"({"class":"RawDataE","id":2,"dto":{"offset":1,"size":3}})";

TEST_F(JobParserC, TellsItsVersion)
{
    EXPECT_STREQ(jobParserVersion(), "1.0.0");
}

TEST_F(JobParserC, HasWordsForEveryStatus)
{
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_OK), "done");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_INVALID_ARGUMENT), "invalid argument");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_CANNOT_READ), "cannot read");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_CANNOT_WRITE), "cannot write");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_MALFORMED), "malformed");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_ASSERTION_FAILED), "assertion failed");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_OUT_OF_MEMORY), "out of memory");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_ALREADY_SET_UP), "the library is set up already");
    EXPECT_STREQ(jobParserStatusText(JOBPARSER_FAILED), "failed");
    for (const JobParserStatus status : {-1, 9, INT32_MIN, INT32_MAX})
        EXPECT_STREQ(jobParserStatusText(status), "unknown status");
}

TEST_F(JobParserC, KeepsTheLayoutOfItsStructs)
{
    if constexpr (sizeof(void*) != 8)
        GTEST_SKIP() << "Stored for pointers of 64 bits";

    EXPECT_EQ(sizeof(JobParserSetUpOptions), 104U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, directory), 8U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, executable), 16U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, arguments), 24U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, config), 32U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, processCount), 40U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, poolLimit), 44U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, poolDeadline), 48U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, grayscaleTolerance), 56U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, reserved), 60U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, decryptAlgorithm), 64U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, decryptKey), 72U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, decryptKeySize), 80U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, decryptIv), 88U);
    EXPECT_EQ(offsetof(JobParserSetUpOptions, decryptIvSize), 96U);
    EXPECT_EQ(sizeof(JobParserParseOptions), 16U);
    EXPECT_EQ(offsetof(JobParserParseOptions, language), 8U);
    EXPECT_EQ(offsetof(JobParserParseOptions, flags), 12U);
    EXPECT_EQ(sizeof(JobParserChunk), 32U);
    EXPECT_EQ(offsetof(JobParserChunk, offset), 8U);
    EXPECT_EQ(offsetof(JobParserChunk, fileSize), 16U);
    EXPECT_EQ(offsetof(JobParserChunk, size), 24U);
    EXPECT_EQ(sizeof(JobParserStep), 24U);
    EXPECT_EQ(offsetof(JobParserStep, first), 8U);
    EXPECT_EQ(offsetof(JobParserStep, second), 16U);
}

TEST_F(JobParserC, KeepsItsNumbers)
{
    EXPECT_EQ(JOBPARSER_FAILED, 8);
    EXPECT_EQ(JOBPARSER_LANGUAGE_NONE, -1);
    EXPECT_EQ(JOBPARSER_LANGUAGE_URF, 9);
    EXPECT_EQ(JOBPARSER_PARSE_NO_WORKER, 4);
    EXPECT_EQ(JOBPARSER_STEP_WRAP, 1);
    EXPECT_EQ(JOBPARSER_STEP_FINISHING, 11);
    EXPECT_EQ(JOBPARSER_STEP_STRIP_PRESCRIBE, 14);
}

TEST_F(JobParserC, GivesTheRecordOfParseJobInfo)
{
    JobParserJob* const job = parsed(pclJob);

    GivenText text;
    std::size_t size = 0;
    EXPECT_EQ(jobParserRecord(job, 0, &text, &size, nullptr), JOBPARSER_OK);

    EXPECT_EQ(text.str(), ParseJobInfo(write(pclJob).c_str()));
    EXPECT_EQ(size, text.str().size());
    EXPECT_NE(text.str().find("\"copies\":2"), std::string::npos);
}

TEST_F(JobParserC, GivesFontsOnlyIfTheyAreWanted)
{
    const std::string path = write("1234567");
    const std::string metadata =
        m_directory.file("job.meta.json", R"({"jobInfo":{"fonts":["Arial"]},"chunks":[]})");
    JobParserJob* job = nullptr;
    ASSERT_EQ(jobParserLoad(path.c_str(), metadata.c_str(), &job, nullptr), JOBPARSER_OK);
    m_jobs.push_back(job);

    GivenText with;
    EXPECT_EQ(jobParserRecord(job, 1, &with, nullptr, nullptr), JOBPARSER_OK);

    EXPECT_NE(with.str().find(R"("fonts":["Arial"])"), std::string::npos);
    EXPECT_EQ(recordOf(job).find("fonts"), std::string::npos);
}

TEST_F(JobParserC, SaysThatAJobWasParsed)
{
    std::int32_t isParsed = -1;
    char* cause = reinterpret_cast<char*>(1);

    EXPECT_EQ(jobParserParsed(parsed(pclJob), &isParsed, &cause, nullptr), JOBPARSER_OK);

    EXPECT_EQ(isParsed, 1);
    EXPECT_EQ(cause, nullptr);
}

TEST_F(JobParserC, SaysWhyAJobIsMalformedAndSavesItAllTheSame)
{
    JobParserJob* const job = parsed(malformedJob);
    std::int32_t isParsed = -1;
    GivenText cause;

    EXPECT_EQ(jobParserParsed(job, &isParsed, &cause, nullptr), JOBPARSER_OK);
    EXPECT_EQ(jobParserParsed(job, &isParsed, nullptr, nullptr), JOBPARSER_OK);
    EXPECT_EQ(jobParserSave(job, m_directory.path("out").c_str(), nullptr), JOBPARSER_OK);

    EXPECT_EQ(isParsed, 0);
    EXPECT_EQ(cause.str().find("Parsing failed at offset 0x"), 0U) << cause.str();
    EXPECT_EQ(contentsOf(m_directory.path("out")), malformedJob);
}

TEST_F(JobParserC, ListsChunksWithTheirPlaceInTheFile)
{
    JobParserJob* const job = parsed(pclJob);
    std::size_t count = 0;
    ASSERT_EQ(jobParserChunkCount(job, &count, nullptr), JOBPARSER_OK);
    std::vector<JobParserChunk> chunks(count);

    EXPECT_EQ(jobParserChunks(job, 0, count, chunks.data(), sizeof(JobParserChunk), nullptr), JOBPARSER_OK);

    ASSERT_EQ(count, 8U);
    const std::vector<std::string> classes{"UelE",    "PjlCmdE",         "PjlCmdE",  "PjlCmdE",
                                           "PclEscE", "FirstPageStartE", "RawDataE", "UelE"};
    const std::vector<std::int64_t> sizes{9, 21, 19, 25, 2, 0, 4, 9};
    for (std::size_t index = 0; index < count; ++index) {
        SCOPED_TRACE(index);
        EXPECT_EQ(chunks[index].className, classes[index]);
        EXPECT_EQ(chunks[index].size, sizes[index]);
        EXPECT_EQ(chunks[index].offset, index == 6 ? 76 : -1);
        EXPECT_EQ(chunks[index].fileSize, index == 6 ? 4 : -1);
    }
}

TEST_F(JobParserC, ListsAPartOfTheChunks)
{
    JobParserJob* const job = parsed(pclJob);
    std::vector<JobParserChunk> chunks(2, JobParserChunk{"untouched", 1, 1, 1});

    EXPECT_EQ(jobParserChunks(job, 6, 1, chunks.data(), sizeof(JobParserChunk), nullptr), JOBPARSER_OK);
    EXPECT_EQ(jobParserChunks(job, 8, 0, nullptr, sizeof(JobParserChunk), nullptr), JOBPARSER_OK);

    EXPECT_STREQ(chunks[0].className, "RawDataE");
    EXPECT_STREQ(chunks[1].className, "untouched");
}

TEST_F(JobParserC, ListsAChunkThatIsNullInMetadata)
{
    JobParserChunk chunk{"untouched", 1, 1, 1};

    EXPECT_EQ(jobParserChunks(loaded("null"), 0, 1, &chunk, sizeof chunk, nullptr), JOBPARSER_OK);

    EXPECT_STREQ(chunk.className, "");
    EXPECT_EQ(chunk.offset, -1);
    EXPECT_EQ(chunk.size, 0);
}

TEST_F(JobParserC, RefusesChunksThatAreNotThere)
{
    JobParserJob* const job = parsed(pclJob);
    std::vector<JobParserChunk> chunks(9);

    for (const auto& [first, count] : std::vector<std::pair<std::size_t, std::size_t>>{
             {0, 9}, {8, 1}, {9, 0}, {SIZE_MAX, 1}, {1, SIZE_MAX}, {SIZE_MAX, SIZE_MAX}}) {
        const Outcome outcome = outcomeOf([&, start = first, length = count](char** error) {
            return jobParserChunks(job, start, length, chunks.data(), sizeof(JobParserChunk), error);
        });
        EXPECT_EQ(outcome.status, JOBPARSER_INVALID_ARGUMENT);
        EXPECT_EQ(outcome.error, "There are not so many chunks");
    }
}

TEST_F(JobParserC, SavesOverTheJobsOwnFile)
{
    JobParserJob* const job = parsed(pclJob);
    const std::string path = m_directory.path("job.prn");

    EXPECT_EQ(jobParserSave(job, path.c_str(), nullptr), JOBPARSER_OK);
    EXPECT_EQ(jobParserSave(job, path.c_str(), nullptr), JOBPARSER_OK);

    EXPECT_EQ(contentsOf(path), pclJob);
    EXPECT_EQ(files(), std::vector<std::string>{"job.prn"});
}

TEST_F(JobParserC, LoadsWhatItGaveAsMetadata)
{
    JobParserJob* const job = parsed(pclJob);
    GivenText metadata;
    std::size_t size = 0;
    ASSERT_EQ(jobParserMetadata(job, &metadata, &size, nullptr), JOBPARSER_OK);
    EXPECT_EQ(size, metadata.str().size());
    m_directory.file("job.prn.meta.json", metadata.str());
    JobParserJob* again = nullptr;

    const std::string path = m_directory.path("job.prn");
    ASSERT_EQ(jobParserLoad(path.c_str(), path.c_str(), &again, nullptr), JOBPARSER_OK);
    m_jobs.push_back(again);
    EXPECT_EQ(jobParserSave(again, m_directory.path("out").c_str(), nullptr), JOBPARSER_OK);

    EXPECT_EQ(recordOf(again), recordOf(job));
    EXPECT_EQ(contentsOf(m_directory.path("out")), pclJob);
}

TEST_F(JobParserC, RewritesByEveryKindOfStep)
{
    JobParserJob* const job = parsed(pclJob);
    const std::vector<JobParserStep> steps{{JOBPARSER_STEP_JOB_NAME, "new", nullptr},
                                           {JOBPARSER_STEP_JOB_PARAM, "DISPLAY", "x"},
                                           {JOBPARSER_STEP_SET, "QTY", "3"},
                                           {JOBPARSER_STEP_SET_QUOTED, "USERNAME", "a=b"},
                                           {JOBPARSER_STEP_ADD, "A", "1"},
                                           {JOBPARSER_STEP_ADD_QUOTED, "A", "2"},
                                           {JOBPARSER_STEP_SET, "B", "1"},
                                           {JOBPARSER_STEP_UNSET, "B", "1"},
                                           {JOBPARSER_STEP_ADD, "C", "1"},
                                           {JOBPARSER_STEP_ADD, "C", "2"},
                                           {JOBPARSER_STEP_UNSET_FIRST, "C=", nullptr},
                                           {JOBPARSER_STEP_UNSET_ALL, "COPIES", nullptr},
                                           {JOBPARSER_STEP_FINISHING, "\"T\"", "\"O\""},
                                           {JOBPARSER_STEP_PJL_CODE, "\\x41\n", nullptr},
                                           {JOBPARSER_STEP_STRIP_PRESCRIBE, nullptr, nullptr}};
    const std::string out = m_directory.path("out");

    EXPECT_EQ(jobParserRewrite(job, steps.data(), steps.size(), sizeof(JobParserStep), out.c_str(), nullptr),
              JOBPARSER_OK);

    EXPECT_EQ(contentsOf(out), JobBytes()
                                   .uel()
                                   .pjl("JOB NAME=\"new\" DISPLAY=x")
                                   .pjl("SET QTY=3")
                                   .pjl("SET USERNAME=\"a=b\"")
                                   .pjl("SET A=1")
                                   .pjl("SET A=\"2\"")
                                   .pjl("SET C=2")
                                   .pjl("SET PROCESSINGACTION=APPEND")
                                   .pjl("SET PROCESSINGTYPE=\"T\"")
                                   .pjl("SET PROCESSINGOPTION=\"O\"")
                                   .pjl("SET PROCESSINGBOUNDARY=MOPY")
                                   .raw("\\x41\n")
                                   .pjl("ENTER LANGUAGE=PCL")
                                   .raw("\x1B"
                                        "E")
                                   .raw("text")
                                   .uel()
                                   .str());
}

TEST_F(JobParserC, StripsAndWraps)
{
    JobParserJob* const job = parsed("raw bytes");
    const JobParserStep wrap{JOBPARSER_STEP_WRAP, "PCL", "n"};
    const JobParserStep strip{JOBPARSER_STEP_STRIP_PJL, nullptr, nullptr};
    const std::string out = m_directory.path("out");

    EXPECT_EQ(jobParserRewrite(job, &wrap, 1, sizeof wrap, out.c_str(), nullptr), JOBPARSER_OK);
    EXPECT_EQ(contentsOf(out), JobBytes()
                                   .uel()
                                   .pjl("JOB NAME=\"n\"")
                                   .pjl("ENTER LANGUAGE=PCL")
                                   .raw("raw bytes")
                                   .uel()
                                   .pjl("EOJ NAME=\"n\"")
                                   .uel()
                                   .str());
    EXPECT_EQ(jobParserChange(job, &strip, 1, sizeof strip, nullptr), JOBPARSER_OK);
    EXPECT_EQ(jobParserRewrite(job, nullptr, 0, sizeof strip, out.c_str(), nullptr), JOBPARSER_OK);
    EXPECT_EQ(contentsOf(out), "raw bytes");
}

TEST_F(JobParserC, LooksAtAllStepsBeforeTheFirstIsDone)
{
    JobParserJob* const job = parsed(pclJob);
    const std::string out = m_directory.path("out");
    struct Row {
        JobParserStep step;
        const char* error;
    };
    const JobParserStep good{JOBPARSER_STEP_SET, "QTY", "3"};
    for (const Row& row : {
             Row{{0, "a", "b"}, "There is no step of this number"},
             Row{{15, "a", "b"}, "There is no step of this number"},
             Row{{INT32_MIN, "a", "b"}, "There is no step of this number"},
             Row{{JOBPARSER_STEP_SET, nullptr, "b"}, "A step lacks its first text"},
             Row{{JOBPARSER_STEP_SET, "a", nullptr}, "A step lacks its second text"},
             Row{{JOBPARSER_STEP_PJL_CODE, nullptr, nullptr}, "A step lacks its first text"},
             Row{{JOBPARSER_STEP_WRAP, "KLINGON", "n"}, "A job cannot be wrapped in this language"},
         }) {
        const std::vector<JobParserStep> steps{good, row.step};
        const Outcome outcome = outcomeOf([&](char** error) {
            return jobParserRewrite(job, steps.data(), 2, sizeof(JobParserStep), out.c_str(), error);
        });
        EXPECT_EQ(outcome.status, JOBPARSER_INVALID_ARGUMENT);
        EXPECT_EQ(outcome.error, row.error);
    }

    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(jobParserSave(job, out.c_str(), nullptr), JOBPARSER_OK);
    EXPECT_EQ(contentsOf(out), pclJob);
}

TEST_F(JobParserC, TakesTheLanguageItIsTold)
{
    const JobParserParseOptions none{sizeof none, JOBPARSER_LANGUAGE_NONE, 0};
    const JobParserParseOptions escp{sizeof escp, JOBPARSER_LANGUAGE_ESCP, 0};
    const std::string jpeg = std::string("\xFF\xD8\xFF\xE0", 4) + std::string("\0\x10JFIF", 6);

    EXPECT_NE(recordOf(parsed(jpeg)).find("\"pdl\":7,"), std::string::npos) << recordOf(parsed(jpeg));
    EXPECT_NE(recordOf(parsed(jpeg, &none)).find("\"pdl\":0,"), std::string::npos);
    EXPECT_NE(recordOf(parsed(jpeg, &escp)).find("\"pdl\":3,"), std::string::npos);
}

TEST_F(JobParserC, LeavesOutWhatIsNotToBeCollected)
{
    const JobParserParseOptions options{sizeof options, 0, JOBPARSER_PARSE_NO_COLLECT};
    const std::string job = JobBytes()
                                .uel()
                                .pjl("SET DUPLEX=ON")
                                .pjl("SET BINDING=LONGEDGE")
                                .pjl("ENTER LANGUAGE=PCL")
                                .uel()
                                .str();

    EXPECT_NE(recordOf(parsed(job)).find("\"duplex\":1"), std::string::npos);
    EXPECT_NE(recordOf(parsed(job, &options)).find("\"duplex\":null"), std::string::npos);
}

TEST_F(JobParserC, RefusesOptionsThatItDoesNotKnow)
{
    const std::string path = write(pclJob);
    constexpr std::size_t size = sizeof(JobParserParseOptions);
    struct Row {
        JobParserParseOptions options;
        const char* error;
    };
    for (const Row& row : {
             Row{{0, 0, 0}, "The options have a size of no version"},
             Row{{size - 1, 0, 0}, "The options have a size of no version"},
             Row{{size + 1, 0, 0}, "The options have a size of no version"},
             Row{{SIZE_MAX, 0, 0}, "The options have a size of no version"},
             Row{{size, 0, 8}, "The options have unknown flags"},
             Row{{size, 0, 0xFFFFFFFF}, "The options have unknown flags"},
             Row{{size, 10, 0}, "There is no language of this number"},
             Row{{size, -2, 0}, "There is no language of this number"},
         }) {
        JobParserJob* job = reinterpret_cast<JobParserJob*>(1);
        const Outcome outcome =
            outcomeOf([&](char** error) { return jobParserParse(path.c_str(), &row.options, &job, error); });
        EXPECT_EQ(outcome.status, JOBPARSER_INVALID_ARGUMENT);
        EXPECT_EQ(outcome.error, row.error);
        EXPECT_EQ(job, nullptr);
    }
}

TEST_F(JobParserC, RefusesArraysOfAnotherSize)
{
    JobParserJob* const job = parsed(pclJob);
    JobParserChunk chunk{};
    const JobParserStep step{JOBPARSER_STEP_STRIP_PJL, nullptr, nullptr};
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{8}, std::size_t{23}, std::size_t{40}, SIZE_MAX}) {
        EXPECT_EQ(
            outcomeOf([&](char** error) { return jobParserChunks(job, 0, 1, &chunk, size, error); }).error,
            "The chunks have a size of no version");
        EXPECT_EQ(outcomeOf([&](char** error) { return jobParserChange(job, &step, 1, size, error); }).error,
                  "The steps have a size of no version");
    }
}

TEST_F(JobParserC, RefusesNullPointers)
{
    const std::string path = write(pclJob);
    JobParserJob* const job = parsed(pclJob);
    JobParserJob* given = nullptr;
    GivenText text;
    std::size_t count = 0;
    std::int32_t isParsed = 0;
    constexpr std::size_t chunk = sizeof(JobParserChunk);
    constexpr std::size_t step = sizeof(JobParserStep);
    struct Row {
        const char* error;
        std::function<JobParserStatus(char**)> call;
    };
    const char* const name = path.c_str();
    for (const Row& row : std::vector<Row>{
             {"path is null", [&](char** e) { return jobParserParse(nullptr, nullptr, &given, e); }},
             {"job is null", [&](char** e) { return jobParserParse(name, nullptr, nullptr, e); }},
             {"path is null", [&](char** e) { return jobParserLoad(nullptr, name, &given, e); }},
             {"metadataPath is null", [&](char** e) { return jobParserLoad(name, nullptr, &given, e); }},
             {"job is null", [&](char** e) { return jobParserLoad(name, name, nullptr, e); }},
             {"job is null", [&](char** e) { return jobParserParsed(nullptr, &isParsed, nullptr, e); }},
             {"parsed is null", [&](char** e) { return jobParserParsed(job, nullptr, nullptr, e); }},
             {"job is null", [&](char** e) { return jobParserRecord(nullptr, 0, &text, nullptr, e); }},
             {"text is null", [&](char** e) { return jobParserRecord(job, 0, nullptr, nullptr, e); }},
             {"job is null", [&](char** e) { return jobParserMetadata(nullptr, &text, nullptr, e); }},
             {"text is null", [&](char** e) { return jobParserMetadata(job, nullptr, nullptr, e); }},
             {"job is null", [&](char** e) { return jobParserChunkCount(nullptr, &count, e); }},
             {"count is null", [&](char** e) { return jobParserChunkCount(job, nullptr, e); }},
             {"job is null", [&](char** e) { return jobParserChunks(nullptr, 0, 0, nullptr, chunk, e); }},
             {"chunks is null", [&](char** e) { return jobParserChunks(job, 0, 1, nullptr, chunk, e); }},
             {"job is null", [&](char** e) { return jobParserSave(nullptr, name, e); }},
             {"path is null", [&](char** e) { return jobParserSave(job, nullptr, e); }},
             {"job is null", [&](char** e) { return jobParserChange(nullptr, nullptr, 0, step, e); }},
             {"steps is null", [&](char** e) { return jobParserChange(job, nullptr, 1, step, e); }},
             {"job is null", [&](char** e) { return jobParserRewrite(nullptr, nullptr, 0, step, name, e); }},
             {"path is null", [&](char** e) { return jobParserRewrite(job, nullptr, 0, step, nullptr, e); }},
             {"steps is null", [&](char** e) { return jobParserRewrite(job, nullptr, 1, step, name, e); }},
         }) {
        const Outcome outcome = outcomeOf(row.call);
        EXPECT_EQ(outcome.status, JOBPARSER_INVALID_ARGUMENT) << row.error;
        EXPECT_EQ(outcome.error, row.error);
    }
    jobParserFreeJob(nullptr);
    jobParserFreeText(nullptr);
}

TEST_F(JobParserC, TakesPathsOfAnyBytes)
{
    for (const std::string name : {"\xFF\xFE", "two\nlines", " ", "\x1B[31m", "%s%n", "-", "job|error=x"}) {
        const std::string path = write(pclJob, name);
        const std::string out = m_directory.path("out" + name);
        JobParserJob* job = nullptr;

        ASSERT_EQ(jobParserParse(path.c_str(), nullptr, &job, nullptr), JOBPARSER_OK) << name;
        m_jobs.push_back(job);
        EXPECT_EQ(jobParserSave(job, out.c_str(), nullptr), JOBPARSER_OK) << name;

        EXPECT_EQ(contentsOf(out), pclJob);
    }
}

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

TEST_F(JobParserC, ServesManyThreadsAtOnce)
{
    const std::string path = write(pclJob);
    const std::string expected = recordOf(parsed(pclJob));
    JobParserJob* const hostile = loaded(chunkOutside);
    write(pclJob);
    std::vector<std::thread> threads;
    std::vector<int> good(8, 0);

    for (std::size_t thread = 0; thread < good.size(); ++thread) {
        threads.emplace_back([&, thread] {
            const std::string out = m_directory.path("out" + std::to_string(thread));
            for (int round = 0; round < 50; ++round) {
                JobParserJob* job = nullptr;
                jobParserParse(path.c_str(), nullptr, &job, nullptr);
                const bool isGood = job != nullptr && recordOf(job) == expected &&
                                    jobParserSave(job, out.c_str(), nullptr) == JOBPARSER_OK &&
                                    contentsOf(out) == pclJob;
                jobParserFreeJob(job);
                good[thread] += isGood ? 1 : 0;
            }
        });
    }
    for (int round = 0; round < 50; ++round)
        EXPECT_EQ(jobParserSave(hostile, "/dev/null", nullptr), JOBPARSER_ASSERTION_FAILED);
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(good, std::vector<int>(8, 50));
}

/// Ends with 0 if set-up goes as the calls say, in a process of its own.
[[noreturn]] void endWith(bool isGood)
{
    std::_Exit(isGood ? 0 : 1);
}

JobParserStatus setUp(const JobParserSetUpOptions& options)
{
    return jobParserSetUp(&options, nullptr);
}

class JobParserCDeathTest : public JobParserC
{
protected:
    JobParserCDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(JobParserCDeathTest, IsSetUpOnce)
{
    EXPECT_EXIT(
        {
            JobParserSetUpOptions options{};
            options.structSize = sizeof options;
            options.processCount = -1;
            const bool first = setUp(options) == JOBPARSER_OK;
            GivenText error;
            const bool second = jobParserSetUp(&options, &error) == JOBPARSER_ALREADY_SET_UP;
            endWith(first && second && error.str() == "the library is set up already");
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(JobParserCDeathTest, IsSetUpByTheFirstParse)
{
    const std::string path = write(pclJob);

    EXPECT_EXIT(
        {
            JobParserJob* job = nullptr;
            const bool parsedIt = jobParserParse(path.c_str(), nullptr, &job, nullptr) == JOBPARSER_OK;
            GivenText metadata;
            const bool described = jobParserMetadata(job, &metadata, nullptr, nullptr) == JOBPARSER_OK;
            endWith(parsedIt && described && jobParserSetUp(nullptr, nullptr) == JOBPARSER_ALREADY_SET_UP);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(JobParserCDeathTest, MayBeSetUpAgainAfterARefusal)
{
    const std::string missing = m_directory.path("none.ini");

    EXPECT_EXIT(
        {
            JobParserSetUpOptions options{};
            const bool size = setUp(options) == JOBPARSER_INVALID_ARGUMENT;
            options.structSize = sizeof options;
            options.processCount = -1;
            options.reserved = 1;
            const bool reserved = setUp(options) == JOBPARSER_INVALID_ARGUMENT;
            options.reserved = 0;
            options.config = missing.c_str();
            const bool config = setUp(options) == JOBPARSER_CANNOT_READ;
            options.config = nullptr;
            options.decryptAlgorithm = "aes-128-cbc";
            const bool keyIsNull = setUp(options) == JOBPARSER_INVALID_ARGUMENT;
            options.decryptKey = "0123456789abcdef";
            options.decryptKeySize = 15;
            options.decryptIv = "0123456789abcdef";
            options.decryptIvSize = 16;
            const bool keyIsShort = setUp(options) == JOBPARSER_INVALID_ARGUMENT;
            options.decryptAlgorithm = "none";
            const bool cipher = setUp(options) == JOBPARSER_INVALID_ARGUMENT;
            options.decryptAlgorithm = nullptr;
            endWith(size && reserved && config && keyIsNull && keyIsShort && cipher &&
                    setUp(options) == JOBPARSER_OK);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(JobParserCDeathTest, ReadsTheConfigurationThatItIsGiven)
{
    const std::string config = m_directory.file("names.ini", "[JobParser]\naliasA4 = HouseSheet\n");
    const std::string path =
        write(JobBytes().uel().pjl("SET PAPER=HouseSheet").pjl("ENTER LANGUAGE=PCL").uel().str());

    EXPECT_EXIT(
        {
            JobParserSetUpOptions options{};
            options.structSize = sizeof options;
            options.processCount = -1;
            options.config = config.c_str();
            const bool first = setUp(options) == JOBPARSER_OK;
            JobParserJob* job = nullptr;
            jobParserParse(path.c_str(), nullptr, &job, nullptr);
            endWith(first && recordOf(job).find("\"paper\":5,") != std::string::npos);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(JobParserCDeathTest, IsSetUpByManyThreadsAtOnce)
{
    const std::string path = write(pclJob);

    EXPECT_EXIT(
        {
            std::vector<std::thread> threads;
            std::vector<int> good(8, 0);
            for (int& isGood : good) {
                threads.emplace_back([&] {
                    JobParserJob* job = nullptr;
                    GivenText metadata;
                    isGood = jobParserParse(path.c_str(), nullptr, &job, nullptr) == JOBPARSER_OK &&
                             jobParserMetadata(job, &metadata, nullptr, nullptr) == JOBPARSER_OK;
                });
            }
            for (std::thread& thread : threads)
                thread.join();
            endWith(good == std::vector<int>(8, 1));
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
