#include "worker/Sandbox.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/Torv/TemporaryDirectory.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

ErrorCode failureOf(const Limits& limits, const Sandbox::Work& work)
{
    Sandbox sandbox(limits, work);
    try {
        sandbox.run("");
    } catch (const WorkerException& error) {
        return static_cast<ErrorCode>(error.code());
    }
    ADD_FAILURE() << "nothing failed";
    return ErrorCode::Failed;
}

TEST(Sandbox, GivesWhatTheWorkReturns)
{
    Sandbox sandbox(Limits(), [](const std::string& request) { return request + request; });

    EXPECT_EQ(sandbox.run("ab"), "abab");
    EXPECT_EQ(sandbox.run(std::string(100000, 'x')).size(), 200000U);
}

TEST(Sandbox, DoesTheWorkInAnotherProcess)
{
    Sandbox sandbox(Limits(), [](const std::string&) { return std::to_string(::getpid()); });

    const std::string first = sandbox.run("");

    EXPECT_NE(first, std::to_string(::getpid()));
    EXPECT_NE(first, sandbox.run(""));
}

TEST(Sandbox, SeesTheProcessAsItWasWhenTheChildWasMade)
{
    int number = 1;
    Sandbox sandbox(Limits(), [&](const std::string&) { return std::to_string(number); });
    sandbox.prepare();

    number = 2;

    EXPECT_EQ(sandbox.run(""), "1");
    EXPECT_EQ(sandbox.run(""), "2");
}

TEST(Sandbox, PassesOnTheNumberOfAnError)
{
    EXPECT_EQ(failureOf(Limits(),
                        [](const std::string&) -> std::string {
                            throw WorkerException(ErrorCode::NoFile, "a\nmessage");
                        }),
              ErrorCode::NoFile);
}

TEST(Sandbox, TakesOtherExceptionsForAMalformedJob)
{
    EXPECT_EQ(failureOf(Limits(), [](const std::string&) -> std::string { throw std::runtime_error("oh"); }),
              ErrorCode::BadDocument);
}

TEST(Sandbox, OutlivesACrash)
{
    Sandbox sandbox(Limits(), [](const std::string& request) {
        if (request == "crash")
            ::kill(::getpid(), SIGSEGV);
        return request;
    });

    EXPECT_THROW(sandbox.run("crash"), WorkerException);
    EXPECT_EQ(sandbox.run("on"), "on");
}

TEST(Sandbox, OutlivesAnExit)
{
    EXPECT_EQ(failureOf(Limits(), [](const std::string&) -> std::string { ::_exit(0); }), ErrorCode::Failed);
}

TEST(Sandbox, EndsWorkThatTakesTooMuchProcessorTime)
{
    Limits limits;
    limits.processor = std::chrono::seconds(1);

    EXPECT_EQ(failureOf(limits,
                        [](const std::string&) -> std::string {
                            volatile bool goesOn = true;
                            while (goesOn) {
                            }
                            return "";
                        }),
              ErrorCode::Limit);
}

TEST(Sandbox, EndsWorkThatOnlyWaits)
{
    Limits limits;
    limits.wall = std::chrono::milliseconds(100);

    EXPECT_EQ(failureOf(limits,
                        [](const std::string&) -> std::string {
                            std::this_thread::sleep_for(std::chrono::minutes(10));
                            return "";
                        }),
              ErrorCode::Limit);
}

TEST(Sandbox, EndsWorkThatWritesTooMuch)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("output");
    Limits limits;
    limits.fileSize = 1000;

    EXPECT_EQ(failureOf(limits,
                        [&](const std::string&) -> std::string {
                            std::ofstream(path) << std::string(2000, 'x');
                            return "";
                        }),
              ErrorCode::Limit);
    EXPECT_EQ(std::filesystem::file_size(path), 1000U);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(JOBPARSER_SANITIZED)
TEST(Sandbox, EndsWorkThatTakesTooMuchMemory)
{
    Limits limits;
    limits.memory = std::int64_t{512} << 20;

    EXPECT_EQ(failureOf(limits,
                        [](const std::string&) {
                            const std::vector<char> bytes(std::size_t{1} << 30);
                            return std::to_string(bytes.size());
                        }),
              ErrorCode::Limit);
}
#endif

} // namespace
} // namespace JobParser::Worker
