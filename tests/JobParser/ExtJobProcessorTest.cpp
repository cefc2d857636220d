#include "JobParser/ExtJobProcessor.h"

#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/MessageOf.h"
#include "tests/support/ScriptedWorker.h"

#include "Torv/Json/Object.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

ExtJobProcessor& processor()
{
    return Library::extJobProcessor();
}

TEST(ExtJobProcessor, SendsARequestToParse)
{
    Library::Options options;
    options.grayscaleTolerance = 7;
    const ScriptedWorker worker(ScriptedWorker::answering(R"({"a":1})"), options);

    const Torv::Variant reply = processor().parse("/spool/a \"job\".prn", Pdl::PostScript);

    EXPECT_EQ(worker.requests(),
              R"({"command":"parse","pdl":2,"jobPath":"/spool/a \"job\".prn","grayscaleTolerance":7})"
              "\n");
    EXPECT_EQ(reply.toJson(), R"({"a":1})");
}

TEST(ExtJobProcessor, SendsARequestToConvert)
{
    const ScriptedWorker worker(ScriptedWorker::answering(R"({"success":true})"));
    ConvertParams params;
    params.jobPath = "in";
    params.outPath = "out";
    params.conversionFormat = ConversionFormat::Tiff;
    params.pageCount = 1;
    params.forceMono = true;
    params.imgBoundingBoxWidth = 2;
    params.imgBoundingBoxHeight = 4294967295;
    params.imgDpi = 600;

    processor().convert(params);
    processor().convert({});

    EXPECT_EQ(
        worker.requests(),
        R"({"command":"convert","params":{"jobPath":"in","outPath":"out","conversionFormat":3,"pageCount":1,)"
        R"("forceMono":true,"imgBoundingBoxWidth":2,"imgBoundingBoxHeight":4294967295,"imgDpi":600}})"
        "\n"
        R"({"command":"convert","params":{"jobPath":"","outPath":"","conversionFormat":0,"pageCount":0,)"
        R"("forceMono":false,"imgBoundingBoxWidth":0,"imgBoundingBoxHeight":0,"imgDpi":0}})"
        "\n");
}

struct Conversion {
    const char* reply;
    const char* failure;
};

TEST(ExtJobProcessor, SucceedsInConvertingOnlyIfTheWorkerSaysSo)
{
    constexpr std::array<Conversion, 6> rows{{
        {R"({"success":true})", "nothing was thrown"},
        {R"({"success":true,"errorMessage":"but"})", "nothing was thrown"},
        {R"({"success":false})",
         R"(Error while executing the external Job Processor | error={"success":false})"},
        {R"({"reason":[1,2.5],"success":false})",
         R"(Error while executing the external Job Processor | error={"reason":[1,2.5],"success":false})"},
        {R"({})", "Variant: The key is missing | key=success | kind=Object"},
        {R"({"success":1})", "Variant: The value does not convert | wanted=boolean | kind=Int32"},
    }};

    for (const Conversion& row : rows) {
        const ScriptedWorker worker(ScriptedWorker::answering(row.reply));

        EXPECT_EQ(messageOf([] { processor().convert({}); }), row.failure) << row.reply;
    }
}

TEST(ExtJobProcessor, DropsTheLinesBeforeTheReply)
{
    for (const char* chatter : {"", "loading\n", "\n", " {\"a\":2}\n", "a\nb\n\n", "x{\n"}) {
        const std::string text = std::string(chatter) + R"({"a":1})";
        const ScriptedWorker worker(ScriptedWorker::answering(text));

        EXPECT_EQ(processor().run(Torv::Json::Object()).toJson(), R"({"a":1})") << text;
        EXPECT_EQ(worker.requests(), "{}\n");
    }
}

TEST(ExtJobProcessor, RejectsAReplyThatIsNoJson)
{
    for (const char* reply : {"no brace and no line feed", "one line\nthe last one", "{\"a\":"}) {
        const ScriptedWorker worker("print " + ScriptedWorker::encoded(reply) + " leave 0");

        EXPECT_EQ(messageOf([] { processor().parse("", Pdl::Pdf); }).substr(0, 37),
                  "Json::parse(): The text is no JSON | ")
            << reply;
    }
}

TEST(ExtJobProcessor, RejectsAnEmptyReply)
{
    const ScriptedWorker worker("leave 0");

    EXPECT_EQ(messageOf([] { processor().parse("", Pdl::Pdf); }).substr(0, 37),
              "Json::parse(): The text is no JSON | ");
}

TEST(ExtJobProcessor, FailsWithItsWorker)
{
    const ScriptedWorker worker("crash");

    EXPECT_EQ(messageOf([] { processor().parse("", Pdl::Pdf); }), "The worker process died | signal=6");
}

TEST(ExtJobProcessor, FailsRequestsOnceItIsStopped)
{
    const ScriptedWorker worker(ScriptedWorker::answering("{}"));
    processor().run(Torv::Json::Object());

    processor().stop();

    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(messageOf([] { processor().parse("", Pdl::Pdf); }), "The worker processes are not started");
    EXPECT_NO_THROW(processor().stop());
}

TEST(ExtJobProcessor, LeavesItsWorkersToTheParentInAForkedProcess)
{
    const ScriptedWorker worker(ScriptedWorker::answering(R"({"a":1})"));
    processor().run(Torv::Json::Object());

    const pid_t child = ::fork();
    if (child == 0) {
        const auto start = std::chrono::steady_clock::now();
        Library::init({});
        const auto taken = std::chrono::steady_clock::now() - start;
        ::_exit(taken < std::chrono::milliseconds(500) ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);

    EXPECT_EQ(status, 0);
    EXPECT_EQ(processor().run(Torv::Json::Object()).toJson(), R"({"a":1})");
}

TEST(ExtJobProcessor, NumbersTheFormatsAsWorkersKnowThem)
{
    EXPECT_EQ(static_cast<int>(ConversionFormat::Pdf), 0);
    EXPECT_EQ(static_cast<int>(ConversionFormat::Png), 1);
    EXPECT_EQ(static_cast<int>(ConversionFormat::Jpeg), 2);
    EXPECT_EQ(static_cast<int>(ConversionFormat::Tiff), 3);
    EXPECT_EQ(static_cast<int>(ConversionFormat::Text), 4);
    EXPECT_EQ(static_cast<int>(ConversionFormat::PostScript), 5);
}

} // namespace
} // namespace JobParser
