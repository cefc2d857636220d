#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>

#include "worker/Descriptor.h"

namespace JobParser::Worker
{

/// What one request may take.
struct Limits {
    std::chrono::seconds processor{120};           ///< Processor time.
    std::chrono::milliseconds wall{240000};        ///< Time altogether.
    std::int64_t memory = std::int64_t{2} << 30;   ///< Bytes of address space; 0 for no limit.
    std::int64_t fileSize = std::int64_t{8} << 30; ///< Bytes of each file that is written.
};

/// Runs work on hostile documents in a child process for each request, so that whatever a document does to
/// memory, time or the state of an engine ends with it. The child is a copy of this process: what is warm
/// here is warm there.
///
/// The child of the next request can be made while nobody waits. Belongs to a process without other threads.
class Sandbox
{
public:
    /// Does the work of a request and gives the answer. Called in the child; may throw. Neither text holds a
    /// NUL.
    using Work = std::function<std::string(const std::string& request)>;

    Sandbox(const Limits& limits, Work work) : m_limits(limits), m_work(std::move(work)) {}
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// Has the work done and gives its answer.
    ///
    /// Throws WorkerException: what the work threw, with the number it had if it was one; ErrorCode::Limit if
    /// it took more than it may; ErrorCode::Failed if it ended in any other way.
    std::string run(const std::string& request);

    /// Makes the child of the next request, which sees this process as it is now. Throws WorkerException if
    /// the system refuses it.
    void prepare();

private:
    [[noreturn]] void runChild(int input, int output, pid_t parent);
    void applyLimits() const;
    static pid_t end(pid_t child);
    void bury();

    Limits m_limits;
    Work m_work;
    pid_t m_child = -1;
    Descriptor m_requests; ///< To the child.
    Descriptor m_replies;  ///< From the child.
    pid_t m_ended = -1;    ///< A child that has answered and was not waited for.
};

} // namespace JobParser::Worker
