// What Parser makes of the replies of worker processes.

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <vector>

#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "JobParser/model/GlobalParser.h"
#include "tests/support/OpenJob.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/ScriptedWorker.h"

#include "Torv/GenericException.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogNull.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;
using Message = RecordingLog::Message;

constexpr const char* a4Reply = R"({"blankCount":1,"monoCount":2,"grayCount":4,"colorCount":8,"copies":3,)"
                                R"("pageWidth":2100,"pageHeight":2970})";
constexpr const char* wideReply = R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,)"
                                  R"("pageWidth":4200,"pageHeight":2970})";

/// A parser that keeps what it logs, and a job for it.
struct Scene {
    OpenJob job{"body"sv};
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>(4);
    Parser parser{log, job.papers, true};
    Global::Parser globalParser{job.job, job.file, job.papers};
    std::chrono::milliseconds duration{-1};

    /// The log without its messages of level 4.
    std::vector<std::string> complaints() const
    {
        std::vector<std::string> texts;
        for (const Message& message : log->messages) {
            if (message.level < 4)
                texts.push_back(std::to_string(message.level) + ": " + message.text);
        }
        return texts;
    }
};

using Texts = std::vector<std::string>;

JobInfo recordOf(Pdl pdl)
{
    JobInfo info;
    info.setPdl(pdl);
    return info;
}

JobInfo resultOf(Scene& scene, const char* reply)
{
    JobInfo info;
    scene.parser.processExternalParserResult(Torv::Json::parse(reply), info);
    return info;
}

TEST(ExternalParser, ReadsAReply)
{
    Scene scene;

    const JobInfo info = resultOf(scene, a4Reply);

    EXPECT_EQ(info.monoCount, 7) << "blank and gray pages are mono ones";
    EXPECT_EQ(info.grayCount, 0);
    EXPECT_EQ(info.colorCount, 8);
    EXPECT_EQ(info.copies, 3);
    EXPECT_EQ(info.orientation, Orientation::Portrait);
    EXPECT_EQ(info.paper, PaperA4);
    EXPECT_EQ(info.m_flags, 2U + 4U + 8U + 2048U);
    ASSERT_EQ(scene.log->messages.size(), 1U);
    EXPECT_EQ(scene.log->messages[0].level, 4);
    EXPECT_EQ(scene.log->messages[0].text,
              "External parser result | blankCount=1 | monoCount=2 | grayCount=4 "
              "|colorCount=8 | copies=3 | pageWidth=2100 | pageHeight=2970");
    EXPECT_EQ(scene.log->messages[0].sourceFile, "JobParser/Parser.cpp");
}

TEST(ExternalParser, ReadsAWidePageAsLandscape)
{
    Scene scene;

    const JobInfo info = resultOf(scene, wideReply);

    EXPECT_EQ(info.orientation, Orientation::Landscape);
    EXPECT_EQ(info.paper, PaperA3);
    EXPECT_EQ(info.monoCount, 1);
}

TEST(ExternalParser, TakesNoCopiesForOne)
{
    Scene scene;

    EXPECT_EQ(resultOf(scene, R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":0,"pageWidth":0,)"
                              R"("pageHeight":0})")
                  .copies,
              1);
}

TEST(ExternalParser, KnowsNeitherPaperNorOrientationOfAPageWithoutASize)
{
    for (const char* size : {R"("pageWidth":0,"pageHeight":2970)", R"("pageWidth":2100,"pageHeight":0)"}) {
        Scene scene;
        const std::string reply =
            R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,)" + std::string(size) + "}";

        const JobInfo info = resultOf(scene, reply.c_str());

        EXPECT_EQ(info.m_flags, 2U + 4U);
        ASSERT_EQ(scene.log->messages.size(), 2U);
        EXPECT_EQ(scene.log->messages[1].level, 4);
        EXPECT_EQ(scene.log->messages[1].text, "External parser did not recognize any paper size");
    }
}

TEST(ExternalParser, StoresAPaperThatItDoesNotKnowAndTellsOfIt)
{
    Scene scene;

    const JobInfo info = resultOf(scene, R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,)"
                                         R"("pageWidth":10,"pageHeight":20})");

    EXPECT_EQ(info.flags(JobInfo::FlagPaper), 8);
    EXPECT_EQ(info.paper, PaperOther);
    EXPECT_EQ(scene.complaints(), Texts{"3: Unknown paper (External Parser) | width=10 | height=20"});
}

TEST(ExternalParser, ResolvesThePaperByTheNamesOfTheParserToo)
{
    Scene scene;
    scene.job.papers.add("10x20", PaperB4);

    EXPECT_EQ(resultOf(scene, R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,"pageWidth":10,)"
                              R"("pageHeight":20})")
                  .paper,
              PaperB4);
}

TEST(ExternalParser, WritesNothingForTheDebugLevelIfNobodyReadsIt)
{
    Scene scene;
    const auto log = std::make_shared<RecordingLog>(3);
    Parser parser(log, scene.job.papers, true);
    JobInfo info;

    parser.processExternalParserResult(Torv::Json::parse(a4Reply), info);
    parser.processExternalParserResult(
        Torv::Json::parse(
            R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,"pageWidth":0,"pageHeight":0})"),
        info);

    EXPECT_TRUE(log->messages.empty());
}

struct ErrorReply {
    const char* reply;
    const char* message;
};

TEST(ExternalParser, TakesNothingFromAReplyThatTellsOfAnError)
{
    constexpr std::array<ErrorReply, 6> rows{{
        {R"({"errorCode":5})", "1: External parser error | errCode=5 | errorMessage= "},
        {R"({"errorCode":-1,"errorMessage":null})", "1: External parser error | errCode=-1 | errorMessage= "},
        {R"({"errorMessage":"broken"})", "1: External parser error | errCode=0 | errorMessage=broken "},
        {R"({"errorCode":0,"errorMessage":"broken"})",
         "1: External parser error | errCode=0 | errorMessage=broken "},
        {R"({"errorCode":null,"errorMessage":"a\nb"})",
         "1: External parser error | errCode=0 | errorMessage=a\nb "},
        {R"({"errorCode":7,"errorMessage":"x","monoCount":1,"grayCount":0,"colorCount":0,"copies":1,)"
         R"("pageWidth":2100,"pageHeight":2970})",
         "1: External parser error | errCode=7 | errorMessage=x "},
    }};

    for (const ErrorReply& row : rows) {
        Scene scene;

        EXPECT_EQ(resultOf(scene, row.reply).m_flags, 0U) << row.reply;
        EXPECT_EQ(scene.complaints(), Texts{row.message});
    }
}

TEST(ExternalParser, TakesAReplyWithoutAnErrorForAnAnswer)
{
    const std::string rest =
        R"("monoCount":2,"grayCount":0,"colorCount":0,"copies":1,"pageWidth":0,"pageHeight":0})";
    for (const char* start : {"{", R"({"errorCode":0,)", R"({"errorCode":null,)", R"({"errorMessage":"",)",
                              R"({"errorMessage":null,)", R"({"errorCode":0,"errorMessage":"",)",
                              R"({"blankCount":null,)", R"({"unknown":[1],)"}) {
        Scene scene;

        EXPECT_EQ(resultOf(scene, (start + rest).c_str()).monoCount, 2) << start;
        EXPECT_TRUE(scene.complaints().empty());
    }
}

TEST(ExternalParser, RejectsRepliesThatLackAKeyOrHoldSomethingElse)
{
    const std::array<const char*, 15> replies{{
        R"({"grayCount":0,"colorCount":0,"copies":1,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":1,"colorCount":0,"copies":1,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":1,"grayCount":0,"copies":1,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":1,"grayCount":0,"colorCount":0,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,"pageHeight":1})",
        R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,"pageWidth":1})",
        R"({"monoCount":null,"grayCount":0,"colorCount":0,"copies":1,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":"1","grayCount":0,"colorCount":0,"copies":1,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":1.5,"grayCount":0,"colorCount":0,"copies":1,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1.0,"pageWidth":1,"pageHeight":1})",
        R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":1,"pageWidth":99999999999,"pageHeight":1})",
        R"({"errorCode":"1"})",
        R"({"errorCode":1.5})",
        R"({"errorMessage":1})",
        R"([1])",
    }};

    for (const char* reply : replies) {
        Scene scene;

        EXPECT_THROW(resultOf(scene, reply), Torv::VariantInvalidOperationException) << reply;
        EXPECT_TRUE(scene.log->messages.empty());
    }
}

TEST(ExternalParser, SurvivesCountsThatOverflow)
{
    Scene scene;

    const JobInfo info =
        resultOf(scene, R"({"blankCount":2147483647,"monoCount":2147483647,"grayCount":1,)"
                        R"("colorCount":-5,"copies":-9,"pageWidth":-2147483648,"pageHeight":-1})");

    EXPECT_EQ(info.monoCount, -1);
    EXPECT_EQ(info.colorCount, -5);
    EXPECT_EQ(info.copies, 1);
    EXPECT_EQ(info.paper, PaperOther);
}

struct Asking {
    Pdl pdl;
    bool asked;
    bool takesOrientation;
};

TEST(ExternalParser, AsksForTheLanguagesThatWorkersRead)
{
    constexpr std::array<Asking, 12> rows{{
        {Pdl::Unknown, false, false},
        {Pdl::Pcl5, true, true},
        {Pdl::PostScript, true, false},
        {Pdl::EscP, false, false},
        {Pdl::Prescribe, false, false},
        {Pdl::PclXl, true, true},
        {Pdl::Pdf, true, true},
        {Pdl::Jpeg, false, false},
        {Pdl::Xps, true, true},
        {Pdl::Urf, false, false},
        {static_cast<Pdl>(10), false, false},
        {Pdl::Detect, false, false},
    }};

    for (const Asking& row : rows) {
        const ScriptedWorker worker(ScriptedWorker::answering(wideReply));
        Scene scene;
        JobInfo info = recordOf(row.pdl);

        scene.parser.externalParser(scene.globalParser, info, scene.duration);

        const int pdl = static_cast<int>(row.pdl);
        EXPECT_EQ(info.flags(JobInfo::FlagPageCount) != 0, row.asked) << pdl;
        EXPECT_EQ(info.flags(JobInfo::FlagPaper) != 0, row.asked) << pdl;
        EXPECT_EQ(info.flags(JobInfo::FlagOrientation) != 0, row.takesOrientation) << pdl;
        EXPECT_EQ(info.pdl, row.pdl);
        EXPECT_EQ(worker.requests(), row.asked ? R"({"command":"parse","pdl":)" + std::to_string(pdl) +
                                                     R"(,"jobPath":")" + scene.job.file.path +
                                                     R"(","grayscaleTolerance":0})" + "\n"
                                               : "");
        EXPECT_GE(scene.duration.count(), 0);
        EXPECT_LT(scene.duration.count(), 60000);
    }
}

TEST(ExternalParser, FillsGapsOfPaperAndOrientationAndReplacesCounts)
{
    const ScriptedWorker worker(ScriptedWorker::answering(a4Reply));
    Scene scene;
    JobInfo info = recordOf(Pdl::Pcl5);
    info.setPaper(PaperLetter);
    info.setOrientation(Orientation::Landscape);
    info.setPageCount(100, 100, 100);
    info.setCopies(2);

    scene.parser.externalParser(scene.globalParser, info, scene.duration);

    EXPECT_EQ(info.paper, PaperLetter);
    EXPECT_EQ(info.orientation, Orientation::Landscape);
    EXPECT_EQ(info.monoCount, 7);
    EXPECT_EQ(info.grayCount, 0);
    EXPECT_EQ(info.colorCount, 8);
    EXPECT_EQ(info.copies, 3) << "the greater number stands";
}

TEST(ExternalParser, KeepsTheGreaterNumberOfCopies)
{
    const ScriptedWorker worker(ScriptedWorker::answering(a4Reply));
    Scene scene;
    JobInfo info = recordOf(Pdl::Pcl5);
    info.setCopies(5);

    scene.parser.externalParser(scene.globalParser, info, scene.duration);

    EXPECT_EQ(info.copies, 5);
}

TEST(ExternalParser, TakesNoCopiesForOneAlsoInTheMerge)
{
    const ScriptedWorker worker(ScriptedWorker::answering(
        R"({"monoCount":1,"grayCount":0,"colorCount":0,"copies":0,"pageWidth":0,"pageHeight":0})"));
    Scene scene;
    JobInfo without = recordOf(Pdl::Pcl5);
    JobInfo with = recordOf(Pdl::Pcl5);
    with.setCopies(3);

    scene.parser.externalParser(scene.globalParser, without, scene.duration);
    scene.parser.externalParser(scene.globalParser, with, scene.duration);

    EXPECT_EQ(without.copies, 1);
    EXPECT_EQ(with.copies, 3);
}

TEST(ExternalParser, FillsTheGapBesideAPaperOrAnOrientationThatIsKnown)
{
    const ScriptedWorker worker(ScriptedWorker::answering(wideReply));
    Scene scene;
    JobInfo paperKnown = recordOf(Pdl::Pcl5);
    JobInfo orientationKnown = recordOf(Pdl::Pcl5);
    paperKnown.setPaper(PaperLetter);
    orientationKnown.setOrientation(Orientation::Portrait);

    scene.parser.externalParser(scene.globalParser, paperKnown, scene.duration);
    scene.parser.externalParser(scene.globalParser, orientationKnown, scene.duration);

    EXPECT_EQ(paperKnown.paper, PaperLetter);
    EXPECT_EQ(paperKnown.orientation, Orientation::Landscape);
    EXPECT_EQ(orientationKnown.paper, PaperA3);
    EXPECT_EQ(orientationKnown.orientation, Orientation::Portrait);
}

TEST(ExternalParser, AsksForPostScriptWithoutAnOrientationAndTakesTheCounts)
{
    const ScriptedWorker worker(ScriptedWorker::answering(wideReply));
    Scene scene;
    JobInfo info = recordOf(Pdl::PostScript);
    info.setPaper(PaperA5);
    info.setPageCount(9, 9, 9);

    scene.parser.externalParser(scene.globalParser, info, scene.duration);

    EXPECT_EQ(info.flags(JobInfo::FlagOrientation), 0);
    EXPECT_EQ(info.paper, PaperA5);
    EXPECT_EQ(info.monoCount, 1);
    EXPECT_EQ(info.colorCount, 0);
}

struct Failure {
    const char* what;
    std::string script;
    const char* message;
};

TEST(ExternalParser, LogsWhatGoesWrongAndGoesOn)
{
    const std::array<Failure, 7> rows{{
        {"crash", "crash", "Parsing via an external parser failed: The worker process died | signal=6"},
        {"hang", "hang", "Parsing via an external parser failed: The worker process did not answer in time"},
        {"flood", "flood 20000000",
         "Parsing via an external parser failed: The worker process answered too much | limit=16777216"},
        {"no JSON", "print {nonsense%0A",
         "Parsing via an external parser failed: Json::parse(): The text is no JSON"},
        {"nothing", "leave 0", "Parsing via an external parser failed: Json::parse(): The text is no JSON"},
        {"no line", "print nonsense leave 0",
         "Parsing via an external parser failed: Json::parse(): The text is no JSON"},
        {"a key missing", ScriptedWorker::answering(R"({"monoCount":1})"),
         "Parsing via an external parser failed: Variant: The key is missing | key=grayCount | kind=Object"},
    }};
    Library::Options options;
    options.poolDeadline = 2000;

    for (const Failure& row : rows) {
        const ScriptedWorker worker(row.script, options);
        Scene scene;
        JobInfo info;

        scene.parser.execExternalParser(scene.globalParser, Pdl::Pdf, info);

        EXPECT_EQ(info.m_flags, 0U) << row.what;
        ASSERT_EQ(scene.log->messages.size(), 1U) << row.what;
        EXPECT_EQ(scene.log->messages[0].level, 1);
        EXPECT_EQ(scene.log->messages[0].text.substr(0, std::string(row.message).size()), row.message);
        EXPECT_EQ(scene.log->messages[0].sourceFile, "JobParser/Parser.cpp");
        EXPECT_EQ(scene.log->messages[0].details, "");
        EXPECT_FALSE(scene.log->messages[0].flag);
    }
}

TEST(ExternalParser, LogsAWorkerThatIsNotThere)
{
    Library::Options options;
    options.directory = "/nowhere";
    options.executable = "worker";
    options.processCount = 1;
    Library::init(options);
    Scene scene;
    JobInfo info;

    scene.parser.execExternalParser(scene.globalParser, Pdl::Pdf, info);

    Library::init({});
    EXPECT_EQ(scene.complaints(),
              Texts{"1: Parsing via an external parser failed: Cannot start the worker process | "
                    "path=/nowhere/worker | error=No such file or directory"});
}

/// Leaves with 0 if a parser that may ask fails before the library was set up.
[[noreturn]] void askBeforeInitialisation()
{
    Scene scene;
    JobInfo info;
    try {
        scene.parser.execExternalParser(scene.globalParser, Pdl::Pdf, info);
    } catch (const Torv::GenericException& error) {
        const bool isRight =
            error.what() == "External Parser is not initialized yet. Call Library::init first!"sv &&
            scene.log->messages.empty() && Library::currentExtJobProcessor() == nullptr;
        std::_Exit(isRight ? 0 : 1);
    }
    std::_Exit(2);
}

TEST(ExternalParserDeathTest, ThrowsBeforeTheLibraryIsSetUp)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(askBeforeInitialisation(), testing::ExitedWithCode(0), "");
}

constexpr Parser::ParseOptions detectAll{Pdl::Detect, true, true};

std::string pclJob()
{
    return JobBytes().esc("E").raw("text\f").esc("E").str();
}

TEST(ExternalParser, IsAskedInAParseThatLeavesFactsOpen)
{
    const ScriptedWorker worker(ScriptedWorker::answering(a4Reply) + " sleep 20");
    OpenJob job(pclJob());
    Parser parser(std::make_shared<Torv::Log::LogNull>(), job.papers, true);

    const auto result = parser.parse(job.file, detectAll);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.monoCount, 7);
    EXPECT_EQ(result->job->jobInfo.paper, PaperA4);
    EXPECT_EQ(result->job->jobInfo.copies, 3);
    EXPECT_LT(result->externalParserDuration.count(), 60000);
    EXPECT_NE(worker.requests(), "");
}

TEST(ExternalParser, IsNotAskedWhereNobodyWantsIt)
{
    const ScriptedWorker worker(ScriptedWorker::answering(a4Reply));
    OpenJob job(pclJob());
    const auto log = std::make_shared<Torv::Log::LogNull>();

    const auto notAllowed = Parser(log, job.papers, false).parse(job.file, detectAll);
    const auto notCollected = Parser(log, job.papers, true).parse(job.file, {Pdl::Detect, false, true});

    EXPECT_EQ(worker.requests(), "");
    EXPECT_EQ(notAllowed->job->jobInfo.flags(JobInfo::FlagPageCount), 0);
    EXPECT_EQ(notCollected->job->jobInfo.flags(JobInfo::FlagPageCount), 0);
    EXPECT_EQ(notAllowed->externalParserDuration.count(), 0);
    EXPECT_EQ(notCollected->externalParserDuration.count(), 0);
}

TEST(ExternalParser, IsNotAskedForAJobThatTellsAllItself)
{
    const ScriptedWorker worker(ScriptedWorker::answering(a4Reply));
    OpenJob job(JobBytes()
                    .esc("E")
                    .esc("&l26A")
                    .esc("&l1O")
                    .raw("!R!CMNT \"Color=6\",\"Mono=4\";EXIT;text")
                    .esc("E"));
    Parser parser(std::make_shared<Torv::Log::LogNull>(), job.papers, true);

    const auto result = parser.parse(job.file, detectAll);

    EXPECT_EQ(worker.requests(), "");
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Pcl5);
    EXPECT_EQ(result->job->jobInfo.flags(2058), 2058);
    EXPECT_EQ(result->job->jobInfo.colorCount, 6);
}

TEST(ExternalParser, IsNotAskedForAMalformedJob)
{
    const ScriptedWorker worker(ScriptedWorker::answering(a4Reply));
    OpenJob job("\x1B*b9Wx"sv);
    Parser parser(std::make_shared<Torv::Log::LogNull>(), job.papers, true);

    const auto result = parser.parse(job.file, {Pdl::Pcl5, true, true});

    EXPECT_FALSE(result->parsed);
    EXPECT_EQ(worker.requests(), "");
    EXPECT_EQ(result->externalParserDuration.count(), 0);
}

TEST(ExternalParser, GivesThePagesThatAreTurnedIntoSidesOfPaper)
{
    const ScriptedWorker worker(ScriptedWorker::answering(
        R"({"monoCount":3,"grayCount":1,"colorCount":2,"copies":1,"pageWidth":2100,"pageHeight":2970})"));
    OpenJob job(
        JobBytes().uel().pjl("SET LPARM:PDF KMULTIPAGE=TWO").pjl("ENTER LANGUAGE=PCL").esc("E").uel());
    Parser parser(std::make_shared<Torv::Log::LogNull>(), job.papers, true);

    const JobInfo info = parser.parse(job.file, detectAll)->job->jobInfo;

    EXPECT_EQ(info.pagesPerSheet, 2);
    EXPECT_EQ(info.monoCount, 1);
    EXPECT_EQ(info.grayCount, 0);
    EXPECT_EQ(info.colorCount, 2);
}

TEST(ExternalParser, GoesOnWithoutAWorker)
{
    const ScriptedWorker worker("crash");
    OpenJob job(JobBytes().esc("E").esc("&l26A").raw("text").esc("E"));
    const auto log = std::make_shared<RecordingLog>(1);

    const auto result = Parser(log, job.papers, true).parse(job.file, detectAll);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.paper, PaperA4);
    EXPECT_EQ(result->job->jobInfo.flags(JobInfo::FlagPageCount), 0);
    ASSERT_EQ(log->messages.size(), 1U);
    EXPECT_EQ(log->messages[0].text,
              "Parsing via an external parser failed: The worker process died | signal=6");
}

TEST(ExternalParserThreads, AskOnePoolWhileItIsReplaced)
{
    const ScriptedWorker worker(ScriptedWorker::answering(a4Reply));
    std::array<int, 8> counts{};
    std::vector<std::thread> threads;

    for (int& count : counts) {
        threads.emplace_back([&count] {
            OpenJob job(pclJob());
            Parser parser(std::make_shared<Torv::Log::LogNull>(), job.papers, true);
            for (int round = 0; round < 20; ++round)
                count += parser.parse(job.file, detectAll)->job->jobInfo.monoCount;
        });
    }
    for (int round = 0; round < 3; ++round)
        const ScriptedWorker next(ScriptedWorker::answering(a4Reply));
    for (std::thread& thread : threads)
        thread.join();

    for (const int count : counts)
        EXPECT_EQ(count % 7, 0) << "each job got the right counts, or none between two pools";
}

} // namespace
} // namespace JobParser
