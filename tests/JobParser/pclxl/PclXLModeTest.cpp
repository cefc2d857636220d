#include <gtest/gtest.h>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/Library.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/GlobalParser.h"
#include "JobParser/pclxl/JobChunkPclXLOperator.h"
#include "tests/support/OpenJob.h"
#include "tests/support/PclXlBytes.h"
#include "tests/support/ThrowingAssertions.h"
#include "tests/support/WholeJobs.h"

#include "Torv/Json/Json.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;
using WholeJobs::parse;
using WholeJobs::saved;

constexpr int beginPage = 67;
constexpr int endPage = 68;
constexpr int comment = 71;
constexpr int mediaSize = 37;
constexpr int orientation = 40;
constexpr int pageCopies = 49;
constexpr int duplexPageMode = 53;
constexpr int commentData = 129;

std::string inWords(const Job& job)
{
    std::string words;
    for (const auto& chunk : job.chunks) {
        words += words.empty() ? "" : ", ";
        if (const auto* op = dynamic_cast<const JobChunkPclXLOperator*>(chunk.get()))
            words += std::string(1, static_cast<char>(op->m_operator)) + " " + std::to_string(op->start) +
                     "-" + std::to_string(op->end);
        else if (const auto* range = dynamic_cast<const JobChunkPclXLRaw*>(chunk.get()))
            words += "raw " + std::to_string(range->start) + "-" + std::to_string(range->end);
        else if (const auto* block = dynamic_cast<const ChunkPrescribe*>(chunk.get()))
            words += "Prescribe " + std::to_string(block->ofs) + "+" + std::to_string(block->size());
        else if (dynamic_cast<const ChunkUel*>(chunk.get()) != nullptr)
            words += "UEL";
        else if (dynamic_cast<const ChunkRawData*>(chunk.get()) != nullptr)
            words += "Raw data";
        else
            words += "?";
    }
    return words;
}

/// The mode, run on bytes from their start.
class Mode
{
public:
    explicit Mode(std::string_view bytes, std::int64_t start = 0)
        : job(bytes), parser(job.job, job.file, job.papers)
    {
        job.file.setPos(start);
        try {
            parser.pcl6Mode();
        } catch (const JobParserException& error) {
            failure = error.what();
        }
    }
    explicit Mode(const PclXlBytes& bytes) : Mode(std::string_view(bytes.str())) {}

    std::string chunks() const { return inWords(job.job); }

    OpenJob job;
    Global::Parser parser;
    std::string failure;
};

/// A stream of one thing, with header and end.
Mode streamOf(PclXlBytes body)
{
    return Mode(PclXlBytes().header().raw(body.str()).op(0x42));
}

// --- The header

TEST(PclXLMode, KeepsTheHeaderLineAsARangeOfItsOwn)
{
    const Mode mode(PclXlBytes().header().op(beginPage).op(endPage).op(0x42));

    EXPECT_EQ(mode.failure, "");
    EXPECT_EQ(mode.chunks(), "raw 0-23, C 24-24, D 25-25, raw 26-26");
    EXPECT_TRUE(mode.job.file.atEnd());
}

TEST(PclXLMode, FindsTheHeaderBehindOtherBytes)
{
    EXPECT_EQ(Mode(") HP) HP-PCL XL;\nB"sv).chunks(), "raw 0-16, raw 17-17");
    EXPECT_EQ(Mode("xx) HP-PCL XL;2;0\r\nB\x1B%-12345X"sv, 1).chunks(), "raw 1-18, raw 19-19");
    EXPECT_EQ(Mode("!! \x1B% ) hp-PCL XL;) HP-PCL XL;\nB"sv).chunks(), "raw 0-30, raw 31-31");
}

TEST(PclXLMode, StopsBehindTheEndOfTheSession)
{
    const Mode mode(") HP-PCL XL;\nB\n\x1B%-12345X"sv);

    EXPECT_EQ(mode.job.file.m_offset, 14);
}

TEST(PclXLMode, NeedsAHeader)
{
    for (const auto bytes :
         {"x"sv, "no header at all"sv, "( HP-PCL XL;\nB"sv, ") HP-PCL XL"sv, ") hp-pcl xl;\nB"sv}) {
        const Mode mode(bytes);
        EXPECT_EQ(mode.failure, "PCL XL stream is empty") << bytes;
        EXPECT_EQ(mode.chunks(), "raw 0-" + std::to_string(bytes.size() - 1)) << bytes;
    }
    EXPECT_EQ(Mode(""sv).failure, "PCL XL stream is empty");
}

TEST(PclXLMode, NeedsSomethingBehindTheHeaderLine)
{
    EXPECT_EQ(Mode(") HP-PCL XL;2;0"sv).failure, "PCL XL stream is empty");
    EXPECT_EQ(Mode(") HP-PCL XL;2;0\n"sv).failure, "PCL XL stream is empty");
    EXPECT_EQ(Mode(") HP-PCL XL;2;0\n"sv).chunks(), "raw 0-15");
}

TEST(PclXLMode, ReturnsInFrontOfAUelWithoutAChunk)
{
    const Mode mode("lost\x1B%-12345X) HP-PCL XL;\nB"sv);

    EXPECT_EQ(mode.failure, "");
    EXPECT_EQ(mode.chunks(), "");
    EXPECT_EQ(mode.job.file.m_offset, 4);
    EXPECT_EQ(mode.parser.pdlJobInfo.m_flags, 0U);
}

TEST(PclXLMode, ReadsPrescribeBlocksInFrontOfTheHeader)
{
    const Mode mode("ab!R! COPY 3; EXIT;!R! EXIT;cd) HP-PCL XL;\nB"sv);

    EXPECT_EQ(mode.chunks(), "raw 0-1, Prescribe 2+17, Prescribe 19+9, raw 28-42, raw 43-43");
    EXPECT_EQ(mode.parser.prescribe.jobInfo.copies, 3);
}

TEST(PclXLMode, EndsInABlockThatEndsTheFile)
{
    const Mode mode("ab!R! COPY 3; EXIT;"sv);

    EXPECT_EQ(mode.failure, "PCL XL stream is empty");
    EXPECT_EQ(mode.chunks(), "raw 0-1, Prescribe 2+17, raw 19-18");
}

TEST(PclXLMode, FindsAHeaderFarBehind)
{
    for (const std::size_t before : {4194300U, 4194303U, 4194304U, 5000000U}) {
        const Mode mode(std::string(before, '!') + ") HP-PCL XL;\nB");
        EXPECT_EQ(mode.chunks(), "raw 0-" + std::to_string(before + 12) + ", raw " +
                                     std::to_string(before + 13) + "-" + std::to_string(before + 13));
    }
}

// --- The record

int duplexOf(int pageOrientation, int mode, bool lexmark)
{
    PclXlBytes body;
    if (lexmark)
        body.text("Lexmark Enhanced", commentData).op(comment);
    body.ubyte(pageOrientation, orientation);
    if (mode >= 0)
        body.ubyte(mode, duplexPageMode);
    return static_cast<int>(streamOf(body.op(beginPage)).parser.pdlJobInfo.duplex);
}

TEST(PclXLMode, ExchangesTheDuplexEdgesOfALandscapeJobAndOfLexmarksDriver)
{
    // A mode of 1 is 1 and of 0 is 2, on a portrait page.
    EXPECT_EQ(duplexOf(0, 1, false), 1);
    EXPECT_EQ(duplexOf(0, 0, false), 2);
    EXPECT_EQ(duplexOf(2, 1, false), 1);
    EXPECT_EQ(duplexOf(1, 1, false), 2);
    EXPECT_EQ(duplexOf(1, 0, false), 1);
    EXPECT_EQ(duplexOf(3, 1, false), 2);
    EXPECT_EQ(duplexOf(0, 1, true), 2);
    EXPECT_EQ(duplexOf(0, 0, true), 1);
    EXPECT_EQ(duplexOf(1, 1, true), 1);
    EXPECT_EQ(duplexOf(3, 0, true), 2);
    for (const int pageOrientation : {0, 1, 2, 3}) {
        EXPECT_EQ(duplexOf(pageOrientation, -1, false), 0);
        EXPECT_EQ(duplexOf(pageOrientation, -1, true), 0);
    }
}

TEST(PclXLMode, ReportsWhatTheStreamTells)
{
    const Mode mode = streamOf(PclXlBytes()
                                   .ubyte(3, orientation)
                                   .ubyte(2, mediaSize)
                                   .op(beginPage)
                                   .text("Courier", 168)
                                   .op(79)
                                   .uint16(4, pageCopies)
                                   .op(endPage)
                                   .ubyte(5, mediaSize)
                                   .op(beginPage)
                                   .uint16(4, pageCopies)
                                   .op(endPage));
    const JobInfo& info = mode.parser.pdlJobInfo;

    EXPECT_EQ(info.copies, 4);
    EXPECT_EQ(info.duplex, Duplex::OneSided);
    EXPECT_EQ(info.orientation, Orientation::ReverseLandscape);
    EXPECT_EQ(info.paper, PaperA3);
    EXPECT_EQ(info.fonts, (std::set<std::string>{"Courier"}));
    EXPECT_EQ(info.flags(JobInfo::AllFlags),
              JobInfo::FlagCopies | JobInfo::FlagDuplex | JobInfo::FlagOrientation | JobInfo::FlagPaper)
        << "pages are not counted";
}

TEST(PclXLMode, KnowsNoPaperIfNoPageTellsOne)
{
    const Mode mode = streamOf(PclXlBytes().value(0xD1, "abcd", 47).op(beginPage).op(endPage));

    EXPECT_EQ(mode.parser.pdlJobInfo.flags(JobInfo::FlagPaper), 0);
    EXPECT_EQ(streamOf(PclXlBytes().ubyte(17, mediaSize).op(beginPage)).parser.pdlJobInfo.paper, PaperOther);
}

TEST(PclXLMode, ReportsOneCopyIfPagesDifferOrThereAreNone)
{
    const auto copiesOf = [](const PclXlBytes& body) { return streamOf(body).parser.pdlJobInfo.copies; };

    EXPECT_EQ(copiesOf(PclXlBytes()), 1);
    EXPECT_EQ(copiesOf(PclXlBytes().uint16(2, pageCopies).op(endPage).uint16(3, pageCopies).op(endPage)), 1);
    EXPECT_EQ(copiesOf(PclXlBytes().uint16(0, pageCopies).op(endPage)), 1) << "clamped";
    EXPECT_EQ(copiesOf(PclXlBytes().uint16(20000, pageCopies).op(endPage)), 10000) << "clamped";
    EXPECT_EQ(copiesOf(PclXlBytes().value(0xC3, "\xFF\xFF", pageCopies).op(endPage)), 1) << "-1, clamped";
}

TEST(PclXLMode, HearsPrescribeInComments)
{
    const Mode mode = streamOf(PclXlBytes()
                                   .text("!R! COPY 5;", commentData)
                                   .op(comment)
                                   .text(" DUPX 2; EXIT;", commentData)
                                   .op(comment));

    EXPECT_EQ(mode.failure, "");
    EXPECT_EQ(mode.parser.prescribe.jobInfo.copies, 5);
    EXPECT_EQ(mode.parser.prescribe.jobInfo.flags(JobInfo::FlagDuplex), JobInfo::FlagDuplex);
    EXPECT_EQ(mode.chunks(), "raw 0-23, raw 24-61") << "the comments are ranges of the stream";
}

TEST(PclXLMode, ReplacesWhatAnEarlierStreamSaidButAddsUpFonts)
{
    const std::string first = PclXlBytes()
                                  .header()
                                  .ubyte(1, orientation)
                                  .ubyte(1, duplexPageMode)
                                  .ubyte(5, mediaSize)
                                  .op(beginPage)
                                  .text("Arial", 168)
                                  .op(79)
                                  .uint16(7, pageCopies)
                                  .op(endPage)
                                  .op(0x42)
                                  .str();
    const std::string second =
        PclXlBytes().header().text("Courier", 168).op(79).op(beginPage).op(endPage).op(0x42).str();
    OpenJob job(first + second);
    Global::Parser parser(job.job, job.file, job.papers);

    parser.pcl6Mode();
    EXPECT_EQ(parser.pdlJobInfo.copies, 7);
    EXPECT_EQ(parser.pdlJobInfo.duplex, Duplex::ShortEdge);
    parser.pcl6Mode();

    EXPECT_EQ(parser.pdlJobInfo.copies, 1);
    EXPECT_EQ(parser.pdlJobInfo.duplex, Duplex::OneSided);
    EXPECT_EQ(parser.pdlJobInfo.orientation, Orientation::Portrait);
    EXPECT_EQ(parser.pdlJobInfo.paper, PaperA3) << "the second one tells none";
    EXPECT_EQ(parser.pdlJobInfo.fonts, (std::set<std::string>{"Arial", "Courier"}));
}

TEST(PclXLMode, EndsTheHeaderLineWhereverAViewEnds)
{
    for (const std::size_t size : {4194303U, 4194304U, 4194305U, 9000000U}) {
        const Mode mode(") HP-PCL XL;" + std::string(size - 13, 'x') + "\nB");
        EXPECT_EQ(mode.chunks(), "raw 0-" + std::to_string(size - 1) + ", raw " + std::to_string(size) + "-" +
                                     std::to_string(size));
    }
}

// --- Failures

TEST(PclXLMode, WrapsTheMessageOfAFailureAsItStands)
{
    EXPECT_EQ(streamOf(PclXlBytes().op(0xD6)).failure, "PCL XL parser error: Invalid control byte %02X");
    EXPECT_EQ(streamOf(PclXlBytes().op(0xC0).raw("xy")).failure,
              "PCL XL parser error: Attribute expected instead %02X");
    EXPECT_EQ(streamOf(PclXlBytes().op(0xC8).op(7)).failure,
              "PCL XL parser error: Invalid array length type 07");
    EXPECT_EQ(Mode(PclXlBytes().header().op(beginPage)).failure,
              "PCL XL parser error: Unexpected end of file");
    EXPECT_EQ(streamOf(PclXlBytes().ubyte(1, commentData).op(comment)).failure,
              "PCL XL parser error: The value of attribute is not a string!");
    EXPECT_EQ(streamOf(PclXlBytes().text("!R! ABCDE;EXIT;", commentData).op(comment)).failure,
              "PCL XL parser error: JobParser: Prescribe cmd name too long");
}

TEST(PclXLMode, KeepsNothingOfAStreamThatFails)
{
    const Mode mode(
        PclXlBytes().header().ubyte(2, mediaSize).op(beginPage).uint16(9, pageCopies).op(endPage).op(0xD6));

    EXPECT_EQ(mode.chunks(), "raw 0-23");
    EXPECT_EQ(mode.parser.pdlJobInfo.m_flags, 0U);
}

TEST(PclXLMode, KeepsNothingOfAStreamThatHasNoEnd)
{
    const Mode mode(PclXlBytes().header().ubyte(2, mediaSize).op(beginPage));

    EXPECT_EQ(mode.failure, "PCL XL parser error: Unexpected end of file");
    EXPECT_EQ(mode.chunks(), "raw 0-23");
    EXPECT_EQ(mode.parser.pdlJobInfo.m_flags, 0U);
}

[[noreturn]] void throwNumber(const char*, const char*, const char*)
{
    throw 7;
}

TEST(PclXLMode, WrapsWhatIsNoException)
{
    const Torv::AssertionHandler former = Torv::setAssertionHandler(throwNumber);
    const Mode mode = streamOf(PclXlBytes().op(0x20));
    Torv::setAssertionHandler(former);

    EXPECT_EQ(mode.failure, "PCL XL parser error");
}

// --- Whole jobs

std::string goodStream()
{
    return PclXlBytes()
        .header()
        .ubyte(0, 134)
        .ubyte(2, 143)
        .op(65)
        .ubyte(1, orientation)
        .text("A3", mediaSize)
        .op(beginPage)
        .text("some text", 171)
        .op(0xA8)
        .uint16(2, pageCopies)
        .op(endPage)
        .op(0x42)
        .str();
}

TEST(PclXLMode, ReadsAJobBehindPjlAndGoesOnBehindIt)
{
    const std::string bytes = JobBytes().uel().pjl("ENTER LANGUAGE=PCLXL").raw(goodStream()).uel().str();
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::PclXl);
    EXPECT_EQ(result->job->jobInfo.copies, 2);
    EXPECT_EQ(result->job->jobInfo.paper, PaperA3);
    EXPECT_EQ(result->job->jobInfo.orientation, Orientation::Landscape);
    EXPECT_EQ(inWords(*result->job),
              "UEL, ?, raw 36-59, A 60-68, C 69-80, raw 81-95, D 96-101, raw 102-102, UEL");
    EXPECT_EQ(saved(*result->job, job.file), bytes);
    EXPECT_NO_THROW(result->job->checkChunkSizes(job.file));
}

int stapleOf(const char* option, int pageOrientation)
{
    OpenJob job(
        JobBytes()
            .uel()
            .pjl("SET PROCESSINGTYPE=\"STAPLING\"")
            .pjl(std::string("SET PROCESSINGOPTION=\"") + option + '"')
            .pjl("ENTER LANGUAGE=PCLXL")
            .raw(PclXlBytes().header().ubyte(pageOrientation, orientation).op(beginPage).op(0x42).str())
            .uel());
    const auto result = parse(job);
    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(static_cast<int>(result->job->jobInfo.orientation), pageOrientation);
    return static_cast<int>(result->job->jobInfo.stapling);
}

TEST(PclXLMode, PlacesAStapleByTheOrientationOfTheStream)
{
    const int portrait = stapleOf("LEFT_1PT", 0);

    EXPECT_EQ(portrait, 1);
    EXPECT_EQ(stapleOf("LEFT_1PT", 4), portrait) << "turns are counted modulo 4";
    EXPECT_EQ(stapleOf("LEFT_1PT", 200), portrait);
    EXPECT_EQ(stapleOf("LEFT_1PT", 2), 100);
    EXPECT_EQ(stapleOf("LEFT_1PT", 6), 100);
}

TEST(PclXLMode, ReadsAJobByItsFirstBytes)
{
    const std::string bytes = goodStream() + "rest";
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::PclXl);
    EXPECT_EQ(inWords(*result->job), "raw 0-23, A 24-32, C 33-44, raw 45-59, D 60-65, raw 66-66, Raw data");
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(PclXLMode, MakesAJobAgainFromItsMetadata)
{
    Library::init({});
    OpenJob job(goodStream());
    const auto result = parse(job);
    const std::string metadata = result->job->toJson();

    const Job again(Torv::Json::parse(metadata));

    EXPECT_EQ(again.toJson(), metadata);
    EXPECT_EQ(saved(again, job.file), goodStream());
}

void expectOneRawStretch(const std::string& bytes)
{
    OpenJob job(bytes);
    const auto result = parse(job);
    EXPECT_FALSE(result->parsed);
    EXPECT_EQ(inWords(*result->job), "Raw data");
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(PclXLMode, MakesAMalformedJobOneRawStretch)
{
    const std::string good = goodStream();

    expectOneRawStretch(good.substr(0, good.size() - 1) + "\xD6");
    expectOneRawStretch(JobBytes().uel().pjl("ENTER LANGUAGE=PCLXL").raw(good.substr(0, 60)).str());
    for (std::size_t size = 12; size < good.size(); ++size)
        expectOneRawStretch(good.substr(0, size));
}

TEST(PclXLMode, MakesAJobOneRawStretchIfAFailedAssertionThrows)
{
    const ThrowingAssertions throwing;

    for (const auto& item : {PclXlBytes().op(0x20), PclXlBytes().op(0xC6), PclXlBytes().embedded(""),
                             PclXlBytes().shortEmbedded("")})
        expectOneRawStretch(PclXlBytes().header().op(beginPage).raw(item.str()).op(0x42).str());
}

TEST(PclXLModeDeathTest, EndsTheProcessAtAFailedAssertionByDefault)
{
    OpenJob job(PclXlBytes().header().embedded("").op(0x42).str());

    EXPECT_DEATH(parse(job), "Assertion failed: count > 0, file JobFile, function advancePos");
}

} // namespace
} // namespace JobParser
