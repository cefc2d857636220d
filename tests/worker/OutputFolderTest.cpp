#include "worker/OutputFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

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

TEST(OutputFolder, RefusesAPathWithoutItsFolder)
{
    const Torv::Test::TemporaryDirectory directory;

    EXPECT_THROW(OutputFolder(directory.path("none/a.pdf")), WorkerException);
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
