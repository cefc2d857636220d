#pragma once

#include <cerrno>
#include <chrono>
#include <csignal>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

// What a test asks about the processes that it has started.

inline constexpr const char* testWorkerPath = JOBPARSER_TEST_WORKER;

/// Whether this process has children, dead ones that nobody waited for included.
inline bool hasChildren()
{
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

/// Whether there is a process of this number, alive or a zombie.
inline bool processExists(int pid)
{
    return ::kill(pid, 0) == 0;
}

/// Whether a process of this number runs. It need not be a child.
inline bool processRuns(int pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t name = text.rfind(')');
    return name != std::string::npos && text.compare(name, 3, ") Z") != 0;
}

/// The numbers that TestWorker's actions `log` and `logpid` wrote.
inline std::vector<int> numbersIn(const std::string& path)
{
    std::ifstream file(path);
    return std::vector<int>(std::istream_iterator<int>(file), std::istream_iterator<int>());
}

/// The open descriptors of this process.
inline int descriptorCount()
{
    int count = 0;
    DIR* const folder = ::opendir("/proc/self/fd");
    while (::readdir(folder) != nullptr)
        ++count;
    ::closedir(folder);
    return count;
}

inline int threadCount()
{
    int count = 0;
    DIR* const folder = ::opendir("/proc/self/task");
    while (::readdir(folder) != nullptr)
        ++count;
    ::closedir(folder);
    return count - 2; // Without the folder itself and the one above.
}

/// Waits until the condition holds, ten seconds at most; gives whether it does.
template <typename Condition> bool eventually(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
