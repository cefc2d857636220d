#include "Torv/Async/ProcessPool/Descriptor.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <utility>

namespace Torv::Async::ProcessPool
{
namespace
{

bool isOpen(int number)
{
    return ::fcntl(number, F_GETFD) >= 0;
}

TEST(Descriptor, ClosesWhatItHolds)
{
    const int number = ::dup(STDIN_FILENO);
    {
        const Descriptor descriptor(number);
        EXPECT_EQ(descriptor.number(), number);
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(Descriptor, HandsOnWhatItHolds)
{
    const int number = ::dup(STDIN_FILENO);
    Descriptor first(number);

    Descriptor second(std::move(first));
    Descriptor third;
    third = std::move(second);

    EXPECT_EQ(first.number(), -1);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(second.number(), -1); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(third.number(), number);
    third.close();
    EXPECT_EQ(third.number(), -1);
    EXPECT_FALSE(isOpen(number));
}

TEST(Descriptor, MakesPipesThatNoProgramInherits)
{
    const Pipe pipe = makePipe();

    EXPECT_EQ(::fcntl(pipe.reading.number(), F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(pipe.writing.number(), F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::write(pipe.writing.number(), "a", 1), 1);
    char byte = 0;
    EXPECT_EQ(::read(pipe.reading.number(), &byte, 1), 1);
    EXPECT_EQ(byte, 'a');
}

TEST(Descriptor, MakesOneEndNonBlocking)
{
    const Pipe pipe = makePipe();
    char byte = 0;

    makeNonBlocking(pipe.reading);

    EXPECT_EQ(::read(pipe.reading.number(), &byte, 1), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(::fcntl(pipe.writing.number(), F_GETFL) & O_NONBLOCK, 0);
}

[[noreturn]] void makePipeWithoutStandardStreams()
{
    ::close(STDIN_FILENO);
    ::close(STDOUT_FILENO);
    const Pipe pipe = makePipe();
    const bool isAway = pipe.reading.number() > 2 && pipe.writing.number() > 2;
    std::_Exit(isAway && !isOpen(0) && !isOpen(1) ? 0 : 1);
}

TEST(DescriptorDeathTest, KeepsPipesAwayFromTheStandardStreams)
{
    EXPECT_EXIT(makePipeWithoutStandardStreams(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace Torv::Async::ProcessPool
