#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "tests/Torv/Async/ProcessPool/TestWorkers.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/Children.h"

#include "Torv/Async/ProcessPool/ProcessPool.h"
#include "Torv/GenericException.h"
#include "Torv/Json/Json.h"

namespace Torv::Async::ProcessPool
{
namespace
{

using namespace std::chrono_literals;

struct Tally {
    std::atomic<int> answered{0};
    std::atomic<int> failed{0};
    std::atomic<int> wrong{0};
};

void ask(ProcessPool& pool, const std::string& name, int requests, Tally& tally)
{
    for (int number = 0; number < requests; ++number) {
        const std::string request = '"' + name + ':' + std::to_string(number) + '"';
        try {
            const auto answer = Json::parse(pool.request(request));
            ++(answer["request"].toJson() == request ? tally.answered : tally.wrong);
        } catch (const GenericException&) {
            ++tally.failed;
        }
    }
}

TEST(ProcessPoolThreads, GetEachItsOwnAnswer)
{
    constexpr int threadsOfTest = 16;
    constexpr int requests = 100;
    Tally tally;
    {
        ProcessPool pool;
        Options options = workers(3);
        options.poolLimit = 40;
        pool.start(options);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadsOfTest; ++thread)
            threads.emplace_back([&, thread] { ask(pool, std::to_string(thread), requests, tally); });
        for (std::thread& thread : threads)
            thread.join();
    }

    EXPECT_EQ(tally.answered, 1600);
    EXPECT_EQ(tally.failed, 0);
    EXPECT_EQ(tally.wrong, 0);
    EXPECT_FALSE(hasChildren());
}

TEST(ProcessPoolThreads, GetAnAnswerOrAnErrorWhileWorkersAreKilled)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string started = directory.path("started");
    const int descriptors = descriptorCount();
    Tally tally;
    {
        ProcessPool pool;
        pool.start(workers(3, "logpid " + started));
        std::vector<std::thread> threads;
        std::atomic<bool> done{false};
        std::thread killer([&] {
            for (std::size_t victim = 0; !done; std::this_thread::sleep_for(5ms)) {
                const std::vector<int> pids = numbersIn(started);
                if (!pids.empty() && processRuns(pids[victim % pids.size()]))
                    ::kill(pids[victim % pids.size()], SIGKILL);
                ++victim;
            }
        });
        for (int thread = 0; thread < 16; ++thread)
            threads.emplace_back([&, thread] { ask(pool, std::to_string(thread), 100, tally); });
        for (std::thread& thread : threads)
            thread.join();
        done = true;
        killer.join();
    }

    EXPECT_EQ(tally.answered + tally.failed, 1600);
    EXPECT_GT(tally.answered, 0);
    EXPECT_EQ(tally.wrong, 0);
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(descriptorCount(), descriptors);
}

TEST(ProcessPoolThreads, MayStopAndStartWhileOthersAsk)
{
    Tally tally;
    {
        ProcessPool pool;
        pool.start(workers(2));
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 8; ++thread)
            threads.emplace_back([&, thread] { ask(pool, std::to_string(thread), 100, tally); });
        for (int round = 0; round < 5; ++round) {
            pool.stop(5);
            pool.start(workers(2));
        }
        for (std::thread& thread : threads)
            thread.join();
    }

    EXPECT_EQ(tally.answered + tally.failed, 800);
    EXPECT_EQ(tally.wrong, 0);
    EXPECT_FALSE(hasChildren());
}

} // namespace
} // namespace Torv::Async::ProcessPool
