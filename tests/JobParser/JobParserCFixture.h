#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

#include "JobParser/JobParserC.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/JobBytes.h"

inline const std::string pclJob = JobBytes()
                                      .uel()
                                      .pjl("JOB NAME=\"old\"")
                                      .pjl("SET COPIES=2")
                                      .pjl("ENTER LANGUAGE=PCL")
                                      .raw("\x1B"
                                           "E")
                                      .raw("text")
                                      .uel()
                                      .str();
inline const std::string malformedJob = JobBytes().uel().pjl("SET COPIES=3").raw("@PXL").str();

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

inline Outcome outcomeOf(const std::function<JobParserStatus(char**)>& call)
{
    char* text = reinterpret_cast<char*>(1);
    const JobParserStatus status = call(&text);
    const std::string error = text == nullptr ? "" : text;
    jobParserFreeText(text);
    EXPECT_EQ(call(nullptr), status); // The text is the caller's choice.
    return {status, error};
}

/// Frees the jobs of a test, and works in a directory of its own.
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

inline constexpr const char* chunkOutside = R"({"class":"RawDataE","id":2,"dto":{"offset":-1,"size":3}})";
inline constexpr const char* chunkTooLong = R"({"class":"RawDataE","id":2,"dto":{"offset":0,"size":8}})";
inline constexpr const char* chunkInside = R"({"class":"RawDataE","id":2,"dto":{"offset":1,"size":3}})";
