#include "JobParser/ParseJobInfo.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

#include "JobParser/Parser.h"
#include "tests/support/OpenJob.h"

#include "Torv/GenericException.h"

namespace JobParser
{
namespace
{

constexpr const char* factlessRecord =
    R"({"version":1,"pjl":true,"pdl":null,"paper":null,"monoCount":null,"grayCount":null,"colorCount":null,)"
    R"("duplex":null,"copies":null,"forceMono":null,"stapling":null,"punching":null,"orientation":null,)"
    R"("ecoMode":null,"ecoMode":null,"pagesPerSheet":null,"originalBrand":null})";

const std::string malformedJob = JobBytes().uel().pjl("SET COPIES=3").raw("@PXL").str();

TEST(ParseJobInfo, GivesTheRecordOfAMalformedJobWithoutFacts)
{
    const TemporaryFile job(malformedJob);

    EXPECT_EQ(parseJobInfo(job.path()), factlessRecord);
    EXPECT_STREQ(ParseJobInfo(job.path().c_str()), factlessRecord);
}

TEST(ParseJobInfo, GivesATextThatStaysForEver)
{
    const TemporaryFile job(malformedJob);

    const char* first = ParseJobInfo(job.path().c_str());
    for (int call = 0; call < 100; ++call)
        EXPECT_NE(ParseJobInfo(job.path().c_str()), first);

    EXPECT_STREQ(first, factlessRecord);
}

TEST(ParseJobInfo, LetsTheExceptionOfAFileThatCannotBeOpenedPass)
{
    EXPECT_THROW(ParseJobInfo("/nowhere/job.prn"), Torv::GenericException);
    EXPECT_THROW(parseJobInfo("/"), Torv::GenericException);
}

TEST(ParseJobInfoThreads, MeetInTheFirstCall)
{
    // Only who comes while another is still initialising may find no worker processes to ask.
    const TemporaryFile job("\x1B"
                            "Etext\x1B"
                            "E");
    std::atomic<int> given{0};
    std::atomic<int> early{0};
    std::vector<std::thread> threads;

    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&] {
            for (int call = 0; call < 10; ++call) {
                try {
                    const std::string record = parseJobInfo(job.path());
                    given += record.find(R"("pdl":1,)") != std::string::npos;
                } catch (const Torv::GenericException& error) {
                    early += std::string_view(error.what()).starts_with("External Parser is not initialized");
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(given + early, 80);
    EXPECT_GT(given, 0);
}

TEST(LazyInitThreads, GiveTrueToOneCallAlone)
{
    std::atomic<int> firsts{0};
    std::vector<std::thread> threads;

    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([&] { firsts += lazyInit(); });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_LE(firsts, 1) << "none if another test came first";
    EXPECT_FALSE(lazyInit());
}

/// Leaves with 0 if the first call of lazyInit, and it alone, says that it was the first.
[[noreturn]] void initialiseTwice()
{
    const bool first = lazyInit();
    const bool second = lazyInit();
    std::_Exit(first && !second ? 0 : 1);
}

TEST(LazyInitDeathTest, InitialisesAtItsFirstCallAlone)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(initialiseTwice(), testing::ExitedWithCode(0), "");
}

/// A directory for a copy of the running program, which goes with the object.
class ProgramDirectory
{
public:
    ProgramDirectory() : m_path((std::filesystem::temp_directory_path() / "program-XXXXXX").string())
    {
        if (mkdtemp(m_path.data()) == nullptr)
            throw std::runtime_error("No temporary directory");
        std::filesystem::copy_file("/proc/self/exe", program());
    }
    ~ProgramDirectory() { std::filesystem::remove_all(m_path); }
    ProgramDirectory(const ProgramDirectory&) = delete;
    ProgramDirectory& operator=(const ProgramDirectory&) = delete;

    std::string program() const { return m_path + "/program"; }
    void writeConfig() const { writeConfigInto(m_path); }

    static void writeConfigInto(const std::filesystem::path& directory)
    {
        std::filesystem::create_directory(directory / "ParserConfig");
        std::ofstream(directory / "ParserConfig" / "config.ini") << "[JobParser]\naliasA4 = HouseSheet\n";
    }

private:
    std::string m_path;
};

/// Names the test to the copy of the program that runs it again, and the paper that the copy finds for the
/// alias.
constexpr const char* paperVariable = "JOBPARSER_TEST_PAPER";

bool isCopiedProgram()
{
    return std::getenv(paperVariable) != nullptr;
}

[[noreturn]] void runCopy(const ProgramDirectory& directory, const char* filter)
{
    setenv(paperVariable, "asked", 1);
    const std::string program = directory.program();
    execl(program.c_str(), program.c_str(), filter, static_cast<char*>(nullptr));
    std::_Exit(2);
}

[[noreturn]] void printPaper()
{
    std::fprintf(stderr, "paper %d\n", static_cast<int>(paperList.paperById("HouseSheet", false)));
    std::_Exit(0);
}

TEST(LazyInitDeathTest, ReadsTheConfigurationBesideTheProgram)
{
    if (isCopiedProgram()) {
        lazyInit();
        printPaper();
    }
    const ProgramDirectory directory;
    directory.writeConfig();

    EXPECT_EXIT(runCopy(directory, "--gtest_filter=LazyInitDeathTest.ReadsTheConfigurationBesideTheProgram"),
                testing::ExitedWithCode(0), "paper 5");
}

TEST(LazyInitDeathTest, KnowsTheUsualPapersAloneWithoutAConfiguration)
{
    if (isCopiedProgram()) {
        lazyInit();
        printPaper();
    }
    const ProgramDirectory directory;

    EXPECT_EXIT(
        runCopy(directory, "--gtest_filter=LazyInitDeathTest.KnowsTheUsualPapersAloneWithoutAConfiguration"),
        testing::ExitedWithCode(0), "paper 7");
}

TEST(LazyInitDeathTest, IgnoresAConfigurationThatAppearsLater)
{
    if (isCopiedProgram()) {
        lazyInit();
        ProgramDirectory::writeConfigInto(std::filesystem::read_symlink("/proc/self/exe").parent_path());
        lazyInit();
        printPaper();
    }
    const ProgramDirectory directory;

    EXPECT_EXIT(runCopy(directory, "--gtest_filter=LazyInitDeathTest.IgnoresAConfigurationThatAppearsLater"),
                testing::ExitedWithCode(0), "paper 7");
}

} // namespace
} // namespace JobParser
