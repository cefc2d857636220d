#include "Torv/IO/OutputFile.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/Torv/TemporaryDirectory.h"

#include "Torv/GenericException.h"

using Torv::IO::OutputFile;

namespace
{

void put(OutputFile& file, const std::string& text)
{
    file.stream().write(text.data(), static_cast<std::uint32_t>(text.size()));
}

std::string contentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class OutputFileTest : public testing::Test
{
protected:
    void writeOld() const { std::ofstream(m_path) << "old"; }
    std::ptrdiff_t files() const
    {
        return std::distance(std::filesystem::directory_iterator(m_directory.path("")), {});
    }

    Torv::Test::TemporaryDirectory m_directory;
    std::string m_path = m_directory.path("out");
};

/// Has standard output write to a file while it lives.
class RedirectedOutput
{
public:
    explicit RedirectedOutput(const std::string& path) : m_former(::dup(STDOUT_FILENO))
    {
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND);
        ::dup2(descriptor, STDOUT_FILENO);
        ::close(descriptor);
    }
    RedirectedOutput(const RedirectedOutput&) = delete;
    RedirectedOutput& operator=(const RedirectedOutput&) = delete;
    ~RedirectedOutput()
    {
        ::dup2(m_former, STDOUT_FILENO);
        ::close(m_former);
    }

private:
    int m_former;
};

} // namespace

TEST_F(OutputFileTest, AppearsWhenItIsCommitted)
{
    writeOld();
    OutputFile file(m_path);

    put(file, "new");
    file.flush();
    EXPECT_EQ(contentsOf(m_path), "old");
    file.commit();

    EXPECT_EQ(contentsOf(m_path), "new");
    EXPECT_EQ(files(), 1);
}

TEST_F(OutputFileTest, LeavesNothingOfAProcessThatIsKilled)
{
    const int unnamed = ::open(m_directory.path("").c_str(), O_TMPFILE | O_WRONLY, 0600);
    if (unnamed < 0)
        GTEST_SKIP() << "Files without a name cannot be had here";
    ::close(unnamed);
    writeOld();

    const pid_t child = ::fork();
    if (child == 0) {
        OutputFile file(m_path);
        put(file, "new");
        file.flush();
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);

    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(contentsOf(m_path), "old");
    EXPECT_EQ(files(), 1);
}

TEST_F(OutputFileTest, PassesByNamesThatAreTaken)
{
    const std::string stem = m_directory.path(".jobparser-") + std::to_string(::getpid());
    std::ofstream(stem + "-0.tmp") << "other";

    OutputFile file(m_path);
    put(file, "new");
    file.commit();

    EXPECT_EQ(contentsOf(m_path), "new");
    EXPECT_EQ(contentsOf(stem + "-0.tmp"), "other");
    EXPECT_EQ(files(), 2);
}

TEST_F(OutputFileTest, TellsWhatIsWrittenStraight)
{
    writeOld();
    const RedirectedOutput redirected(m_path);
    using enum OutputFile::StandardOutput;

    EXPECT_TRUE(OutputFile::isStraight("/dev/null", IsReplaced));
    EXPECT_TRUE(OutputFile::isStraight(m_path, IsWrittenStraight));
    EXPECT_FALSE(OutputFile::isStraight(m_path, IsReplaced));
    EXPECT_FALSE(OutputFile::isStraight(m_directory.path("none"), IsWrittenStraight));
}

TEST_F(OutputFileTest, LeavesNothingWhenItIsNot)
{
    writeOld();
    {
        OutputFile file(m_path);
        put(file, "new");
    }

    EXPECT_EQ(contentsOf(m_path), "old");
    EXPECT_EQ(files(), 1);
}

TEST_F(OutputFileTest, PassesPermissionsOn)
{
    writeOld();
    ::chmod(m_path.c_str(), 0640);

    OutputFile(m_path).commit();

    struct stat status = {};
    ::stat(m_path.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(OutputFileTest, ReplacesWhatALinkNames)
{
    writeOld();
    const std::string link = m_directory.path("link");
    std::filesystem::create_symlink("out", link);

    OutputFile file(link);
    put(file, "new");
    file.commit();

    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(contentsOf(m_path), "new");
}

TEST_F(OutputFileTest, TellsThatADeviceIsFull)
{
    OutputFile file("/dev/full");
    put(file, "new");

    EXPECT_THROW(file.commit(), Torv::GenericException);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(OutputFileTest, NamesPathAndReasonIfNothingCanBeWrittenThere)
{
    try {
        const OutputFile file(m_directory.path("none/out"));
        FAIL();
    } catch (const Torv::GenericException& thrown) {
        EXPECT_EQ(std::string(thrown.what()), "Cannot write file | path=" + m_directory.path("none/out") +
                                                  " | error=No such file or directory");
    }
}

TEST_F(OutputFileTest, ReplacesAFileThatStandardOutputWritesTo)
{
    writeOld();
    const RedirectedOutput redirected(m_path);

    OutputFile file(m_path);
    put(file, "new");
    file.commit();

    EXPECT_EQ(contentsOf(m_path), "new");
}

TEST_F(OutputFileTest, WritesStraightBehindWhatStandardOutputWroteIfItIsToldTo)
{
    writeOld();
    const RedirectedOutput redirected(m_path);

    OutputFile file(m_path, OutputFile::StandardOutput::IsWrittenStraight);
    put(file, "new");
    file.commit();

    EXPECT_EQ(contentsOf(m_path), "oldnew");
}
