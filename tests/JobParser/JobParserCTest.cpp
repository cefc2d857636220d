#include "JobParser/JobParserC.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "JobParser/ParseJobInfo.h"
#include "tests/JobParser/JobParserCFixture.h"
#include "tests/support/JobBytes.h"

namespace
{

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

} // namespace
