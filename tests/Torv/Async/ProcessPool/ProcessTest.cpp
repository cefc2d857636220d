#include "Torv/Async/ProcessPool/Process.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/Children.h"

#include "Torv/GenericException.h"

namespace Torv::Async::ProcessPool
{
namespace
{

void waitFor(const Descriptor& descriptor)
{
    pollfd polled{descriptor.number(), POLLIN, 0};
    ASSERT_EQ(::poll(&polled, 1, 10000), 1);
}

std::string readLine(const Process& process)
{
    std::string line;
    while (line.empty() || line.back() != '\n') {
        waitFor(process.output());
        char byte = 0;
        if (::read(process.output().number(), &byte, 1) != 1)
            break;
        line += byte;
    }
    return line;
}

std::string startFailure(const std::string& path)
{
    try {
        const Process process(path, {});
    } catch (const GenericException& error) {
        return error.what();
    }
    return "it started";
}

TEST(Process, TakesItsCommandLineAndPrints)
{
    const Process process(testWorkerPath, {"arguments", "two words", ""});

    EXPECT_EQ(readLine(process), R"({"arguments":["arguments","two words",""]})"
                                 "\n");
}

TEST(Process, InheritsNothingButItsThreeStreams)
{
    const Descriptor inheritable(::fcntl(STDERR_FILENO, F_DUPFD, 200));

    const Process process(testWorkerPath, {"descriptors"});

    EXPECT_EQ(readLine(process), "{\"descriptors\":[0,1,2]}\n");
}

TEST(Process, HasSignalsAsInANewLogin)
{
    const auto former = ::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigset_t formerBlocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &formerBlocked);

    const Process process(testWorkerPath, {"signals"});

    ::pthread_sigmask(SIG_SETMASK, &formerBlocked, nullptr);
    ::signal(SIGPIPE, former);
    EXPECT_EQ(readLine(process), "{\"pipe\":\"default\",\"blocked\":false}\n");
}

[[noreturn]] void startAComplainingProcess()
{
    {
        const Process process(testWorkerPath, {"complain", "HELP", "leave", "3"});
        waitFor(process.watch());
    }
    std::_Exit(0);
}

TEST(ProcessDeathTest, KeepsItsComplaintsFromTheHost)
{
    EXPECT_EXIT(startAComplainingProcess(), testing::ExitedWithCode(0), "^$");
}

TEST(Process, ReadsItsInputToTheEnd)
{
    Process process(testWorkerPath, {});

    EXPECT_EQ(::write(process.input().number(), "1\n", 2), 2);
    EXPECT_EQ(readLine(process).substr(0, 13), "{\"request\":1,");
    EXPECT_EQ(process.ending(), "");
    process.closeInput();
    waitFor(process.watch());

    EXPECT_TRUE(process.hasSucceeded());
    EXPECT_EQ(process.ending(), " | status=0");
}

TEST(Process, TellsHowItEnded)
{
    const Process leaving(testWorkerPath, {"leave", "3"});
    const Process crashing(testWorkerPath, {"crash"});
    waitFor(leaving.watch());
    waitFor(crashing.watch());

    EXPECT_EQ(leaving.ending(), " | status=3");
    EXPECT_FALSE(leaving.hasSucceeded());
    EXPECT_EQ(crashing.ending(), " | signal=6");
    EXPECT_FALSE(crashing.hasSucceeded());
}

TEST(Process, EndsWithItsObjectTogetherWithItsGroup)
{
    const int before = descriptorCount();
    {
        const Process process(testWorkerPath, {"fork", "print", "x%0A", "hang"});
        EXPECT_EQ(readLine(process), "x\n");
        // The forked process holds the output too, so that only its end ends that.
        process.kill();
        waitFor(process.output());
        char byte = 0;
        EXPECT_TRUE(eventually([&] { return ::read(process.output().number(), &byte, 1) == 0; }));
    }

    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(descriptorCount(), before);
}

TEST(Process, EndsEvenIfItHasGoneToAnotherGroup)
{
    const int before = descriptorCount();
    {
        const Process process(testWorkerPath, {"changegroup", "print", "x%0A", "hang"});
        EXPECT_EQ(readLine(process), "x\n");
        process.kill();
        waitFor(process.watch());
        EXPECT_EQ(process.ending(), " | signal=9");
    }

    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(descriptorCount(), before);
}

TEST(Process, SaysWhyItDoesNotStart)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string text = directory.file("text", "no program");
    const int before = descriptorCount();

    EXPECT_EQ(startFailure("/nowhere/worker"),
              "Cannot start the worker process | path=/nowhere/worker | error=No such file or directory");
    EXPECT_EQ(startFailure(text),
              "Cannot start the worker process | path=" + text + " | error=Permission denied");
    ::chmod(text.c_str(), 0700);
    EXPECT_EQ(startFailure(text),
              "Cannot start the worker process | path=" + text + " | error=Exec format error");
    EXPECT_EQ(startFailure(""), "Cannot start the worker process | path= | error=No such file or directory");

    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(descriptorCount(), before);
}

TEST(Process, SurvivesAHostThatWaitsForAllItsChildren)
{
    const Process process(testWorkerPath, {"leave", "0"});
    waitFor(process.watch());

    EXPECT_GT(::waitpid(-1, nullptr, 0), 0);

    EXPECT_EQ(process.ending(), "");
    EXPECT_FALSE(process.hasSucceeded());
    process.kill();
}

} // namespace
} // namespace Torv::Async::ProcessPool
