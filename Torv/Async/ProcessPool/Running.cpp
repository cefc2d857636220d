#include "Torv/Async/ProcessPool/Running.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

#include "Torv/Async/ProcessPool/Arguments.h"
#include "Torv/GenericException.h"
#include "Torv/ScopeGuard.h"
#include "Torv/SystemError.h"

namespace Torv::Async::ProcessPool
{
namespace
{

constexpr std::chrono::seconds retryInterval{1};
// So many more than the pool has may end in a row before they took a request, since others may kill them.
constexpr std::int64_t mostStillborn = 10;
constexpr const char* stoppedText = "The worker processes are stopped";

Descriptor makeWake()
{
    Descriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (wake.number() < 0)
        throw GenericException("Cannot create an event | error=" + systemError(errno));
    return wake;
}

/// Keeps signals from the threads that are started while it exists: handlers are for the host's own.
class AllSignalsBlocked
{
public:
    AllSignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_former);
    }
    ~AllSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

private:
    sigset_t m_former{};
};

} // namespace

ProcessPool::Running::Running(const Options& options)
    : m_options(options), m_arguments(splitArguments(options.arguments)), m_wake(makeWake())
{
    if (m_options.processCount < 1)
        return;
    Lock lock(m_mutex);
    while (liveCount() < m_options.processCount && startOne(lock)) {
    }
    const AllSignalsBlocked blocked;
    m_keeper = std::thread([this] { keep(); });
}

ProcessPool::Running::~Running()
{
    stop(0);
}

std::string ProcessPool::Running::request(const std::string& line)
{
    Deadline deadline;
    if (m_options.poolDeadline > 0)
        deadline = Clock::now() + wholeMilliseconds(m_options.poolDeadline);
    for (;;) {
        Member& member = take(deadline);
        ScopeGuard dropping([&] { dropFailed(member); });
        std::optional<std::string> answer = member.worker->ask(line, deadline);
        dropping.disarm();
        if (answer) {
            giveBack(member);
            return *std::move(answer);
        }
        dropUnasked(member);
    }
}

ProcessPool::Running::Member& ProcessPool::Running::take(const Deadline& deadline)
{
    Lock lock(m_mutex);
    if (m_options.processCount < 1)
        throw GenericException("There are no worker processes");
    if (m_stopAt)
        throw GenericException(stoppedText);
    if (m_idle.empty())
        return waitInLine(lock, deadline);
    Member& member = *m_idle.back();
    m_idle.pop_back();
    changeState(member, State::Busy);
    return member;
}

ProcessPool::Running::Member& ProcessPool::Running::waitInLine(Lock& lock, const Deadline& deadline)
{
    if (liveCount() == 0 && Clock::now() < m_retryAt)
        throw GenericException(m_failure);
    Waiter waiter;
    m_waiters.push_back(&waiter);
    if (liveCount() < m_options.processCount)
        wakeKeeper();
    const auto isDone = [&] { return waiter.member != nullptr || !waiter.failure.empty(); };
    if (!deadline)
        waiter.ready.wait(lock, isDone);
    else if (!waiter.ready.wait_until(lock, *deadline, isDone)) {
        std::erase(m_waiters, &waiter);
        throw GenericException("No worker process became free in time");
    }
    if (waiter.member == nullptr)
        throw GenericException(waiter.failure);
    return *waiter.member;
}

/// Gives a worker to the request that has waited longest, or lets it wait for one.
void ProcessPool::Running::handOut(Member& member)
{
    if (m_stopAt || member.hasEnded) {
        leave(member, State::Leaving);
    } else if (m_waiters.empty()) {
        changeState(member, State::Idle);
        m_idle.push_back(&member);
    } else {
        Waiter& waiter = *m_waiters.front();
        m_waiters.pop_front();
        changeState(member, State::Busy);
        waiter.member = &member;
        waiter.ready.notify_one();
    }
}

void ProcessPool::Running::giveBack(Member& member)
{
    const std::lock_guard lock(m_mutex);
    m_stillborn = 0;
    ++member.served;
    const bool isSpent = m_options.poolLimit >= 1 && member.served >= m_options.poolLimit;
    if (!isSpent && !member.worker->isOver()) {
        handOut(member);
        return;
    }
    ++m_toReplace;
    leave(member, State::Leaving);
}

void ProcessPool::Running::dropUnasked(Member& member)
{
    const std::lock_guard lock(m_mutex);
    countStillborn(member);
    member.worker->kill();
    leave(member, State::Killed);
}

void ProcessPool::Running::dropFailed(Member& member)
{
    const std::lock_guard lock(m_mutex);
    ++m_toReplace;
    member.worker->kill();
    leave(member, State::Killed);
}

void ProcessPool::Running::changeState(Member& member, State state)
{
    member.state = state;
    member.since = Clock::now();
}

void ProcessPool::Running::leave(Member& member, State state)
{
    changeState(member, state);
    wakeKeeper();
}

/// A program that starts and ends at once would be started over and over again.
void ProcessPool::Running::countStillborn(const Member& member)
{
    if (member.served != 0)
        return;
    ++m_stillborn;
    if (m_stillborn <= m_options.processCount + mostStillborn)
        return;
    m_failure = "The worker process ended before it took a request | path=" + m_options.executable +
                member.worker->ending();
    m_retryAt = Clock::now() + retryInterval;
}

void ProcessPool::Running::failWaiters(const std::string& failure)
{
    for (Waiter* const waiter : m_waiters) {
        waiter->failure = failure;
        waiter->ready.notify_one();
    }
    m_waiters.clear();
}

/// Processes that take requests, or will.
std::int64_t ProcessPool::Running::liveCount() const
{
    return m_starting + std::count_if(m_members.begin(), m_members.end(), [](const Member& member) {
               return member.state == State::Idle || member.state == State::Busy;
           });
}

bool ProcessPool::Running::wantsMore() const
{
    return !m_stopAt && (!m_waiters.empty() || m_toReplace > 0) && liveCount() < m_options.processCount;
}

bool ProcessPool::Running::startOne(Lock& lock)
{
    std::list<Member> started(1);
    ++m_starting;
    m_toReplace = std::max<std::int64_t>(m_toReplace - 1, 0);
    std::string failure;
    lock.unlock();
    try {
        started.front().worker = std::make_unique<Worker>(m_options.executable, m_arguments);
    } catch (const std::exception& error) {
        failure = error.what();
    }
    lock.lock();
    --m_starting;
    if (!failure.empty()) {
        m_failure = failure;
        m_retryAt = Clock::now() + retryInterval;
        return false;
    }
    m_members.splice(m_members.end(), started);
    handOut(m_members.back());
    return true;
}

void ProcessPool::Running::stop(std::int64_t wait)
{
    const std::lock_guard stopping(m_stopMutex);
    {
        const std::lock_guard lock(m_mutex);
        if (!m_stopAt)
            m_stopAt = Clock::now() + wholeSeconds(wait);
        failWaiters(stoppedText);
        for (Member* const member : m_idle)
            changeState(*member, State::Leaving);
        m_idle.clear();
        wakeKeeper();
    }
    if (m_keeper.joinable())
        m_keeper.join();
}

} // namespace Torv::Async::ProcessPool
