#include "Torv/FileSystem/Path.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/Torv/TemporaryDirectory.h"

using Torv::FileSystem::Path;

TEST(Path, NamesTheRunningExecutable)
{
    EXPECT_EQ(Path::stdExePath(), std::filesystem::canonical("/proc/self/exe").string());
}

TEST(Path, NamesAnExecutableWhoseFileExists)
{
    const std::string path = Path::stdExePath();

    EXPECT_EQ(path.front(), '/');
    EXPECT_EQ(path.find('\0'), std::string::npos);
    EXPECT_EQ(::access(path.c_str(), X_OK), 0);
}

TEST(Path, NamesAnExecutableOfAnyLength)
{
    // A copy of this test deep down runs the first test of this file there.
    const Torv::Test::TemporaryDirectory directory;
    std::string deep = directory.path(std::string(200, 'a'));
    for (int depth = 0; depth < 4; ++depth)
        deep += "/" + std::string(200, 'b');
    std::filesystem::create_directories(deep);
    const std::string copy = deep + "/test";
    std::filesystem::copy_file("/proc/self/exe", copy);

    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(copy.c_str(), copy.c_str(), "--gtest_filter=Path.NamesTheRunningExecutable",
                "--gtest_brief=1", nullptr);
        ::_exit(127);
    }
    int status = -1;
    ::waitpid(child, &status, 0);

    EXPECT_EQ(status, 0);
}
