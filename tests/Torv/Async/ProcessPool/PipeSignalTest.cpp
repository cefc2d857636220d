#include "Torv/Async/ProcessPool/PipeSignal.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Torv/Async/ProcessPool/Descriptor.h"

namespace Torv::Async::ProcessPool
{
namespace
{

void writeIntoBrokenPipe()
{
    Pipe pipe = makePipe();
    pipe.reading.close();
    EXPECT_EQ(::write(pipe.writing.number(), "a", 1), -1);
    EXPECT_EQ(errno, EPIPE);
}

bool isPending()
{
    sigset_t pending;
    ::sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

bool isBlocked()
{
    sigset_t blocked;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, SIGPIPE) == 1;
}

// The default is to end the process, so that these tests come to their end only if the signal is kept away.

TEST(PipeSignal, KeepsTheSignalAwayAndSwallowsIt)
{
    {
        const PipeSignal signal;
        writeIntoBrokenPipe();
        EXPECT_TRUE(isPending());
        signal.swallow();
        EXPECT_FALSE(isPending());
    }
    EXPECT_FALSE(isBlocked());
}

TEST(PipeSignal, LeavesASignalThatTheHostLetWait)
{
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    writeIntoBrokenPipe();
    {
        const PipeSignal signal;
        writeIntoBrokenPipe();
        signal.swallow();
    }

    EXPECT_TRUE(isPending());
    EXPECT_TRUE(isBlocked());

    const timespec atOnce{};
    ::sigtimedwait(&pipe, nullptr, &atOnce);
    ::pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
}

TEST(PipeSignal, SwallowsItsOwnWhereTheHostBlocksTheSignal)
{
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    {
        const PipeSignal signal;
        writeIntoBrokenPipe();
        signal.swallow();
    }

    EXPECT_FALSE(isPending());
    EXPECT_TRUE(isBlocked());
    ::pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
}

} // namespace
} // namespace Torv::Async::ProcessPool
