#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace JobParser::Worker
{

/// What one request may take.
struct Limits {
    std::chrono::seconds processor{120};           ///< Processor time.
    std::chrono::milliseconds wall{240000};        ///< Time altogether.
    std::int64_t memory = std::int64_t{2} << 30;   ///< Bytes of address space; 0 for no limit.
    std::int64_t fileSize = std::int64_t{8} << 30; ///< Bytes of each file that is written.
};

/// Runs work on hostile documents in a child process of its own, so that whatever it does to memory, time or
/// the state of an engine ends with it. The child is a copy of this process: what is warm here is warm there.
class Sandbox
{
public:
    explicit Sandbox(const Limits& limits) : m_limits(limits) {}

    /// Does the work and gives the text that it returns. Not to be called while other threads run.
    ///
    /// Throws WorkerException: what the work threw, with the number it had if it was one; ErrorCode::Limit if
    /// it took more than it may; ErrorCode::Failed if it ended in any other way.
    std::string run(const std::function<std::string()>& work) const;

private:
    [[noreturn]] void runChild(int output, const std::function<std::string()>& work) const;
    void applyLimits() const;

    Limits m_limits;
};

} // namespace JobParser::Worker
