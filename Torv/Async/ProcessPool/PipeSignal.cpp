#include "Torv/Async/ProcessPool/PipeSignal.h"

#include <ctime>

namespace Torv::Async::ProcessPool
{
namespace
{

sigset_t brokenPipe()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    return signals;
}

bool isWaiting()
{
    sigset_t waiting;
    return ::sigpending(&waiting) == 0 && sigismember(&waiting, SIGPIPE) == 1;
}

} // namespace

PipeSignal::PipeSignal()
{
    const sigset_t blocked = brokenPipe();
    ::pthread_sigmask(SIG_BLOCK, &blocked, &m_former);
    m_waitedBefore = sigismember(&m_former, SIGPIPE) == 1 && isWaiting();
}

PipeSignal::~PipeSignal()
{
    ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
}

void PipeSignal::swallow() const
{
    if (m_waitedBefore)
        return;
    const sigset_t swallowed = brokenPipe();
    const timespec atOnce{};
    ::sigtimedwait(&swallowed, nullptr, &atOnce);
}

} // namespace Torv::Async::ProcessPool
