#include "Torv/IO/FileStream.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/MessageOf.h"

#include "Torv/GenericException.h"

using Torv::IO::FileStream;

namespace
{

constexpr std::size_t bufferSize = 65536;

void put(FileStream& stream, const std::string& text)
{
    stream.write(text.data(), static_cast<std::uint32_t>(text.size()));
}

std::string contentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class FileStreamTest : public testing::Test
{
protected:
    FileStreamTest()
        : m_path(m_directory.path("out")), m_descriptor(::open(m_path.c_str(), O_CREAT | O_WRONLY, 0600))
    {
    }
    ~FileStreamTest() override { ::close(m_descriptor); }

    Torv::Test::TemporaryDirectory m_directory;
    std::string m_path;
    int m_descriptor;
};

/// Both ends of a pipe.
class Pipe
{
public:
    Pipe()
    {
        if (::pipe(m_ends.data()) != 0)
            throw std::runtime_error("no pipe");
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe()
    {
        closeEnd(0);
        closeEnd(1);
    }

    int reading() const { return m_ends[0]; }
    int writing() const { return m_ends[1]; }
    void closeEnd(std::size_t end)
    {
        if (m_ends[end] >= 0)
            ::close(m_ends[end]);
        m_ends[end] = -1;
    }

private:
    std::array<int, 2> m_ends = {};
};

} // namespace

TEST_F(FileStreamTest, CanOnlyWrite)
{
    FileStream stream(m_descriptor, "out");
    char byte = 0;

    EXPECT_EQ(stream.capabilities(), 2U);
    EXPECT_THROW(stream.read(&byte, 1), Torv::GenericException);
    EXPECT_THROW(stream.seek(0, FileStream::FromStart), Torv::GenericException);
}

TEST_F(FileStreamTest, CollectsSmallWritesUntilTheyAreFlushed)
{
    FileStream stream(m_descriptor, "out");

    put(stream, "job ");
    put(stream, "data");
    EXPECT_EQ(contentsOf(m_path), "");
    stream.flush();

    EXPECT_EQ(contentsOf(m_path), "job data");
}

TEST_F(FileStreamTest, FlushesAtItsEndAndLeavesTheDescriptorOpen)
{
    {
        FileStream stream(m_descriptor, "out");
        put(stream, "job");
    }

    EXPECT_EQ(contentsOf(m_path), "job");
    EXPECT_NE(::fcntl(m_descriptor, F_GETFD), -1);
}

TEST_F(FileStreamTest, HandsOverWhatIsCollectedBeforeTheBufferWouldOverflow)
{
    FileStream stream(m_descriptor, "out");

    put(stream, "a");
    put(stream, std::string(bufferSize - 1, 'b'));
    EXPECT_EQ(contentsOf(m_path).size(), 0U);
    put(stream, "c");
    EXPECT_EQ(contentsOf(m_path).size(), bufferSize);
    stream.flush();

    EXPECT_EQ(contentsOf(m_path), "a" + std::string(bufferSize - 1, 'b') + "c");
}

TEST_F(FileStreamTest, KeepsTheOrderOfSmallAndLargeWrites)
{
    FileStream stream(m_descriptor, "out");

    put(stream, "small");
    put(stream, std::string(bufferSize, 'L'));
    EXPECT_EQ(contentsOf(m_path).size(), bufferSize + 5);
    put(stream, "end");
    stream.flush();

    EXPECT_EQ(contentsOf(m_path), "small" + std::string(bufferSize, 'L') + "end");
}

TEST_F(FileStreamTest, TakesAWriteOfNothing)
{
    FileStream stream(m_descriptor, "out");

    stream.write(nullptr, 0);
    stream.flush();

    EXPECT_EQ(contentsOf(m_path), "");
}

TEST(FileStream, GoesOnAfterShortWritesAndInterruptions)
{
    struct sigaction action = {};
    struct sigaction former = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, &former);
    Pipe pipe;
    const pthread_t writer = ::pthread_self();
    std::string received;
    // A slow reader: the writer blocks in the middle of its bytes and is interrupted there.
    std::thread reader([&] {
        std::array<char, 50000> buffer = {};
        for (ssize_t count = 1; count > 0;) {
            ::pthread_kill(writer, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            count = ::read(pipe.reading(), buffer.data(), buffer.size());
            received.append(buffer.data(), static_cast<std::size_t>(count));
        }
    });
    std::string sent;
    for (int number = 0; sent.size() < 1000000; ++number)
        sent += std::to_string(number) + " ";

    {
        FileStream stream(pipe.writing(), "pipe");
        put(stream, sent);
    }
    // The last signal may still come while the pipe is closed, which the kernel does all the same.
    pipe.closeEnd(1);
    reader.join();
    ::sigaction(SIGUSR1, &former, nullptr);

    EXPECT_EQ(received, sent);
}

TEST(FileStream, ThrowsWithNameAndReasonIfTheSystemRefuses)
{
    FileStream stream(-1, "/job/out.prn");
    put(stream, "job");

    EXPECT_EQ(messageOf([&] { stream.flush(); }),
              "Cannot write file | path=/job/out.prn | error=Bad file descriptor");
}

TEST(FileStream, ThrowsForALargeWriteAtOnce)
{
    FileStream stream(-1, "out");

    EXPECT_EQ(messageOf([&] { put(stream, std::string(bufferSize, 'L')); }),
              "Cannot write file | path=out | error=Bad file descriptor");
}

TEST(FileStream, StaysFailedSoThatNothingIsWrittenBehindAHole)
{
    const auto former = std::signal(SIGPIPE, SIG_IGN);
    Pipe broken;
    broken.closeEnd(0);
    FileStream stream(broken.writing(), "pipe");
    put(stream, "lost");
    const std::string expected = "Cannot write file | path=pipe | error=Broken pipe";

    EXPECT_EQ(messageOf([&] { stream.flush(); }), expected);
    EXPECT_EQ(messageOf([&] { stream.flush(); }), expected);
    EXPECT_EQ(messageOf([&] { put(stream, "x"); }), expected);
    std::signal(SIGPIPE, former);
}

TEST(FileStream, EndsWithoutThrowingIfTheLastWriteFails)
{
    const auto run = [] {
        FileStream stream(-1, "out");
        put(stream, "job");
    };

    EXPECT_NO_THROW(run());
}
