#include "Torv/Async/ProcessPool/ProcessPool.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/Torv/Async/ProcessPool/TestWorkers.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/Children.h"

#include "Torv/GenericException.h"
#include "Torv/Json/Json.h"

namespace Torv::Async::ProcessPool
{
namespace
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

int pidOf(const std::string& answer)
{
    return Json::parse(answer)["pid"].toInt();
}

std::string failureOf(ProcessPool& pool, const std::string& request = "1")
{
    try {
        return "answered: " + pool.request(request);
    } catch (const GenericException& error) {
        return error.what();
    }
}

std::string exceptionText(std::future<std::string>& answer)
{
    try {
        return "answered: " + answer.get();
    } catch (const GenericException& error) {
        return error.what();
    }
}

TEST(ProcessPool, HasTheseDefaults)
{
    const Options options;

    EXPECT_EQ(options.processCount, 20);
    EXPECT_EQ(options.poolInterval, 600000);
    EXPECT_EQ(options.executable, "");
    EXPECT_EQ(options.arguments, "");
    EXPECT_EQ(options.poolLimit, 500);
    EXPECT_EQ(options.stopWait, 5);
    EXPECT_EQ(options.stopCommand, "stop\n");
    EXPECT_EQ(options.poolDeadline, 0);
}

TEST(ProcessPool, GivesTheAnswerToARequest)
{
    ProcessPool pool;
    pool.start(workers(1));

    const auto answer = Json::parse(pool.request("[1,2]"));

    EXPECT_EQ(answer["request"].toJson(), "[1,2]");
    EXPECT_EQ(answer["number"].toInt(), 1);
}

TEST(ProcessPool, SplitsTheCommandLine)
{
    ProcessPool pool;
    pool.start(workers(1, R"(each arguments "two words" "a\"b" "")"));

    EXPECT_EQ(pool.request("1"), R"({"arguments":["each","arguments","two words","a\"b",""]})"
                                 "\n");
}

TEST(ProcessPool, StartsAllProcessesAtOnceAndKeepsThem)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string started = directory.path("started");
    ProcessPool pool;

    pool.start(workers(3, "logpid " + started));

    EXPECT_TRUE(eventually([&] { return numbersIn(started).size() == 3; }));
    std::set<int> pids;
    for (int request = 0; request < 20; ++request)
        pids.insert(pidOf(pool.request("1")));
    EXPECT_EQ(pids.size(), 1U);
    EXPECT_EQ(numbersIn(started).size(), 3U);
}

TEST(ProcessPool, StartsNothingIfNoProcessIsAskedFor)
{
    for (const std::int64_t count : {0, -1}) {
        const int threads = threadCount();
        ProcessPool pool;

        pool.start(workers(count));

        EXPECT_FALSE(hasChildren());
        EXPECT_EQ(threadCount(), threads);
        EXPECT_EQ(failureOf(pool), "There are no worker processes");
    }
}

TEST(ProcessPool, RefusesRequestsOfSeveralLines)
{
    ProcessPool pool;
    pool.start(workers(1));

    EXPECT_EQ(failureOf(pool, "1\n2"), "A request to a worker process is one line");
    EXPECT_EQ(Json::parse(pool.request("3"))["request"].toInt(), 3);
}

TEST(ProcessPool, FailsRequestsBeforeItIsStarted)
{
    ProcessPool pool;

    EXPECT_EQ(failureOf(pool), "The worker processes are not started");
    EXPECT_NO_THROW(pool.stop(1));
}

TEST(ProcessPool, StartsWithoutItsProgramAndFailsRequests)
{
    Options options = workers(2);
    options.executable = "/nowhere/worker";
    ProcessPool pool;

    EXPECT_NO_THROW(pool.start(options));

    EXPECT_EQ(failureOf(pool),
              "Cannot start the worker process | path=/nowhere/worker | error=No such file or directory");
}

TEST(ProcessPool, TriesAgainToStartAtMostOnceASecond)
{
    const Torv::Test::TemporaryDirectory directory;
    Options options = workers(2);
    options.executable = directory.path("worker");
    ProcessPool pool;
    const auto start = Clock::now();
    pool.start(options);
    EXPECT_EQ(failureOf(pool).substr(0, 31), "Cannot start the worker process");
    std::filesystem::copy_file(testWorkerPath, options.executable);

    std::string answer;
    EXPECT_TRUE(eventually([&] {
        answer = failureOf(pool, "1");
        return answer.starts_with("answered: ");
    }));

    EXPECT_GE(Clock::now() - start, 1s);
    EXPECT_LT(Clock::now() - start, 5s);
}

TEST(ProcessPool, TriesOneWhoseProgramEndsAtOnceAtMostOnceASecond)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string started = directory.path("started");
    ProcessPool pool;
    pool.start(workers(2, "logpid " + started + " leave 3"));
    ASSERT_TRUE(eventually([&] { return numbersIn(started).size() == 2 && threadCount() > 0; }));

    const auto start = Clock::now();
    int requests = 0;
    for (; Clock::now() - start < 1500ms; ++requests) {
        EXPECT_EQ(failureOf(pool).substr(0, 51), "The worker process ended before it took a request |");
        std::this_thread::sleep_for(1ms);
    }

    EXPECT_GT(requests, 50);
    EXPECT_LT(numbersIn(started).size(), 30U);
}

TEST(ProcessPool, KillsAndReplacesWhatMissesTheDeadline)
{
    Options options = workers(1, "each hangif hang answer");
    options.poolDeadline = 200;
    ProcessPool pool;
    pool.start(options);
    const int pid = pidOf(pool.request("1"));
    const auto start = Clock::now();

    EXPECT_EQ(failureOf(pool, "\"hang\""), "The worker process did not answer in time");

    EXPECT_GE(Clock::now() - start, 200ms);
    EXPECT_TRUE(eventually([&] { return !processExists(pid); }));
    EXPECT_NE(pidOf(pool.request("1")), pid);
}

TEST(ProcessPool, CountsWaitingForAProcessIntoTheDeadline)
{
    Options options = workers(1, "each sleep 500 answer");
    options.poolDeadline = 900;
    ProcessPool pool;
    pool.start(options);
    auto first = std::async(std::launch::async, [&] { return pool.request("1"); });
    std::this_thread::sleep_for(20ms);
    auto second = std::async(std::launch::async, [&] { return pool.request("2"); });
    std::this_thread::sleep_for(20ms);
    auto third = std::async(std::launch::async, [&] { return pool.request("3"); });

    EXPECT_EQ(exceptionText(first).substr(0, 8), "answered");
    EXPECT_EQ(exceptionText(second), "The worker process did not answer in time");
    const std::string last = exceptionText(third);
    EXPECT_TRUE(last == "No worker process became free in time" ||
                last == "The worker process did not answer in time")
        << last;
}

TEST(ProcessPool, HasNoDeadlineIfNoneIsSet)
{
    ProcessPool pool;
    pool.start(workers(1, "each sleep 300 answer"));

    EXPECT_EQ(Json::parse(pool.request("1"))["number"].toInt(), 1);
}

TEST(ProcessPool, LetsRequestsWaitInTheirOrder)
{
    ProcessPool pool;
    pool.start(workers(1, "each sleep 100 answer"));
    std::vector<std::future<std::string>> answers;
    for (int request = 1; request <= 4; ++request) {
        answers.push_back(std::async(std::launch::async,
                                     [&pool, request] { return pool.request(std::to_string(request)); }));
        std::this_thread::sleep_for(15ms);
    }

    for (int request = 1; request <= 4; ++request) {
        const auto answer = Json::parse(answers[static_cast<std::size_t>(request - 1)].get());
        EXPECT_EQ(answer["request"].toInt(), request);
        EXPECT_EQ(answer["number"].toInt(), request);
    }
}

TEST(ProcessPool, LetsRequestsWaitInTheirOrderForProcessesThatAnswerByTheirEnd)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string taken = directory.path("taken");
    ProcessPool pool;
    pool.start(workers(1, "each log " + taken + " sleep 100 print bye leave 0"));
    std::vector<std::future<std::string>> answers;
    for (int request = 1; request <= 4; ++request) {
        answers.push_back(std::async(std::launch::async,
                                     [&pool, request] { return pool.request(std::to_string(request)); }));
        std::this_thread::sleep_for(15ms);
    }

    for (std::future<std::string>& answer : answers)
        EXPECT_EQ(answer.get(), "bye");
    EXPECT_EQ(numbersIn(taken), (std::vector<int>{1, 2, 3, 4}));
}

TEST(ProcessPool, ReplacesAProcessThatHasServedItsRequests)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string left = directory.path("left");
    Options options = workers(1, "exit log " + left);
    options.poolLimit = 3;
    ProcessPool pool;
    pool.start(options);

    std::vector<int> numbers;
    std::set<int> pids;
    for (int request = 0; request < 7; ++request) {
        const auto answer = Json::parse(pool.request("1"));
        numbers.push_back(answer["number"].toInt());
        pids.insert(answer["pid"].toInt());
    }

    EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3, 1, 2, 3, 1}));
    EXPECT_EQ(pids.size(), 3U);
    EXPECT_TRUE(eventually([&] {
        return std::filesystem::exists(left) && std::filesystem::file_size(left) == 10;
    })) << "two stop commands";
}

TEST(ProcessPool, ReplacesNoneIfTheLimitIsNone)
{
    Options options = workers(1);
    options.poolLimit = 0;
    ProcessPool pool;
    pool.start(options);

    for (int request = 1; request <= 600; ++request)
        ASSERT_EQ(Json::parse(pool.request("1"))["number"].toInt(), request);
}

TEST(ProcessPool, ReplacesAProcessThatHasBeenIdleForLong)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string started = directory.path("started");
    const std::string left = directory.path("left");
    Options options = workers(1, "logpid " + started + " exit log " + left);
    options.poolInterval = 100;
    ProcessPool pool;

    pool.start(options);

    EXPECT_TRUE(eventually([&] { return numbersIn(started).size() >= 3; }));
    EXPECT_TRUE(eventually([&] { return std::filesystem::exists(left); }));
    EXPECT_EQ(Json::parse(pool.request("1"))["number"].toInt(), 1);
}

TEST(ProcessPool, ReplacesNoneThatIsNeverIdleForLong)
{
    Options options = workers(1);
    options.poolInterval = 2000;
    options.poolLimit = 0;
    ProcessPool pool;
    pool.start(options);
    const auto start = Clock::now();

    int requests = 0;
    for (; Clock::now() - start < 3s; ++requests)
        ASSERT_EQ(Json::parse(pool.request("1"))["number"].toInt(), requests + 1);
}

TEST(ProcessPool, KillsWhatDoesNotFollowTheStopCommand)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string told = directory.path("told");
    Options options = workers(1, "exit log " + told + " hang");
    options.poolLimit = 1;
    options.stopWait = 1;
    ProcessPool pool;
    pool.start(options);

    const int pid = pidOf(pool.request("1"));
    EXPECT_TRUE(eventually([&] { return std::filesystem::exists(told); }));
    const auto start = Clock::now();

    EXPECT_TRUE(processExists(pid));
    EXPECT_TRUE(eventually([&] { return !processExists(pid); }));
    EXPECT_GE(Clock::now() - start, 500ms);
}

TEST(ProcessPool, ReplacesAProcessThatIsFoundDeadUnnoticed)
{
    ProcessPool pool;
    pool.start(workers(1));
    for (int round = 0; round < 5; ++round) {
        const int pid = pidOf(pool.request("1"));

        ::kill(pid, SIGKILL);
        ASSERT_TRUE(eventually([&] { return !processRuns(pid); }));

        EXPECT_NE(pidOf(pool.request("1")), pid);
    }
}

TEST(ProcessPool, BuriesAProcessThatDiesWhileItIsIdle)
{
    ProcessPool pool;
    pool.start(workers(1));
    const int pid = pidOf(pool.request("1"));

    ::kill(pid, SIGKILL);

    EXPECT_TRUE(eventually([&] { return !processExists(pid); }));
}

TEST(ProcessPool, FailsOnlyTheRequestThatAProcessDiesOf)
{
    ProcessPool pool;
    pool.start(workers(2, "each crashif crash answer"));

    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(failureOf(pool, "\"crash\""), "The worker process died | signal=6");
        EXPECT_EQ(Json::parse(pool.request("5"))["request"].toInt(), 5);
    }
}

TEST(ProcessPool, StopsIdleProcessesByTheStopCommand)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string told = directory.path("told");
    const int descriptors = descriptorCount();
    const int threads = threadCount();
    Options options = workers(3, "exit log " + told);
    options.stopCommand = "{\"command\":\"exit\"}\n";
    ProcessPool pool;
    pool.start(options);
    pool.request("1");

    pool.stop(5);

    EXPECT_EQ(std::filesystem::file_size(told), 57U) << "three lines";
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(descriptorCount(), descriptors);
    EXPECT_EQ(threadCount(), threads);
    EXPECT_EQ(failureOf(pool), "The worker processes are not started");
    EXPECT_NO_THROW(pool.stop(5));
}

TEST(ProcessPool, StopsBehindTheRequestsThatAreBeingWorkedOn)
{
    ProcessPool pool;
    pool.start(workers(1, "each sleep 300 answer"));
    auto working = std::async(std::launch::async, [&] { return pool.request("1"); });
    std::this_thread::sleep_for(50ms);
    auto waiting = std::async(std::launch::async, [&] { return pool.request("2"); });
    std::this_thread::sleep_for(50ms);

    pool.stop(20);

    EXPECT_EQ(Json::parse(working.get())["request"].toInt(), 1);
    EXPECT_EQ(exceptionText(waiting), "The worker processes are stopped");
    EXPECT_FALSE(hasChildren());
}

TEST(ProcessPool, KillsWhatStillWorksWhenStoppingTakesTooLong)
{
    ProcessPool pool;
    pool.start(workers(2, "each hang"));
    auto working = std::async(std::launch::async, [&] { return pool.request("1"); });
    std::this_thread::sleep_for(50ms);
    const auto start = Clock::now();

    pool.stop(1);

    EXPECT_GE(Clock::now() - start, 900ms);
    EXPECT_EQ(exceptionText(working), "The worker process died | signal=9");
    EXPECT_FALSE(hasChildren());
}

TEST(ProcessPool, StopsWithItsObject)
{
    {
        ProcessPool pool;
        pool.start(workers(2));
        EXPECT_TRUE(hasChildren());
    }

    EXPECT_FALSE(hasChildren());
}

TEST(ProcessPool, MayBeStartedAgain)
{
    ProcessPool pool;
    pool.start(workers(1));
    const int first = pidOf(pool.request("1"));

    pool.start(workers(1));
    const int second = pidOf(pool.request("1"));
    pool.stop(5);
    pool.start(workers(1));
    const int third = pidOf(pool.request("1"));

    EXPECT_FALSE(processExists(first));
    EXPECT_FALSE(processExists(second));
    EXPECT_TRUE(processExists(third));
}

/// Leaves without ending the pool, as a host does that crashes.
[[noreturn]] void leaveWorkersBehind(const std::string& started)
{
    ProcessPool pool;
    pool.start(workers(2, "logpid " + started));
    pool.request("1");
    eventually([&] { return numbersIn(started).size() == 2; });
    std::_Exit(0);
}

TEST(ProcessPoolDeathTest, LeavesNoWorkerBehindAHostThatDies)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::string started = (std::filesystem::temp_directory_path() / "torv-left-workers").string();
    if (GTEST_FLAG_GET(internal_run_death_test).empty())
        std::filesystem::remove(started);

    EXPECT_EXIT(leaveWorkersBehind(started), testing::ExitedWithCode(0), "");

    const std::vector<int> pids = numbersIn(started);
    EXPECT_EQ(pids.size(), 2U);
    for (const int pid : pids)
        EXPECT_TRUE(eventually([&] { return !processRuns(pid); }));
    std::filesystem::remove(started);
}

TEST(ProcessPool, LeavesTheProcessesToTheParentInAForkedChild)
{
    auto pool = std::make_unique<ProcessPool>();
    pool->start(workers(1));
    const int worker = pidOf(pool->request("1"));

    const pid_t child = ::fork();
    if (child == 0) {
        const bool refused =
            failureOf(*pool) == "The worker processes belong to the process that forked this one";
        pool.reset();
        ::_exit(refused ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);

    EXPECT_EQ(status, 0);
    EXPECT_EQ(pidOf(pool->request("1")), worker);
}

TEST(ProcessPool, MayBeStoppedAndStartedAnewInAForkedProcess)
{
    ProcessPool pool;
    pool.start(workers(2));
    const int worker = pidOf(pool.request("1"));

    const pid_t child = ::fork();
    if (child == 0) {
        const auto start = std::chrono::steady_clock::now();
        pool.stop(5);
        const bool isQuick = std::chrono::steady_clock::now() - start < std::chrono::milliseconds(500);
        const bool isStopped = failureOf(pool) == "The worker processes are not started";
        pool.start(workers(1));
        const bool isAnew = pidOf(pool.request("1")) != worker;
        pool.stop(0);
        ::_exit(isQuick && isStopped && isAnew ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);

    EXPECT_EQ(status, 0);
    EXPECT_EQ(pidOf(pool.request("1")), worker);
}

} // namespace
} // namespace Torv::Async::ProcessPool
