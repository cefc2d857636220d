#include "Torv/Async/ProcessPool/Worker.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

#include "Torv/GenericException.h"
#include "Torv/SystemError.h"

namespace Torv::Async::ProcessPool
{
namespace
{

// A process that has closed its output is about to end. One that does not is not waited for.
constexpr std::chrono::seconds endingTime{1};

/// Milliseconds for poll, rounded up, so that it never returns before the time.
int untilThen(const Deadline& deadline)
{
    if (!deadline)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

/// False at the deadline.
template <std::size_t count> bool pollUntil(std::array<pollfd, count>& polled, const Deadline& deadline)
{
    for (;;) {
        const int timeout = untilThen(deadline);
        const int ready = ::poll(polled.data(), polled.size(), timeout);
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            throw GenericException("Cannot wait for the worker process | error=" + systemError(errno));
        if (ready == 0 && deadline && Clock::now() >= *deadline)
            return false;
    }
}

} // namespace

Worker::Worker(const std::string& executable, const std::vector<std::string>& arguments)
    : m_process(executable, arguments)
{
}

std::optional<std::string> Worker::ask(std::string_view request, const Deadline& deadline)
{
    std::string_view unsent = request;
    if (!isInStep())
        return std::nullopt;
    send(unsent);
    for (;;) {
        const bool hasEnded = waitFor(!unsent.empty(), deadline);
        send(unsent);
        const Received received = receive();
        if (received == Received::Bytes) {
            const bool hasAnswered = findAnswer();
            // What already came behind the answer belongs to the next one.
            if ((hasAnswered ? m_lineStart : m_received.size()) > maxAnswerSize)
                fail("The worker process answered too much | limit=" + std::to_string(maxAnswerSize));
            if (hasAnswered)
                return takeAnswer();
        } else if (received == Received::End || hasEnded) {
            if (hasReadNothingOf(request.size() - unsent.size()))
                return std::nullopt;
            return takeLastWords(deadline);
        }
    }
}

// Lines of its own may come at any time, but an answer that nobody asked for would be taken for the next one.
bool Worker::isInStep()
{
    // What came together with the answer before has not been looked at.
    if (findAnswer())
        return false;
    for (;;) {
        switch (receive()) {
        case Received::Bytes:
            if (findAnswer() || m_received.size() > maxAnswerSize)
                return false;
            break;
        case Received::NothingYet: return m_received.size() == m_lineStart || m_received[m_lineStart] != '{';
        case Received::End: return false;
        }
    }
}

/// Takes off what the pipe has room for.
void Worker::send(std::string_view& unsent)
{
    while (!unsent.empty()) {
        const ssize_t count = ::write(m_process.input().number(), unsent.data(), unsent.size());
        if (count >= 0)
            unsent.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return;
    }
}

Worker::Received Worker::receive()
{
    std::array<char, 16384> buffer;
    for (;;) {
        const ssize_t count = ::read(m_process.output().number(), buffer.data(), buffer.size());
        if (count > 0) {
            m_received.append(buffer.data(), static_cast<std::size_t>(count));
            return Received::Bytes;
        }
        if (count == 0)
            return Received::End;
        if (errno != EINTR)
            return Received::NothingYet;
    }
}

/// Whether an answer has come; it reaches to m_lineStart.
bool Worker::findAnswer()
{
    for (;;) {
        const std::size_t lineEnd = m_received.find('\n', m_scanned);
        if (lineEnd == std::string::npos) {
            m_scanned = m_received.size();
            return false;
        }
        const bool isAnswer = m_received[m_lineStart] == '{';
        m_scanned = m_lineStart = lineEnd + 1;
        if (isAnswer)
            return true;
    }
}

std::string Worker::takeAnswer()
{
    std::string answer = m_received.substr(0, m_lineStart);
    m_received.erase(0, m_lineStart);
    m_scanned = m_lineStart = 0;
    return answer;
}

/// All that came, though there is no answer in it.
std::string Worker::takeAll()
{
    m_scanned = m_lineStart = 0;
    return std::exchange(m_received, {});
}

std::string Worker::takeLastWords(const Deadline& deadline)
{
    m_isOver = true;
    const auto patience = Clock::now() + endingTime;
    std::array<pollfd, 1> polled{{{m_process.watch().number(), POLLIN, 0}}};
    if (!pollUntil(polled, std::min(deadline.value_or(patience), patience))) {
        kill();
        return takeAll();
    }
    if (!m_process.hasSucceeded())
        fail("The worker process died" + ending());
    return takeAll();
}

/// Of a request of which so many bytes were written.
bool Worker::hasReadNothingOf(std::size_t written) const
{
    int unread = 0;
    return ::ioctl(m_process.input().number(), FIONREAD, &unread) == 0 &&
           static_cast<std::size_t>(unread) == written;
}

/// Whether the process has ended; all that it wrote is there to be read then. Its output alone does not tell,
/// since other processes may hold that too.
bool Worker::waitFor(bool isSending, const Deadline& deadline) const
{
    std::array<pollfd, 3> polled{{{m_process.output().number(), POLLIN, 0},
                                  {m_process.watch().number(), POLLIN, 0},
                                  {isSending ? m_process.input().number() : -1, POLLOUT, 0}}};
    if (!pollUntil(polled, deadline))
        fail("The worker process did not answer in time");
    return polled[1].revents != 0;
}

void Worker::dismiss(std::string_view stopCommand)
{
    send(stopCommand);
    m_process.closeInput();
}

void Worker::fail(const std::string& message) const
{
    kill();
    throw GenericException(message);
}

} // namespace Torv::Async::ProcessPool
