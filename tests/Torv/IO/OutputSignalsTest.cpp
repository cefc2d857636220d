#include "Torv/IO/OutputSignals.h"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/Torv/TemporaryDirectory.h"

using Torv::IO::OutputSignals;

namespace
{

int writeToNobody()
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return 0;
    ::close(ends[0]);
    const int error = ::write(ends[1], "x", 1) < 0 ? errno : 0;
    ::close(ends[1]);
    return error;
}

bool isPending(int signal)
{
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, signal) != 0;
}

[[noreturn]] void writeBehindTheLimit(std::FILE* file)
{
    const OutputSignals guard;
    constexpr rlimit limit{1, 1};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool first = ::write(::fileno(file), "x", 1) == 1;
    const bool second = ::write(::fileno(file), "x", 1) < 0 && errno == EFBIG;
    std::_Exit(first && second ? 0 : 1);
}

} // namespace

TEST(OutputSignals, MakesAPipeWithoutReaderAFailedWrite)
{
    const OutputSignals guard;

    EXPECT_EQ(writeToNobody(), EPIPE);
}

TEST(OutputSignals, LeavesNoSignalBehind)
{
    {
        const OutputSignals guard;
        writeToNobody();
        EXPECT_TRUE(isPending(SIGPIPE));
    }

    EXPECT_FALSE(isPending(SIGPIPE));
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
}

TEST(OutputSignals, LeavesASignalThatWasPendingBefore)
{
    const OutputSignals outer;
    writeToNobody();
    {
        const OutputSignals inner;
        writeToNobody();
    }

    EXPECT_TRUE(isPending(SIGPIPE));
}

TEST(OutputSignalsDeathTest, MakesAFileBehindItsLimitAFailedWrite)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Torv::Test::TemporaryDirectory directory;
    std::FILE* const file = std::fopen(directory.path("limited").c_str(), "wb");

    EXPECT_EXIT(writeBehindTheLimit(file), testing::ExitedWithCode(0), "");
    std::fclose(file);
}
