#include "worker/ServiceProcess.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/FileText.h"
#include "worker/Service.h"
#include "worker/WorkerException.h"

#include "Torv/Json/Json.h"
#include "Torv/Number.h"
#include "Torv/Variant.h"

namespace JobParser::Worker
{
namespace
{

/// The children of this process.
std::vector<pid_t> children()
{
    std::vector<pid_t> found;
    const std::string self = std::to_string(::getpid());
    std::string text = fileText("/proc/" + self + "/task/" + self + "/children");
    while (!text.empty()) {
        const std::size_t end = text.find(' ');
        found.push_back(Torv::atoi(text.substr(0, end)));
        text.erase(0, end == std::string::npos ? end : end + 1);
    }
    return found;
}

class ServiceProcessTest : public testing::Test
{
protected:
    std::string ask()
    {
        const std::string path = directory.file("job", "%!PS\n0 0 9 9 rectfill showpage\n");
        return process->ask(R"({"command":"parse","pdl":2,"jobPath":")" + path + "\"}");
    }

    Torv::Test::TemporaryDirectory directory;
    ServiceOptions options;
    std::unique_ptr<ServiceProcess> process = std::make_unique<ServiceProcess>(options);
};

constexpr const char* onePage =
    R"({"errorCode":0,"errorMessage":"","blankCount":0,"monoCount":1,"grayCount":0,)"
    R"("colorCount":0,"copies":1,"pageWidth":0,"pageHeight":0})";

TEST_F(ServiceProcessTest, AnswersAsAServiceDoes)
{
    EXPECT_EQ(ask(), onePage);
    EXPECT_EQ(ask(), onePage);
    EXPECT_EQ(Torv::Json::parse(process->ask("nonsense"))["errorCode"].toInt(), 1);
}

TEST_F(ServiceProcessTest, StartsWithItsFirstRequestAndStays)
{
    EXPECT_EQ(children().size(), 0U);

    ask();
    const std::vector<pid_t> first = children();
    ask();

    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(children(), first);
}

TEST_F(ServiceProcessTest, EndsWithTheObject)
{
    ask();

    process.reset();

    EXPECT_EQ(children().size(), 0U);
}

TEST_F(ServiceProcessTest, StartsAgainBehindAnEnd)
{
    ask();
    const pid_t former = children().at(0);
    ::kill(former, SIGKILL);

    // The request that finds the process gone may fail; the next one has a new process.
    std::string reply;
    try {
        reply = ask();
    } catch (const WorkerException& error) {
        EXPECT_STREQ(error.what(), "The process of Ghostscript went away");
        reply = ask();
    }

    EXPECT_EQ(reply, onePage);
    EXPECT_NE(children().at(0), former);
}

} // namespace
} // namespace JobParser::Worker
