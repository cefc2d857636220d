#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "JobParser/JobParserC.h"
#include "tests/JobParser/JobParserCFixture.h"
#include "tests/support/JobBytes.h"

namespace
{

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
