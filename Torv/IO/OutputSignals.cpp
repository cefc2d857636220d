#include "Torv/IO/OutputSignals.h"

#include <cerrno>
#include <ctime>
#include <initializer_list>
#include <pthread.h>

namespace Torv::IO
{

OutputSignals::OutputSignals()
{
    sigset_t pending;
    sigemptyset(&m_blocked);
    sigemptyset(&pending);
    sigpending(&pending);
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        if (sigismember(&pending, signal) == 0)
            sigaddset(&m_blocked, signal);
    }
    pthread_sigmask(SIG_BLOCK, &m_blocked, &m_formerMask);
}

OutputSignals::~OutputSignals()
{
    // Whatever came meanwhile was made by our own writes, for these signals go to the thread that writes.
    constexpr timespec atOnce{};
    const int error = errno;
    while (sigtimedwait(&m_blocked, nullptr, &atOnce) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &m_formerMask, nullptr);
    errno = error;
}

} // namespace Torv::IO
