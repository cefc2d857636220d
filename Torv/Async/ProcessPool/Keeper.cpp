#include <algorithm>
#include <limits>
#include <poll.h>
#include <sys/eventfd.h>

#include "Torv/Async/ProcessPool/Running.h"

// What the thread of a running pool does: it dismisses, kills and buries processes, and starts new ones.
namespace Torv::Async::ProcessPool
{
namespace
{

constexpr auto never = Clock::time_point::max();
// A process that the system does not let go even after a kill is left to it when the pool ends.
constexpr std::chrono::seconds patienceAfterKill{5};
constexpr std::int64_t maxSeconds = 315360000; // Ten years.

int timeoutUntil(Clock::time_point due)
{
    if (due == never)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

} // namespace

std::chrono::milliseconds wholeMilliseconds(std::int64_t count)
{
    return std::chrono::milliseconds(std::clamp<std::int64_t>(count, 0, maxSeconds * 1000));
}

std::chrono::seconds wholeSeconds(std::int64_t count)
{
    return std::chrono::seconds(std::clamp<std::int64_t>(count, 0, maxSeconds));
}

void ProcessPool::Running::keep()
{
    Lock lock(m_mutex);
    while (!m_stopAt || !m_members.empty()) {
        takeAway();
        dismiss();
        killOverdue();
        bury();
        startMissing(lock);
        if (!m_stopAt || !m_members.empty())
            sleep(lock);
    }
}

/// Idle workers that are dead or have been idle for too long take no more requests.
void ProcessPool::Running::takeAway()
{
    const auto now = Clock::now();
    std::erase_if(m_idle, [&](Member* member) {
        const bool isOld = now >= dueTime(*member);
        if (member->hasEnded)
            countStillborn(*member);
        else if (isOld)
            ++m_toReplace;
        else
            return false;
        changeState(*member, State::Leaving);
        return true;
    });
}

void ProcessPool::Running::dismiss()
{
    for (Member& member : m_members) {
        if (member.state != State::Leaving || member.hasEnded)
            continue;
        member.worker->dismiss(m_options.stopCommand);
        changeState(member, State::Dismissed);
    }
}

void ProcessPool::Running::killOverdue()
{
    const auto now = Clock::now();
    for (Member& member : m_members) {
        if (member.state != State::Busy && member.state != State::Dismissed)
            continue;
        if (member.isKilled || now < dueTime(member))
            continue;
        member.worker->kill();
        if (member.state == State::Busy)
            member.isKilled = true; // The request that it works on finds it dead.
        else
            changeState(member, State::Killed);
    }
}

void ProcessPool::Running::bury()
{
    const auto now = Clock::now();
    m_members.remove_if([&](const Member& member) {
        if (member.state == State::Idle || member.state == State::Busy)
            return false;
        return member.hasEnded || (member.state == State::Killed && now >= dueTime(member));
    });
}

void ProcessPool::Running::startMissing(Lock& lock)
{
    while (wantsMore()) {
        if (Clock::now() >= m_retryAt) {
            startOne(lock);
            continue;
        }
        m_toReplace = 0; // Only a request tries again.
        if (liveCount() == 0)
            failWaiters(m_failure);
        return;
    }
}

/// Sleeps until a process ends, something is due, or somebody wakes the keeper.
void ProcessPool::Running::sleep(Lock& lock)
{
    std::vector<pollfd> polled{{m_wake.number(), POLLIN, 0}};
    std::vector<Member*> members;
    for (Member& member : m_members) {
        if (member.hasEnded)
            continue;
        members.push_back(&member);
        polled.push_back({member.worker->watch(), POLLIN, 0});
    }
    const int timeout = timeoutUntil(nextDue());
    lock.unlock();
    // Only the keeper removes members, so that all of them are still there afterwards.
    const int ready = ::poll(polled.data(), polled.size(), timeout);
    lock.lock();
    if (ready <= 0)
        return;
    eventfd_t count = 0;
    ::eventfd_read(m_wake.number(), &count);
    for (std::size_t at = 0; at < members.size(); ++at)
        members[at]->hasEnded = polled[at + 1].revents != 0;
}

/// When the keeper has to do something about a worker.
Clock::time_point ProcessPool::Running::dueTime(const Member& member) const
{
    switch (member.state) {
    case State::Idle:
        return m_options.poolInterval > 0 ? member.since + wholeMilliseconds(m_options.poolInterval) : never;
    case State::Busy: return m_stopAt && !member.isKilled ? *m_stopAt : never;
    case State::Leaving: return member.since;
    case State::Dismissed: return m_stopAt ? *m_stopAt : member.since + wholeSeconds(m_options.stopWait);
    case State::Killed: return m_stopAt ? member.since + patienceAfterKill : never;
    }
    return never;
}

Clock::time_point ProcessPool::Running::nextDue() const
{
    Clock::time_point due = never;
    for (const Member& member : m_members) {
        if (!member.hasEnded || member.state == State::Busy)
            due = std::min(due, dueTime(member));
    }
    // Who is busy now becomes idle without a word to the keeper, but is not old before this.
    if (m_options.poolInterval > 0 && !m_members.empty())
        due = std::min(due, Clock::now() + wholeMilliseconds(m_options.poolInterval));
    if (wantsMore())
        due = std::min(due, m_retryAt);
    return due;
}

void ProcessPool::Running::wakeKeeper() const
{
    ::eventfd_write(m_wake.number(), 1);
}

} // namespace Torv::Async::ProcessPool
