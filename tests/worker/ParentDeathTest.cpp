#include "worker/ParentDeath.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace JobParser::Worker
{
namespace
{

TEST(ParentDeath, EndsAProcessWhoseParentIsGoneAlready)
{
    const pid_t child = ::fork();
    if (child == 0) {
        endWithParent(::getpid()); // Which is not its parent.
        ::_exit(7);
    }

    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(ParentDeath, LeavesAProcessAloneWhileItsParentLives)
{
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0) {
        endWithParent(parent);
        ::_exit(7);
    }

    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(ParentDeath, EndsAProcessWhenItsParentEnds)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const pid_t parent = ::fork();
    if (parent == 0) {
        const pid_t self = ::getpid();
        if (::fork() == 0) {
            endWithParent(self);
            if (::write(ends[1], "r", 1) != 1)
                ::_exit(1);
            for (;;)
                ::pause();
        }
        for (;;)
            ::pause();
    }
    ::close(ends[1]);
    char ready = 0;
    ASSERT_EQ(::read(ends[0], &ready, 1), 1);

    ::kill(parent, SIGKILL);

    // The end of the pipe shows that the last process which could write is gone.
    EXPECT_EQ(::read(ends[0], &ready, 1), 0);
    ::waitpid(parent, nullptr, 0);
    ::close(ends[0]);
}

} // namespace
} // namespace JobParser::Worker
