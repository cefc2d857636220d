#include "worker/OutputFolder.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

void write(const std::string& path)
{
    std::ofstream(path) << "x";
}

TEST(OutputFolder, MovesItsFileToThePath)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("a.pdf");
    std::string temporary;
    {
        const OutputFolder folder(path);
        temporary = folder.path();
        write(folder.path() + "output");
        EXPECT_FALSE(std::filesystem::exists(path));

        folder.publish(path, 0);
    }

    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_FALSE(std::filesystem::exists(temporary));
}

TEST(OutputFolder, LeavesNothingOfAFailure)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("a.png");
    {
        const OutputFolder folder(path);
        write(folder.path() + "output-1");

        EXPECT_THROW(folder.publish(path, 2), WorkerException);
    }

    EXPECT_TRUE(std::filesystem::is_empty(directory.path("")));
}

/// A folder as a killed worker leaves it, which nobody has touched for so many seconds.
void leaveRemains(const std::string& path, int seconds)
{
    std::filesystem::create_directory(path);
    write(path + "/output-1");
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() -
                                               std::chrono::seconds(seconds));
}

TEST(OutputFolder, RemovesWhatKilledWorkersLeft)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("a.pdf");
    leaveRemains(directory.path(".zemjob-killed"), 100);
    leaveRemains(directory.path(".zemjob-justny"), 0);
    leaveRemains(directory.path(".zemjob-others-"), 100);
    leaveRemains(directory.path("zemjob-another"), 100);
    std::filesystem::create_directory_symlink(directory.path("zemjob-another"),
                                              directory.path(".zemjob-a_link"));

    removeRemains(path);

    EXPECT_FALSE(std::filesystem::exists(directory.path(".zemjob-killed")));
    EXPECT_TRUE(std::filesystem::exists(directory.path(".zemjob-justny/output-1")));
    EXPECT_TRUE(std::filesystem::exists(directory.path(".zemjob-others-/output-1")));
    EXPECT_TRUE(std::filesystem::exists(directory.path("zemjob-another/output-1")));
    EXPECT_TRUE(std::filesystem::exists(directory.path(".zemjob-a_link/output-1")));
}

TEST(OutputFolder, LeavesAloneWhatIsInUse)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.path("a.pdf");
    const OutputFolder folder(path);
    write(folder.path() + "output");
    std::filesystem::last_write_time(folder.path(), std::filesystem::file_time_type::clock::now() -
                                                        std::chrono::seconds(100));

    removeRemains(path);

    EXPECT_TRUE(std::filesystem::exists(folder.path() + "output"));
}

TEST(OutputFolder, FindsNoRemainsWhereThereIsNoFolder)
{
    const Torv::Test::TemporaryDirectory directory;

    EXPECT_NO_THROW(removeRemains(directory.path("none/a.pdf")));
}

TEST(OutputFolder, RefusesAPathWithoutItsFolder)
{
    const Torv::Test::TemporaryDirectory directory;

    EXPECT_THROW(OutputFolder(directory.path("none/a.pdf")), WorkerException);
}

TEST(OutputFolder, RefusesToTakeThePlaceOfAPipe)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string pipe = directory.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_symlink("pipe", directory.path("link"));

    for (const char* const name : {"pipe", "link", ""}) {
        try {
            const OutputFolder folder(directory.path(name));
            FAIL() << name;
        } catch (const WorkerException& thrown) {
            EXPECT_EQ(std::string(thrown.what()),
                      "Cannot write file | path=" + directory.path(name) + " | error=Not a regular file");
        }
    }

    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_TRUE(std::filesystem::is_symlink(directory.path("link")));
}

TEST(OutputFolder, PutsNumbersInFrontOfSuffixes)
{
    EXPECT_EQ(numberedPath("/a.b/c.png", 1), "/a.b/c-1.png");
    EXPECT_EQ(numberedPath("/a.b/c", 12), "/a.b/c-12");
    EXPECT_EQ(numberedPath("c.tar.png", 2), "c.tar-2.png");
    EXPECT_EQ(numberedPath("/a/.png", 3), "/a/.png-3");
}

} // namespace
} // namespace JobParser::Worker
