#include "JobParser/Parser.h"

#include <array>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "JobParser/Library.h"
#include "JobParser/model/ChunkRawData.h"
#include "tests/JobParser/RecordJson.h"
#include "tests/support/OpenJob.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SparseFile.h"
#include "tests/support/WholeJobs.h"

#include "Torv/Log/LogNull.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;
using WholeJobs::detectAll;
using WholeJobs::dumped;
using WholeJobs::parse;
using WholeJobs::saved;

using Message = RecordingLog::Message;

TEST(Parser, GivesAnEmptyJobForAFileOfZeroBytes)
{
    OpenJob job(""sv);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_TRUE(result->job->chunks.empty());
    EXPECT_EQ(result->job->jobInfo.toJson(), Record{}.json());
}

TEST(Parser, KeepsUnknownDataAsOneRawStretch)
{
    OpenJob job("hello"sv);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    ASSERT_EQ(result->job->chunks.size(), 1U);
    const auto* raw = dynamic_cast<ChunkRawData*>(result->job->chunks[0].get());
    ASSERT_NE(raw, nullptr);
    EXPECT_EQ(raw->offset, 0);
    EXPECT_EQ(raw->size(), 5);
    EXPECT_EQ(result->job->jobInfo.toJson(), Record{}.json());
}

TEST(Parser, ReadsTheFileFromItsStartWhereverItStands)
{
    OpenJob job("hello"sv);
    job.file.setPos(3);

    const auto result = parse(job);

    EXPECT_EQ(saved(*result->job, job.file), "hello");
}

TEST(Parser, CountsAJpegAsOneColourPage)
{
    Record expected;
    expected.pdl = "7";
    expected.counts = oneColourPage;

    EXPECT_EQ(recordOf(jpegStart), expected.json());
    EXPECT_EQ(recordOf("no JPEG at all", {Pdl::Jpeg, true, true}), expected.json());
}

TEST(Parser, RunsNoLanguageForWhatItDoesNotRead)
{
    for (const auto& [pdl, text] : {std::pair(Pdl::EscP, "3"), std::pair(Pdl::Urf, "9"),
                                    std::pair(Pdl::Unknown, "0"), std::pair(static_cast<Pdl>(77), "77")}) {
        Record expected;
        expected.pdl = text;
        OpenJob job("UNIRAST and more"sv);

        const auto result = parse(job, {pdl, true, true});

        EXPECT_EQ(result->job->jobInfo.toJson(), expected.json());
        EXPECT_EQ(result->job->chunks.size(), 1U);
    }
}

TEST(Parser, TakesTheLanguageThatItIsTold)
{
    OpenJob pcl("ab\f"sv);
    OpenJob prescribe("!R! COPY 4;ab"sv);
    OpenJob empty(""sv);

    EXPECT_EQ(dumped(*parse(pcl, {Pdl::Pcl5, true, true})->job),
              "Job parser: Dumping 3 chunks\nFirst page start\nRaw (2 bytes)\nForm Feed\n");
    EXPECT_FALSE(parse(prescribe, {Pdl::Prescribe, true, true})->parsed);
    EXPECT_EQ(dumped(*parse(empty, {Pdl::Pcl5, true, true})->job),
              "Job parser: Dumping 1 chunks\nFirst page start\n");
    EXPECT_EQ(dumped(*parse(empty, {Pdl::PostScript, true, true})->job), "Job parser: Dumping 0 chunks\n");
    EXPECT_FALSE(parse(pcl, {Pdl::PostScript, true, true})->parsed);
    EXPECT_EQ(dumped(*parse(empty, {Pdl::Prescribe, true, true})->job),
              "Job parser: Dumping 1 chunks\nPrescribe (0 bytes)\n");
}

TEST(Parser, WalksAPdfWithoutItsHeaderAsRawData)
{
    for (const bool allowRestricted : {true, false}) {
        Record expected;
        expected.pdl = "6";
        OpenJob job("no header"sv);

        const auto result = parse(job, {Pdl::Pdf, true, allowRestricted});

        EXPECT_TRUE(result->parsed);
        EXPECT_EQ(result->job->jobInfo.toJson(), expected.json());
        EXPECT_EQ(result->job->chunks.size(), 1U);
    }
}

TEST(Parser, LetsPjlOverruleTheLanguageThatWasRecognisedOrTold)
{
    const std::string pjl = JobBytes().uel().pjl("ENTER LANGUAGE=URF").str();
    Record expected;
    expected.pjl = true;
    expected.pdl = "9";
    expected.counts = oneColourPage;

    EXPECT_EQ(recordOf(std::string(jpegStart) + pjl), expected.json());
    EXPECT_EQ(recordOf(pjl, {Pdl::Jpeg, true, true}), expected.json());
}

TEST(Parser, FindsTheLanguageOfAJobWithoutEnterUnknown)
{
    Record expected;
    expected.pjl = true;

    EXPECT_EQ(recordOf(JobBytes().uel().pjl("COMMENT hello").uel().str()), expected.json());
}

JobBytes malformedJob()
{
    return JobBytes().uel().pjl("SET COPIES=3").raw("@PXL").uel();
}

TEST(Parser, MakesAMalformedJobOneRawStretchWithoutFacts)
{
    for (const bool allowRestricted : {true, false}) {
        OpenJob job(malformedJob());
        Record expected;
        expected.pjl = true;
        expected.pdl = "null";
        expected.copies = "null";

        const auto result = parse(job, {Pdl::Detect, true, allowRestricted});

        EXPECT_FALSE(result->parsed);
        EXPECT_EQ(result->job->jobInfo.toJson(), expected.json());
        ASSERT_EQ(result->job->chunks.size(), 1U);
        EXPECT_NE(dynamic_cast<ChunkRawData*>(result->job->chunks[0].get()), nullptr);
        EXPECT_EQ(saved(*result->job, job.file), malformedJob().str());
        EXPECT_EQ(result->externalParserDuration.count(), 0);
    }
}

TEST(Parser, LogsWhereAMalformedJobFailedAndHowFarItCame)
{
    OpenJob job(malformedJob());
    const auto log = std::make_shared<RecordingLog>(3);

    parse(job, detectAll, log);

    ASSERT_EQ(log->messages.size(), 1U);
    const Message& message = log->messages[0];
    EXPECT_EQ(message.level, 1);
    EXPECT_EQ(message.text, "Parsing failed at offset 0x1F. The job will have no metadata. | "
                            "error=GetPjlToken(): Unexpected character");
    EXPECT_EQ(message.details, "Job parser: Dumping 2 chunks\nUEL\n@PJL SET COPIES=3\n");
    EXPECT_TRUE(message.flag);
    EXPECT_EQ(message.sourceFile, "JobParser/Parser.cpp");
    EXPECT_GT(message.line, 0);
}

TEST(Parser, LogsTheRecordsOfTheLanguagesAtTheDebugLevel)
{
    OpenJob job(JobBytes().raw(jpegStart).uel().pjl("SET COPIES=3").uel());
    const auto log = std::make_shared<RecordingLog>(4);

    parse(job, detectAll, log);

    ASSERT_EQ(log->messages.size(), 3U);
    EXPECT_EQ(
        log->messages[0].text,
        "Job info PJL: pdl=- | mono=- | gray=- | color=- | paper=- | orientation=- | duplex=- | copies=3 | "
        "forceMono=- | stapling=- | punching=- | tonerSaving=- | pagesPerSheet=- | originalBrand=- | "
        "pjl=yes ");
    EXPECT_EQ(
        log->messages[1].text,
        "Job info PDL: pdl=- | mono=0 | gray=0 | color=1 | paper=- | orientation=- | duplex=- | copies=- | "
        "forceMono=- | stapling=- | punching=- | tonerSaving=- | pagesPerSheet=- | originalBrand=- | "
        "pjl=no ");
    EXPECT_EQ(log->messages[2].text,
              "Job info Prescribe: pdl=- | mono=- | gray=- | color=- | paper=- | orientation=- | duplex=- | "
              "copies=- | "
              "forceMono=- | stapling=- | punching=- | tonerSaving=- | pagesPerSheet=- | originalBrand=- | "
              "pjl=no ");
    for (const Message& message : log->messages) {
        EXPECT_EQ(message.level, 4);
        EXPECT_EQ(message.details, "");
        EXPECT_FALSE(message.flag);
        EXPECT_EQ(message.sourceFile, "JobParser/Parser.cpp");
    }
}

TEST(Parser, LogsNothingOfAGoodJobBelowTheDebugLevel)
{
    OpenJob job(JobBytes().uel().pjl("SET COPIES=3").uel());
    const auto log = std::make_shared<RecordingLog>(3);

    parse(job, detectAll, log);

    EXPECT_TRUE(log->messages.empty());
}

TEST(Parser, LetsOtherExceptionsPass)
{
    OpenJob job(JobBytes().uel().pjl("COMMENT \"INFO:QTY many\"").uel());

    EXPECT_THROW(parse(job), std::invalid_argument);
}

TEST(Parser, KeepsNothingFromOneJobToTheNext)
{
    OpenJob first(JobBytes().uel().pjl("SET COPIES=3").pjl("SET PAPER=A4").uel());
    OpenJob second("plain"sv);
    Parser parser(std::make_shared<Torv::Log::LogNull>(), first.papers, false);

    parser.parse(first.file, detectAll);
    const auto result = parser.parse(second.file, detectAll);

    EXPECT_EQ(result->job->jobInfo.toJson(), Record{}.json());
}

TEST(Parser, TellsHowLongTheWalkTook)
{
    SparseFile bytes;
    bytes.resize(10000000);
    OpenJob job(""sv);
    job.file.open(bytes.path());

    const auto result = parse(job);

    EXPECT_GE(result->parseDuration.count(), 0);
    EXPECT_LT(result->parseDuration.count(), 60000);
    EXPECT_EQ(result->externalParserDuration.count(), 0);
}

TEST(ParserThreads, ParseJobsSideBySide)
{
    Library::init({});
    PaperSizeManager papers;
    const std::array<std::string, 3> jobs{
        JobBytes()
            .uel()
            .pjl("SET COPIES=3")
            .pjl("SET PAPER=A4")
            .pjl("ENTER LANGUAGE=XPS")
            .raw("body")
            .uel()
            .str(),
        JobBytes().raw(jpegStart).uel().pjl("SET PAPER=2100x2970").uel().str(), malformedJob().str()};
    std::array<std::string, 4> metadata;
    std::vector<std::thread> threads;

    for (std::string& text : metadata) {
        threads.emplace_back([&] {
            Parser parser(std::make_shared<Torv::Log::LogNull>(), papers, false);
            for (const std::string& bytes : jobs) {
                const TemporaryFile disk(bytes);
                JobFile file;
                file.open(disk.path());
                text += parser.parse(file, detectAll)->job->toJson() + "\n";
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_NE(metadata[0].find(R"("pdl":8,"paper":5)"), std::string::npos);
    EXPECT_NE(metadata[0].find(R"("pdl":7,"paper":5)"), std::string::npos);
    EXPECT_NE(metadata[0].find(R"("pdl":null,"paper":null)"), std::string::npos);
    for (const std::string& text : metadata)
        EXPECT_EQ(text, metadata[0]);
}

} // namespace
} // namespace JobParser
