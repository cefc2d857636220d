#include "Torv/Data/FileReader.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "Torv/GenericException.h"

namespace Torv::Data
{
namespace
{

class FileReaderTest : public testing::Test
{
protected:
    FileReaderTest()
    {
        std::string pattern = testing::TempDir() + "FileReaderXXXXXX";
        m_folder = mkdtemp(pattern.data());
    }
    ~FileReaderTest() override { std::filesystem::remove_all(m_folder); }

    std::string path(const std::string& name) const { return m_folder + "/" + name; }

    std::string write(const std::string& bytes) const
    {
        std::ofstream(path("file"), std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path("file");
    }

    static std::string reasonFor(const std::string& file)
    {
        try {
            FileReader::load(file);
        } catch (const GenericException& exception) {
            return exception.what();
        }
        return "nothing was thrown";
    }

    std::string m_folder;
};

TEST_F(FileReaderTest, GivesAllBytesOfAFile)
{
    const std::string bytes("a\r\n\0\xFF\x1A", 6);

    EXPECT_EQ(FileReader::load(write(bytes)), bytes);
}

TEST_F(FileReaderTest, GivesNothingForAnEmptyFile)
{
    EXPECT_EQ(FileReader::load(write("")), "");
}

TEST_F(FileReaderTest, ReadsLongFiles)
{
    std::string bytes;
    for (int line = 0; line < 100000; ++line)
        bytes += "line " + std::to_string(line) + "\n";

    EXPECT_EQ(FileReader::load(write(bytes)), bytes);
}

TEST_F(FileReaderTest, NamesThePathAndTheReasonOfAFailure)
{
    EXPECT_EQ(reasonFor(path("absent")), "FileReader: The file cannot be read | path=" + path("absent") +
                                             " | error=No such file or directory");
    EXPECT_EQ(reasonFor(m_folder),
              "FileReader: The file cannot be read | path=" + m_folder + " | error=not a regular file");
}

TEST_F(FileReaderTest, RefusesAPipeWithoutWaitingForAWriter)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);

    EXPECT_EQ(reasonFor(path("pipe")),
              "FileReader: The file cannot be read | path=" + path("pipe") + " | error=not a regular file");
}

} // namespace
} // namespace Torv::Data
