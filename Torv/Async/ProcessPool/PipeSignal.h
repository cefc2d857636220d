#pragma once

#include <csignal>

namespace Torv::Async::ProcessPool
{

/// Keeps the signal of a broken pipe from the thread as long as it exists: it would end the host, or call a
/// handler that knows nothing of our pipes.
class PipeSignal
{
public:
    PipeSignal();
    ~PipeSignal();
    PipeSignal(const PipeSignal&) = delete;
    PipeSignal& operator=(const PipeSignal&) = delete;

    /// Takes the signal that a write has just caused. One that the host has let wait before stays.
    void swallow() const;

private:
    sigset_t m_former{};
    bool m_waitedBefore = false;
};

} // namespace Torv::Async::ProcessPool
