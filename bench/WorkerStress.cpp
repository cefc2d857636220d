// Puts requests to worker processes: what one costs beside the bare pipes, and what becomes of many from many
// threads while workers are killed. Ends with 1 if a request is lost, gets another's answer, or leaves
// something behind.
//
//     bench_WorkerStress [REQUESTS [THREADS]]

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <sched.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "Torv/Async/ProcessPool/Process.h"
#include "Torv/Async/ProcessPool/ProcessPool.h"
#include "Torv/GenericException.h"

namespace
{

using Clock = std::chrono::steady_clock;
using Torv::Async::ProcessPool::Options;
using Torv::Async::ProcessPool::Process;
using Torv::Async::ProcessPool::ProcessPool;

constexpr const char* worker = JOBPARSER_BENCH_WORKER;
// As long as a request to parse.
const std::string usualRequest =
    R"({"command":"parse","pdl":1,"jobPath":"/var/spool/jobs/2026/11/21/000123456.prn","grayscaleTolerance":0})";

double secondsOf(const auto& work)
{
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
    return values[values.size() / 2];
}

/// The same worker without a pool, with pipes that block.
class BarePipes
{
public:
    BarePipes() : m_process(worker, {})
    {
        for (const int number : {m_process.input().number(), m_process.output().number()})
            ::fcntl(number, F_SETFL, ::fcntl(number, F_GETFL) & ~O_NONBLOCK);
    }

    void roundTrip()
    {
        const std::string line = usualRequest + '\n';
        if (::write(m_process.input().number(), line.data(), line.size()) !=
            static_cast<ssize_t>(line.size()))
            throw Torv::GenericException("The worker takes no request");
        char answer[4096];
        ssize_t size = 0;
        do {
            const ssize_t count = ::read(m_process.output().number(), answer + size,
                                         sizeof answer - static_cast<std::size_t>(size));
            if (count <= 0)
                throw Torv::GenericException("The worker gives no answer");
            size += count;
        } while (answer[size - 1] != '\n');
    }

private:
    Process m_process;
};

/// Keeps this thread, and what it starts, on one processor: waking a process on another one costs more than
/// all the rest, and happens by chance.
class OneProcessor
{
public:
    OneProcessor()
    {
        cpu_set_t one;
        CPU_ZERO(&one);
        ::sched_getaffinity(0, sizeof m_all, &m_all);
        CPU_SET(static_cast<std::size_t>(std::max(::sched_getcpu(), 0)), &one);
        ::sched_setaffinity(0, sizeof one, &one);
    }
    ~OneProcessor() { ::sched_setaffinity(0, sizeof m_all, &m_all); }
    OneProcessor(const OneProcessor&) = delete;
    OneProcessor& operator=(const OneProcessor&) = delete;

private:
    cpu_set_t m_all{};
};

void measureOneRequest()
{
    constexpr int rounds = 41;
    constexpr int requests = 1000;
    const OneProcessor pinned;
    BarePipes bare;
    ProcessPool pool;
    Options options;
    options.processCount = 1;
    options.poolLimit = 0;
    options.poolDeadline = 300000;
    options.executable = worker;
    pool.start(options);
    const auto repeated = [](const auto& work) {
        for (int request = 0; request < requests; ++request)
            work();
    };
    const auto askPool = [&] { repeated([&] { pool.request(usualRequest); }); };
    const auto askBare = [&] { repeated([&] { bare.roundTrip(); }); };

    std::vector<double> ratios;
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const bool poolFirst = round % 2 == 0;
        const double first = poolFirst ? secondsOf(askPool) : secondsOf(askBare);
        const double second = poolFirst ? secondsOf(askBare) : secondsOf(askPool);
        ratios.push_back(poolFirst ? first / second : second / first);
        times.push_back((poolFirst ? first : second) / requests * 1e6);
    }
    std::printf("a request: %.2f of a bare pipe round trip, %.1f us\n", median(ratios), median(times));
}

std::vector<pid_t> children()
{
    std::vector<pid_t> pids;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "children");
        for (pid_t pid = 0; file >> pid;)
            pids.push_back(pid);
    }
    return pids;
}

std::ptrdiff_t countOf(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

bool hasChildren()
{
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

struct Tally {
    std::atomic<int> answered{0};
    std::atomic<int> failed{0};
    std::atomic<int> wrong{0};
    std::atomic<int> kills{0};
};

void ask(ProcessPool& pool, int thread, int requests, Tally& tally)
{
    for (int number = 0; number < requests; ++number) {
        const std::string request = '"' + std::to_string(thread) + ':' + std::to_string(number) + '"';
        try {
            const std::string start = R"({"request":)" + request + ',';
            ++(pool.request(request).starts_with(start) ? tally.answered : tally.wrong);
        } catch (const Torv::GenericException&) {
            ++tally.failed;
        }
    }
}

void killAtRandom(const std::atomic<bool>& done, Tally& tally)
{
    std::minstd_rand random(1);
    while (!done) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
        const std::vector<pid_t> pids = children();
        if (pids.empty())
            continue;
        ::kill(pids[random() % pids.size()], SIGKILL);
        ++tally.kills;
    }
}

/// Whether every request ended as it should and nothing is left.
bool stress(int workers, int requests, int threadCount)
{
    const auto descriptors = countOf("/proc/self/fd");
    const auto threadsBefore = countOf("/proc/self/task");
    Tally tally;
    const double seconds = secondsOf([&] {
        ProcessPool pool;
        Options options;
        options.processCount = workers;
        options.executable = worker;
        pool.start(options);
        std::atomic<bool> done{false};
        std::thread killer([&] { killAtRandom(done, tally); });
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            const int share = requests / threadCount + (thread < requests % threadCount ? 1 : 0);
            threads.emplace_back([&pool, &tally, thread, share] { ask(pool, thread, share, tally); });
        }
        for (std::thread& thread : threads)
            thread.join();
        done = true;
        killer.join();
    });
    const auto leftDescriptors = countOf("/proc/self/fd") - descriptors;
    const auto leftThreads = countOf("/proc/self/task") - threadsBefore;
    const int lost = requests - tally.answered - tally.failed - tally.wrong;
    std::printf(
        "%d workers, %d threads, %d requests, %d kills: %d answered, %d failed, %d wrong, %d lost; left: "
        "%d descriptors, %d threads, %s; %.0f requests a second\n",
        workers, threadCount, requests, tally.kills.load(), tally.answered.load(), tally.failed.load(),
        tally.wrong.load(), lost, static_cast<int>(leftDescriptors), static_cast<int>(leftThreads),
        hasChildren() ? "processes" : "no process", requests / seconds);
    return tally.wrong == 0 && lost == 0 && leftDescriptors == 0 && leftThreads == 0 && !hasChildren();
}

int numberFrom(int argc, char** argv, int place, int usual)
{
    if (place < argc)
        std::from_chars(argv[place], argv[place] + std::strlen(argv[place]), usual);
    return usual;
}

} // namespace

int main(int argc, char** argv)
{
    const int requests = numberFrom(argc, argv, 1, 100000);
    const int threads = numberFrom(argc, argv, 2, 64);
    measureOneRequest();
    bool isRight = true;
    for (const int workers : {2, 4, 8})
        isRight = stress(workers, requests, threads) && isRight;
    return isRight ? 0 : 1;
}
