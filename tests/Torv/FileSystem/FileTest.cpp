#include "Torv/FileSystem/File.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "tests/Torv/TemporaryDirectory.h"

#include "Torv/GenericException.h"

using Torv::FileSystem::File;
using Torv::Test::TemporaryDirectory;

TEST(File, TellsTheSizeInBytes)
{
    const TemporaryDirectory directory;

    EXPECT_EQ(File::fileSize(directory.file("empty", "")), 0);
    EXPECT_EQ(File::fileSize(directory.file("job", std::string("a\0b\n", 4))), 4);
}

TEST(File, TellsASizeThatNeedsMoreThan32Bits)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("sparse", "");
    std::filesystem::resize_file(path, 5000000000);

    EXPECT_EQ(File::fileSize(path), 5000000000);
}

TEST(File, ThrowsWithPathAndReasonForAMissingFile)
{
    const TemporaryDirectory directory;
    const std::string path = directory.path("missing");
    std::string message;

    try {
        File::fileSize(path);
    } catch (const Torv::GenericException& caught) {
        message = caught.what();
    }

    EXPECT_EQ(message, "Cannot get the file size | path=" + path + " | error=No such file or directory");
}
