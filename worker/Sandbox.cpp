#include "worker/Sandbox.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <optional>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "worker/Descriptor.h"
#include "worker/WorkerException.h"

#include "Torv/SystemError.h"

namespace JobParser::Worker
{
namespace
{

// The first byte of what a child says: whether a text or an error with its number follows.
constexpr char saysText = 'T';
constexpr char saysError = 'E';

constexpr std::size_t longestReply = std::size_t{1} << 20;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool limitsMemory = false; // The sanitizer's own map takes terabytes of address space.
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool limitsMemory = false;
#else
constexpr bool limitsMemory = true;
#endif
#else
constexpr bool limitsMemory = true;
#endif

void setLimit(__rlimit_resource resource, rlim_t soft, rlim_t hard)
{
    const rlimit limit{soft, hard};
    ::setrlimit(resource, &limit);
}

std::string errorReply(int code, const char* message)
{
    return saysError + std::to_string(code) + ' ' + message;
}

std::string replyOf(const std::function<std::string()>& work)
{
    try {
        return saysText + work();
    } catch (const WorkerException& error) {
        return errorReply(error.code(), error.what());
    } catch (const std::bad_alloc&) {
        return errorReply(static_cast<int>(ErrorCode::Limit), "The job takes more memory than it may");
    } catch (const std::exception& error) {
        return errorReply(static_cast<int>(ErrorCode::BadDocument), error.what());
    }
}

/// What the child said; nothing if it did not end in time.
std::optional<std::string> readAll(int input, std::chrono::milliseconds wall)
{
    const auto deadline = std::chrono::steady_clock::now() + wall;
    std::string text;
    std::array<char, 4096> buffer;
    while (text.size() <= longestReply) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return std::nullopt;
        pollfd entry{input, POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>(left.count())) <= 0)
            continue;
        const ssize_t count = ::read(input, buffer.data(), buffer.size());
        if (count == 0)
            break;
        if (count > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
}

int waitFor(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

[[noreturn]] void failByStatus(int status)
{
    if (WIFSIGNALED(status) && (WTERMSIG(status) == SIGXCPU || WTERMSIG(status) == SIGKILL))
        throw WorkerException(ErrorCode::Limit, "The job takes more time than it may");
    if (WIFSIGNALED(status))
        throw WorkerException(ErrorCode::Failed,
                              "The job ended its process by signal " + std::to_string(WTERMSIG(status)));
    throw WorkerException(ErrorCode::Failed, "The job ended its process");
}

std::string textOf(const std::string& reply)
{
    if (reply[0] == saysText)
        return reply.substr(1);
    const std::size_t blank = reply.find(' ');
    throw WorkerException(static_cast<ErrorCode>(std::stoi(reply.substr(1, blank - 1))),
                          reply.substr(blank + 1));
}

} // namespace

std::string Sandbox::run(const std::function<std::string()>& work) const
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw WorkerException(ErrorCode::Failed, Torv::systemError(errno));
    Descriptor input(ends[0]);
    Descriptor output(ends[1]);
    const pid_t child = ::fork();
    if (child < 0)
        throw WorkerException(ErrorCode::Failed, Torv::systemError(errno));
    if (child == 0)
        runChild(output.get(), work);
    ::setpgid(child, child);
    output.close();
    const std::optional<std::string> reply = readAll(input.get(), m_limits.wall);
    // Programs that the child started end with it.
    ::kill(-child, SIGKILL);
    const bool isWhole = reply && !reply->empty() && reply->back() == '\n';
    const int status = waitFor(child);
    if (!reply)
        throw WorkerException(ErrorCode::Limit, "The job takes more time than it may");
    if (!isWhole)
        failByStatus(status);
    return textOf(reply->substr(0, reply->size() - 1));
}

void Sandbox::runChild(int output, const std::function<std::string()>& work) const
{
    ::setpgid(0, 0);
    // Nobody would end the child if this process were killed.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    applyLimits();
    // The line feed tells that nothing was cut off.
    const std::string reply = replyOf(work) + '\n';
    writeAll(output, reply);
    ::_exit(0);
}

void Sandbox::applyLimits() const
{
    const auto seconds = static_cast<rlim_t>(m_limits.processor.count());
    setLimit(RLIMIT_CPU, seconds, seconds + 1);
    setLimit(RLIMIT_CORE, 0, 0);
    setLimit(RLIMIT_FSIZE, static_cast<rlim_t>(m_limits.fileSize), static_cast<rlim_t>(m_limits.fileSize));
    if (limitsMemory && m_limits.memory > 0)
        setLimit(RLIMIT_AS, static_cast<rlim_t>(m_limits.memory), static_cast<rlim_t>(m_limits.memory));
}

} // namespace JobParser::Worker
