#include "worker/Sandbox.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <optional>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "worker/ParentDeath.h"
#include "worker/WorkerException.h"

#include "Torv/SystemError.h"

namespace JobParser::Worker
{
namespace
{

// The first byte of what a child says: whether a text or an error with its number follows.
constexpr char saysText = 'T';
constexpr char saysError = 'E';

constexpr std::int64_t longestPoll = 1 << 30;

// For a request that may come whenever it likes.
constexpr std::chrono::milliseconds longestWait = std::chrono::hours(24 * 3650);

constexpr const char* tooMuch = "The job takes more time or memory than it may";

constexpr std::size_t longestMessage = std::size_t{4} << 20;

/// What one process says to the other; a NUL tells that nothing was cut off.
struct Message {
    std::string text;
    bool isWhole = false;
};

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

std::string replyOf(const Sandbox::Work& work, const std::string& request)
{
    try {
        return saysText + work(request);
    } catch (const WorkerException& error) {
        return errorReply(error.code(), error.what());
    } catch (const std::bad_alloc&) {
        return errorReply(static_cast<int>(ErrorCode::Limit), "The job takes more memory than it may");
    } catch (const std::exception& error) {
        return errorReply(static_cast<int>(ErrorCode::BadDocument), error.what());
    }
}

/// The text that comes up to a NUL, without it; less if the other side closed; nothing if it did not come in
/// time.
std::optional<Message> receive(int input, std::chrono::milliseconds wall)
{
    const auto deadline = std::chrono::steady_clock::now() + wall;
    Message message;
    std::array<char, 4096> buffer;
    while (message.text.size() <= longestMessage) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return std::nullopt;
        pollfd entry{input, POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>(std::min<std::int64_t>(left.count(), longestPoll))) <= 0)
            continue;
        const ssize_t count = ::read(input, buffer.data(), buffer.size());
        if (count == 0)
            break;
        if (count < 0)
            continue;
        message.text.append(buffer.data(), static_cast<std::size_t>(count));
        if (message.text.back() == '\0') {
            message.text.pop_back();
            message.isWhole = true;
            break;
        }
    }
    return message;
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
    if (!WIFSIGNALED(status))
        throw WorkerException(ErrorCode::Failed, "The job ended its process");
    const int signal = WTERMSIG(status);
    if (signal == SIGXCPU || signal == SIGKILL)
        throw WorkerException(ErrorCode::Limit, tooMuch);
    if (signal == SIGXFSZ)
        throw WorkerException(ErrorCode::Limit, "The job writes a larger file than it may");
    throw WorkerException(ErrorCode::Failed, "The job ended its process by signal " + std::to_string(signal));
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

Sandbox::~Sandbox()
{
    m_requests.close();
    if (m_child > 0)
        m_ended = end(m_child);
    bury();
}

void Sandbox::prepare()
{
    bury();
    if (m_child > 0)
        return;
    std::array<int, 2> requests{};
    std::array<int, 2> replies{};
    if (::pipe2(requests.data(), O_CLOEXEC) != 0)
        throw WorkerException(ErrorCode::Failed, Torv::systemError(errno));
    Descriptor input(requests[0]);
    m_requests = Descriptor(requests[1]);
    if (::pipe2(replies.data(), O_CLOEXEC) != 0)
        throw WorkerException(ErrorCode::Failed, Torv::systemError(errno));
    m_replies = Descriptor(replies[0]);
    Descriptor output(replies[1]);
    const pid_t self = ::getpid();
    m_child = ::fork();
    if (m_child < 0)
        throw WorkerException(ErrorCode::Failed, Torv::systemError(errno));
    if (m_child == 0)
        runChild(input.get(), output.get(), self);
    ::setpgid(m_child, m_child);
}

std::string Sandbox::run(const std::string& request)
{
    prepare();
    std::string message = request;
    message += '\0';
    const pid_t child = std::exchange(m_child, -1);
    // If it cannot be told it is gone, which shows when it does not answer.
    writeAll(m_requests.get(), message);
    const std::optional<Message> reply = receive(m_replies.get(), m_limits.wall);
    m_ended = end(child);
    if (reply && reply->isWhole && !reply->text.empty())
        return textOf(reply->text);
    const int status = waitFor(std::exchange(m_ended, -1));
    if (!reply)
        throw WorkerException(ErrorCode::Limit, tooMuch);
    failByStatus(status);
}

// Ends the child with all programs that it started. It is waited for later.
pid_t Sandbox::end(pid_t child)
{
    ::kill(-child, SIGKILL);
    return child;
}

void Sandbox::bury()
{
    if (m_ended > 0)
        waitFor(m_ended);
    m_ended = -1;
}

void Sandbox::runChild(int input, int output, pid_t parent)
{
    ::setpgid(0, 0);
    endWithParent(parent);
    // With the other ends in its own hands the child would not see that nobody has them any more.
    m_requests.close();
    m_replies.close();
    applyLimits();
    const std::optional<Message> request = receive(input, longestWait);
    if (request && request->isWhole) {
        std::string reply = replyOf(m_work, request->text);
        std::replace(reply.begin(), reply.end(), '\0', ' ');
        reply += '\0';
        writeAll(output, reply);
    }
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
