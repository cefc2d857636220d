#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Torv/Async/ProcessPool/ProcessPool.h"
#include "Torv/Async/ProcessPool/Worker.h"

namespace Torv::Async::ProcessPool
{

/// The span of so many milliseconds or seconds; none for a negative count, and never so many that a sum with
/// a time overflows.
std::chrono::milliseconds wholeMilliseconds(std::int64_t count);
std::chrono::seconds wholeSeconds(std::int64_t count);

/// A pool from start to stop.
///
/// One mutex guards all that follows. A worker that is busy belongs to the thread whose request it works on,
/// every other one to the keeper, the thread that starts and ends processes; it sleeps until a process ends,
/// something is due, or somebody wakes it.
class ProcessPool::Running
{
public:
    explicit Running(const Options& options);
    ~Running();
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    /// As ProcessPool::request; the text ends with its line feed.
    std::string request(const std::string& line);
    /// As ProcessPool::stop.
    void stop(std::int64_t seconds);

private:
    enum class State {
        Idle,
        Busy,
        Leaving,   ///< Is to be told to end.
        Dismissed, ///< Was told, and is killed if it takes too long.
        Killed,
    };

    struct Member {
        std::unique_ptr<Worker> worker;
        State state = State::Idle;
        Clock::time_point since; ///< When the state began.
        std::int32_t served = 0; ///< Requests that it answered.
        bool hasEnded = false;
        bool isKilled = false; ///< By the keeper, while it was busy.
    };

    /// A request that waits for a worker.
    struct Waiter {
        std::condition_variable ready;
        Member* member = nullptr;
        std::string failure; ///< Why there will be none.
    };

    using Lock = std::unique_lock<std::mutex>;

    Member& take(const Deadline& deadline);
    Member& waitInLine(Lock& lock, const Deadline& deadline);
    void handOut(Member& member);
    void giveBack(Member& member);
    void dropUnasked(Member& member);
    void dropFailed(Member& member);
    void changeState(Member& member, State state);
    void leave(Member& member, State state);
    void countStillborn(const Member& member);
    void failWaiters(const std::string& failure);

    std::int64_t liveCount() const;
    bool wantsMore() const;
    bool startOne(Lock& lock);

    void keep();
    void takeAway();
    void dismiss();
    void killOverdue();
    void bury();
    void startMissing(Lock& lock);
    void sleep(Lock& lock);
    Clock::time_point dueTime(const Member& member) const;
    Clock::time_point nextDue() const;
    void wakeKeeper() const;

    const Options m_options;
    const std::vector<std::string> m_arguments;
    Descriptor m_wake;

    std::mutex m_mutex;
    std::list<Member> m_members;
    std::vector<Member*> m_idle; ///< The one that was busy last stands last, and is taken first.
    std::deque<Waiter*> m_waiters;
    std::int64_t m_starting = 0;  ///< Processes that are just being started.
    std::int64_t m_toReplace = 0; ///< Processes that are to be started though nobody waits for one.
    std::int64_t m_stillborn = 0; ///< Processes in a row that ended before they answered anything.
    Clock::time_point m_retryAt;  ///< Nothing is started before.
    std::string m_failure;        ///< Why nothing was started.
    Deadline m_stopAt;            ///< When a stopped pool kills what still runs.
    std::thread m_keeper;
    std::mutex m_stopMutex; ///< Held while stopping.
};

} // namespace Torv::Async::ProcessPool
