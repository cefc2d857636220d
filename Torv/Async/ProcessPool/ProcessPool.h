#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "Torv/Async/ProcessPool/Options.h"
#include "Torv/Export.h"

namespace Torv::Async::ProcessPool
{

/// Keeps worker processes running and puts requests to them.
///
/// A request is one line on the standard input of an idle process; the answer is all that the process writes
/// up to and including the first line that begins with `{`, or up to the end of its output. Who finds no
/// process idle waits, in the order of the calls.
///
/// A process that is found dead before it has read a request is replaced unnoticed. One that dies while
/// working fails that request only. Processes get nothing of the host but these two streams, and end with it:
/// they find the end of their input then.
///
/// Any thread may call any operation at any time. One thread of the pool's own starts, ends and buries the
/// processes; it takes no signals. In a child that the host forked, the pool does not work and leaves the
/// processes alone.
class TORV_EXPORT ProcessPool
{
public:
    ProcessPool();
    /// Stops the pool, as stop(stopWait) does.
    ~ProcessPool();
    ProcessPool(const ProcessPool&) = delete;
    ProcessPool& operator=(const ProcessPool&) = delete;

    /// Starts the processes. If they do not start, that is told by request, which tries again, once a second
    /// at most. A pool that runs already is stopped first. Throws std::system_error if the system has no
    /// thread left, and GenericException if it has no descriptor left.
    void start(const Options& options);

    /// Puts a request, without its line feed, to a process, and gives the answer.
    ///
    /// Throws GenericException if the pool is not started or is being stopped, no process starts, the process
    /// dies, answers more than 16 MiB or is not done within poolDeadline; in the latter two it is killed. The
    /// same if the request is more than one line.
    std::string request(const std::string& text);

    /// Lets the processes end: idle ones at once, the others behind the request that they work on. Who waits
    /// for one fails. What still runs after `seconds` is killed. Returns when all have ended; then no
    /// process, thread or descriptor of the pool is left. Does nothing if the pool is not started.
    void stop(std::int64_t seconds);

private:
    class Running;

    std::shared_ptr<Running> running() const;
    bool isForked() const;
    void forget();

    mutable std::mutex m_mutex;
    std::shared_ptr<Running> m_running; ///< Null while the pool is not started.
    std::atomic<int> m_forkDepth = -1;  ///< Of the process that started the pool; -1 before.
    std::int64_t m_stopWait = 0;
};

} // namespace Torv::Async::ProcessPool
