#include "JobParser/Parser.h"

#include <array>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

#include "JobParser/Library.h"
#include "JobParser/model/ChunkRawData.h"
#include "tests/support/OpenJob.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SparseFile.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogNull.h"
#include "Torv/Log/LogString.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

constexpr std::string_view jpegStart = "\xFF\xD8\xFF\xE0";
constexpr Parser::ParseOptions detectAll{Pdl::Detect, true, true};

using Message = RecordingLog::Message;

std::shared_ptr<JobParserResult>
parse(OpenJob& job, const Parser::ParseOptions& options = detectAll,
      std::shared_ptr<Torv::Log::ILog> log = std::make_shared<Torv::Log::LogNull>())
{
    return Parser(std::move(log), job.papers, false).parse(job.file, options);
}

std::string saved(const Job& job, JobFile& file)
{
    Torv::IO::StringStream stream;
    job.save(file, stream);
    return stream.str();
}

/// What the job writes when it is parsed and saved unchanged.
std::string parsedAndSaved(std::string_view bytes)
{
    OpenJob job(bytes);
    const auto result = parse(job);
    EXPECT_TRUE(result->parsed);
    EXPECT_NO_THROW(result->job->checkChunkSizes(job.file));
    return saved(*result->job, job.file);
}

std::string recordOf(std::string_view bytes, const Parser::ParseOptions& options = detectAll)
{
    OpenJob job(bytes);
    const auto result = parse(job, options);
    EXPECT_TRUE(result->parsed);
    return result->job->jobInfo.toJson();
}

/// The JSON of a record in which all is null that does not stand here.
struct Record {
    bool pjl = false;
    const char* pdl = "0";
    const char* paper = "null";
    const char* counts = R"("monoCount":null,"grayCount":null,"colorCount":null)";
    const char* duplex = "null";
    const char* copies = "1";
    const char* forceMono = "null";
    const char* stapling = "null";
    const char* punching = "null";
    const char* ecoMode = "null";
    const char* pagesPerSheet = "null";
    const char* originalBrand = "null";
    const char* last = "";

    std::string json() const
    {
        return std::string(R"({"version":1,"pjl":)") + (pjl ? "true" : "false") + R"(,"pdl":)" + pdl +
               R"(,"paper":)" + paper + "," + counts + R"(,"duplex":)" + duplex + R"(,"copies":)" + copies +
               R"(,"forceMono":)" + forceMono + R"(,"stapling":)" + stapling + R"(,"punching":)" + punching +
               R"(,"orientation":null,"ecoMode":)" + ecoMode + R"(,"ecoMode":)" + ecoMode +
               R"(,"pagesPerSheet":)" + pagesPerSheet + R"(,"originalBrand":)" + originalBrand + last + "}";
    }
};

constexpr const char* oneColourPage = R"("monoCount":0,"grayCount":0,"colorCount":1)";
constexpr const char* noPages = R"("monoCount":0,"grayCount":0,"colorCount":0)";

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

std::string dumped(const Job& job)
{
    Torv::Log::LogString log;
    job.dump(log);
    return log.getAndClear();
}

TEST(Parser, ReadsAJobInPclByItsFirstBytes)
{
    const std::string bytes =
        JobBytes().esc("E").esc("&l26A").esc("&l1O").esc("&l2S").esc("&l3X").raw("ab\fc").str();
    OpenJob job(bytes);

    const auto result = parse(job);

    const JobInfo& info = result->job->jobInfo;
    EXPECT_EQ(dumped(*result->job), "Job parser: Dumping 9 chunks\nESC E\nESC & l 26 A\nRaw (5 bytes)\n"
                                    "ESC & l 2 S\nESC & l 3 X\nFirst page start\nRaw (2 bytes)\nForm Feed\n"
                                    "Raw (1 bytes)\n");
    EXPECT_EQ(info.pdl, Pdl::Pcl5);
    EXPECT_EQ(info.paper, PaperA4);
    EXPECT_EQ(info.orientation, Orientation::Landscape);
    EXPECT_EQ(info.duplex, Duplex::ShortEdge);
    EXPECT_EQ(info.copies, 3);
    EXPECT_FALSE(info.pjl);
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(Parser, MarksTheFirstPageOfAPclBodyWithoutSetupAtTheStartOfTheJob)
{
    OpenJob job(JobBytes().uel().pjl("ENTER LANGUAGE=PCL").raw("ab\f").uel());

    const auto result = parse(job);

    EXPECT_EQ(dumped(*result->job),
              "Job parser: Dumping 6 chunks\nFirst page start\nUEL\n@PJL ENTER LANGUAGE=PCL\n"
              "Raw (2 bytes)\nForm Feed\nUEL\n");
}

TEST(Parser, MarksTheFirstPageOfTheLastPclBody)
{
    OpenJob job(JobBytes().esc("E").raw("a").uel().pjl("ENTER LANGUAGE=PCL").esc("E").raw("b").uel());

    const auto result = parse(job);

    EXPECT_EQ(dumped(*result->job), "Job parser: Dumping 8 chunks\nESC E\nRaw (1 bytes)\nUEL\n"
                                    "@PJL ENTER LANGUAGE=PCL\nESC E\nFirst page start\nRaw (1 bytes)\nUEL\n");
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

TEST(Parser, ReadsAJobInPrescribeByItsFirstBytes)
{
    const std::string bytes = "!R! COPY 2; SPSZ 10; CMNT \"Color=6\",\"Mono=4\"; EXIT;ab";
    OpenJob job(bytes);

    const auto result = parse(job);

    const JobInfo& info = result->job->jobInfo;
    EXPECT_EQ(dumped(*result->job), "Job parser: Dumping 2 chunks\nPrescribe (51 bytes)\nRaw (2 bytes)\n");
    EXPECT_EQ(info.pdl, Pdl::Prescribe);
    EXPECT_EQ(info.copies, 2);
    EXPECT_EQ(info.paper, PaperA3);
    EXPECT_EQ(info.monoCount, 4);
    EXPECT_EQ(info.colorCount, 6);
    EXPECT_EQ(info.originalBrand, Zem::Printer::OriginalBrand::KxDriver);
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(Parser, ReadsAJobInPostScriptByItsFirstBytes)
{
    const std::string bytes = "%!PS-Adobe-3.0\n%%ViewingOrientation: 0 1 -1 0\n"
                              "%%BeginFeature: *Duplex DuplexNoTumble\nab\n%%EndFeature\n%%EOF\r\n";
    OpenJob job(bytes);

    const auto result = parse(job);

    const JobInfo& info = result->job->jobInfo;
    EXPECT_EQ(dumped(*result->job),
              "Job parser: Dumping 6 chunks\nRaw (15 bytes)\n%%ViewingOrientation: 0 1 -1 0\n"
              "%%BeginFeature: *Duplex DuplexNoTumble\nRaw (3 bytes)\n%%EndFeature\n%%EOF\n");
    EXPECT_EQ(info.pdl, Pdl::PostScript);
    EXPECT_EQ(info.orientation, Orientation::Landscape);
    EXPECT_EQ(info.duplex, Duplex::LongEdge);
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(Parser, LetsPjlOverrulePostScript)
{
    OpenJob job(
        JobBytes()
            .uel()
            .pjl("SET DUPLEX=ON")
            .pjl("SET BINDING=LONGEDGE")
            .pjl("ENTER LANGUAGE=POSTSCRIPT")
            .raw("%!PS\n%%BeginFeature: *Duplex DuplexTumble\n%%EndFeature\n")
            .raw("%%BeginFeature: *StapleLocation x\n/MediaProcessingOption (LEFT_2PT)\n%%EndFeature\n")
            .uel());

    const JobInfo info = parse(job)->job->jobInfo;

    EXPECT_EQ(info.duplex, Duplex::LongEdge);
    EXPECT_EQ(info.stapling, Staple::Two);
    EXPECT_EQ(info.originalBrand, Zem::Printer::OriginalBrand::Hp);
}

TEST(Parser, MakesAJobWithMalformedPostScriptOneRawStretch)
{
    for (const std::string body : {"%!PS\n%%EOF", "%!PS\n%%a\nb", "%!PS\n%%!R! ABCDE;",
                                   "%!PS\n%%EndPageSetup\n%", "%!PS\nx\n%%EndPageSetup\n[\n%%a]\n"}) {
        OpenJob job{std::string_view(body)};

        const auto result = parse(job);

        EXPECT_FALSE(result->parsed) << body;
        EXPECT_EQ(result->job->chunks.size(), 1U);
        EXPECT_EQ(result->job->jobInfo.m_flags, 0U);
        EXPECT_EQ(saved(*result->job, job.file), body);
    }
}

TEST(Parser, PassesOnWhatMatricesThatAreNoNumbersThrow)
{
    OpenJob job("%!PS\nx\n%%EndPageSetup\n[a b c d e f]msf\n................\n"sv);

    EXPECT_THROW(parse(job), std::invalid_argument);
}

TEST(Parser, LetsPrescribeOverrulePjlAndPjlOverrulePcl)
{
    OpenJob job(JobBytes()
                    .uel()
                    .pjl("SET COPIES=3")
                    .pjl("SET PAPER=A4")
                    .pjl("ENTER LANGUAGE=PCL")
                    .esc("&l27A")
                    .esc("&l1S")
                    .esc("&l5X")
                    .raw("!R!SPSZ 6;DUPX 0;COPY 4;EXIT;")
                    .uel());

    const JobInfo info = parse(job)->job->jobInfo;

    EXPECT_EQ(info.paper, PaperLetter);
    EXPECT_EQ(info.copies, 5) << "the greatest stands";
    EXPECT_EQ(info.duplex, Duplex::LongEdge) << "none displaces nothing";
    EXPECT_EQ(info.pdl, Pdl::Pcl5);
    OpenJob withoutPrescribe(
        JobBytes().uel().pjl("SET PAPER=A4").pjl("ENTER LANGUAGE=PCL").esc("&l27A").uel());
    EXPECT_EQ(parse(withoutPrescribe)->job->jobInfo.paper, PaperA4);
}

struct MalformedBody {
    std::string bytes;
    const char* error;
};

const std::array<MalformedBody, 17> malformedBodies{{
    {"\x1B ", "PCL: Invalid operation character 0x20"},
    {"\x1B*\x1B", "PCL: Invalid group character 0x1b"},
    {"\x1B*p ", "PCL: Invalid param/value character ' '"},
    {"\x1B*p123456789012345X", "PCL: ESC value too long"},
    {"\x1B", "GetPclToken(): Unexpected EOF"},
    {"\x1B*", "GetPclToken(): Unexpected EOF"},
    {"\x1B*p", "GetPclToken(): Unexpected EOF"},
    {"\x1B*b9Wx", "GetPclToken(): Unexpected EOF"},
    {"\x1B*b2147483647Wx", "GetPclToken(): Unexpected EOF"},
    {"\x1B*b-1Wx", "PCL: Negative binary data size"},
    {"\x1B*b2147483648Wx", "PCL: Negative binary data size"},
    {"\x1B*b1wx", "GetPclToken(): ESC with binary date not expected"},
    {"!R!COPY 3;ABCDE;EXIT;", "JobParser: Prescribe cmd name too long"},
    {"!R!COPY 3;X \"EXIT;", "GetPrescribeToken(): Unexpected EOF"},
    {"!R!X 'EXIT;" + std::string(11000, 'x') + "';", "JobParser: Prescribe cmd too long"},
    {"!R!X 'EXIT;'" +
         [] {
             std::string parameters;
             for (int index = 0; index < 128; ++index)
                 parameters += ",1";
             return parameters;
         }() +
         ";",
     "JobParser: Prescribe cmd has too many parameters"},
    {"\x1B&t38P\x80", "Unexpected end of file"},
}};

TEST(Parser, MakesAJobWithMalformedPclOrPrescribeOneRawStretch)
{
    const std::string start = "\x1B"
                              "E\x1B&l26a3Xab\f";
    for (const MalformedBody& body : malformedBodies) {
        for (const bool isPjl : {false, true}) {
            JobBytes bytes;
            if (isPjl)
                bytes.uel().pjl("SET COPIES=2").pjl("ENTER LANGUAGE=PCL");
            bytes.raw(start).raw(body.bytes);
            OpenJob job(bytes);
            Record expected;
            expected.pjl = isPjl;
            expected.pdl = "null";
            expected.copies = "null";
            const auto log = std::make_shared<RecordingLog>(Torv::Log::LevelError);

            const auto result = parse(job, detectAll, log);

            EXPECT_FALSE(result->parsed) << body.error;
            EXPECT_EQ(result->job->jobInfo.toJson(), expected.json());
            EXPECT_EQ(dumped(*result->job), "Job parser: Dumping 1 chunks\nRaw (" +
                                                std::to_string(bytes.str().size()) + " bytes)\n");
            EXPECT_EQ(saved(*result->job, job.file), bytes.str());
            ASSERT_EQ(log->messages.size(), 1U);
            EXPECT_TRUE(log->messages[0].text.ends_with(" | error=" + std::string(body.error)))
                << log->messages[0].text;
        }
    }
}

TEST(Parser, TakesAPrescribeBlockThatIsCutAnywhere)
{
    const std::string block = "!R! CMNT \"Page=1\",x ; COPY 2;EXIT;";
    const std::string start = JobBytes().uel().pjl("EOJ").str();
    std::vector<std::size_t> whole;
    for (std::size_t size = 3; size <= block.size(); ++size) {
        const std::string bytes = start + block.substr(0, size);
        OpenJob job(bytes);

        const auto result = parse(job);

        EXPECT_TRUE(result->job->jobInfo.pjl);
        if (result->parsed) {
            whole.push_back(size);
            EXPECT_EQ(result->job->chunks.size(), 3U);
        } else {
            EXPECT_EQ(result->job->chunks.size(), 1U);
            EXPECT_EQ(saved(*result->job, job.file), bytes);
        }
    }
    // Where a command ends, and the job with it.
    EXPECT_EQ(whole, (std::vector<std::size_t>{3, 21, 29, 34}));
}

TEST(Parser, WritesKeptCombinedSequencesAsSingleOnes)
{
    EXPECT_EQ(parsedAndSaved("\x1B"
                             "E\x1B&l26a1o6d2X\x1B&k1g2Gab"),
              "\x1B"
              "E\x1B&l26A\x1B&l1O\x1B&l6D\x1B&l2X\x1B&k1g2Gab");
    EXPECT_EQ(parsedAndSaved("\x1B"
                             "E\x1B&l1a\x1B&l1Oab"),
              "\x1B"
              "E\x1B&l1A\x1B&l1Oab");
}

TEST(Parser, MakesAJobInPclAndPrescribeAgainFromItsMetadata)
{
    Library::init({});
    OpenJob job(JobBytes().esc("E").raw("ab\f!R!EXIT;").esc("&l26a2X").uel());
    const auto result = parse(job);

    const Job again(Torv::Json::parse(result->job->toJson()));

    EXPECT_EQ(again.toJson(), result->job->toJson());
    EXPECT_EQ(saved(again, job.file), saved(*result->job, job.file));
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

TEST(Parser, MergesWhatPjlSays)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "8";
    expected.paper = "5";
    expected.duplex = "2";
    expected.copies = "3";
    expected.ecoMode = "true";

    EXPECT_EQ(recordOf(JobBytes()
                           .uel()
                           .pjl("SET COPIES=3")
                           .pjl("SET DUPLEX=ON")
                           .pjl("SET BINDING=SHORTEDGE")
                           .pjl("SET PAPER=A4")
                           .pjl("SET ECONOMODE=ON")
                           .pjl("ENTER LANGUAGE=XPS")
                           .raw("body")
                           .uel()
                           .str()),
              expected.json());
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

TEST(Parser, FoldsThePagesIfPjlForcesMono)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "7";
    expected.counts = R"("monoCount":0,"grayCount":0,"colorCount":1)";
    expected.forceMono = "false";
    expected.originalBrand = "3";
    EXPECT_EQ(recordOf(JobBytes().raw(jpegStart).uel().pjl("SET DATAMODE=COLOR").uel().str()),
              expected.json());

    expected.counts = R"("monoCount":1,"grayCount":0,"colorCount":0)";
    expected.forceMono = "true";
    EXPECT_EQ(recordOf(JobBytes().raw(jpegStart).uel().pjl("SET DATAMODE=GRAYSCALE").uel().str()),
              expected.json());
}

TEST(Parser, ClearsWhatWasCollectedIfNobodyWantsIt)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "7";
    expected.copies = "3";
    expected.forceMono = "false";
    expected.originalBrand = "3";
    const std::string job = JobBytes()
                                .raw(jpegStart)
                                .uel()
                                .pjl("SET COPIES=3")
                                .pjl("SET DUPLEX=ON")
                                .pjl("SET BINDING=LONGEDGE")
                                .pjl("SET PAPER=A4")
                                .pjl("SET ECONOMODE=ON")
                                .pjl("SET STAPLE=LEFTTOP")
                                .pjl("SET PUNCH=ON")
                                .pjl("SET DATAMODE=COLOR")
                                .uel()
                                .str();

    EXPECT_EQ(recordOf(job, {Pdl::Detect, false, true}), expected.json());

    expected.paper = "5";
    expected.duplex = "1";
    expected.ecoMode = "true";
    expected.stapling = "1";
    expected.punching = "100";
    expected.counts = oneColourPage;
    EXPECT_EQ(recordOf(job), expected.json());
}

TEST(Parser, KeepsTheOrientationEvenIfNobodyWantsWhatIsCollected)
{
    OpenJob job(JobBytes().esc("E").esc("&l1O").esc("&l26A").esc("&l1S").raw("a"));

    const JobInfo info = parse(job, {Pdl::Detect, false, true})->job->jobInfo;

    EXPECT_EQ(info.orientation, Orientation::Landscape);
    EXPECT_EQ(info.flags(65535), 2048 | 64 | 4);
}

TEST(Parser, TurnsPagesIntoSidesOfPaper)
{
    Record expected;
    expected.pjl = true;
    expected.pdl = "7";
    expected.pagesPerSheet = "2";
    expected.counts = oneColourPage;

    EXPECT_EQ(recordOf(JobBytes().raw(jpegStart).uel().pjl("SET LPARM:PDF KMULTIPAGE=TWO").uel().str()),
              expected.json());
}

struct Sides {
    const char* pagesPerSheet;
    const char* pages;
    int mono;
    int color;
};

TEST(Parser, KeepsColourPagesAsColourSidesAsLongAsThereAreSides)
{
    constexpr std::array<Sides, 8> rows{{
        {"TWO", "Color=2,Mono=4", 1, 2},
        {"TWO", "Color=5,Mono=1", 0, 3},
        {"TWO", "Color=1,Mono=0", 0, 1},
        {"TWO", "Color=0,Mono=3", 2, 0},
        {"TWO", "Color=0,Mono=0", 0, 0},
        {"FOUR", "Color=1,Mono=7", 1, 1},
        {"FOUR", "Color=4,Mono=1", 0, 2},
        {"NONE", "Color=2,Mono=4", 4, 2},
    }};

    for (const Sides& row : rows) {
        OpenJob job(JobBytes()
                        .uel()
                        .pjl(std::string("SET LPARM:PDF KMULTIPAGE=") + row.pagesPerSheet)
                        .raw(std::string("!R!CMNT ") + row.pages + ";EXIT;"));

        const JobInfo info = parse(job)->job->jobInfo;

        EXPECT_EQ(info.monoCount, row.mono) << row.pagesPerSheet << row.pages;
        EXPECT_EQ(info.grayCount, 0) << row.pagesPerSheet << row.pages;
        EXPECT_EQ(info.colorCount, row.color) << row.pagesPerSheet << row.pages;
    }
}

TEST(Parser, CountsZeroSidesIfPagesPerSheetAreKnownAlone)
{
    Record expected;
    expected.pjl = true;
    expected.counts = noPages;
    expected.pagesPerSheet = "4";
    const std::string job = JobBytes().uel().pjl("SET LPARM:PDF KMULTIPAGE=FOUR").uel().str();

    EXPECT_EQ(recordOf(job), expected.json());
    EXPECT_EQ(recordOf(job, {Pdl::Detect, false, true}), expected.json());
}

TEST(Parser, CorrectsTheFinishingOfHpJobs)
{
    Record expected;
    expected.pjl = true;
    expected.stapling = "1";
    expected.punching = "100";
    expected.originalBrand = "2";

    EXPECT_EQ(recordOf(JobBytes()
                           .uel()
                           .pjl("SET PROCESSINGTYPE=\"STAPLING\"")
                           .pjl("SET PROCESSINGOPTION=\"LEFT_1PT\"")
                           .pjl("SET PROCESSINGTYPE=\"PUNCH\"")
                           .pjl("SET PROCESSINGOPTION=\"RIGHT_2PT\"")
                           .uel()
                           .str()),
              expected.json());
}

TEST(Parser, CorrectsTheFinishingOfKxJobs)
{
    Record expected;
    expected.pjl = true;
    expected.originalBrand = "1";
    expected.stapling = "2";
    expected.punching = "100";
    expected.last = R"(,"kfeedShortEdge":true)";
    EXPECT_EQ(recordOf(JobBytes()
                           .uel()
                           .pjl("SET KFEEDEDGE=SHORTEDGE")
                           .pjl("SET STAPLE=LEFTTOP")
                           .pjl("SET KPUNCHOPTION=MAIN")
                           .uel()
                           .str()),
              expected.json());

    expected.stapling = "1";
    expected.punching = "101";
    expected.last = "";
    EXPECT_EQ(recordOf(JobBytes().uel().pjl("SET STAPLE=LEFTTOP").pjl("SET KPUNCHOPTION=MAIN").uel().str()),
              expected.json());
}

struct TurnedFinishing {
    const char* orientation;
    int hpStapling;
    int hpPunching;
    int kxStapling;
    int kxPunching;
};

TEST(Parser, TurnsTheFinishingOfHpAndKxJobsWithThePage)
{
    constexpr std::array<TurnedFinishing, 4> rows{{
        {"&l0O", 1, 100, 1, 101},
        {"&l1O", 2, 1, 2, 101},
        {"&l2O", 100, 100, 100, 100},
        {"&l3O", 100, 100, 100, 100},
    }};

    for (const TurnedFinishing& row : rows) {
        const std::string page =
            JobBytes().pjl("ENTER LANGUAGE=PCL").esc(row.orientation).raw("a").uel().str();
        OpenJob hp(JobBytes()
                       .uel()
                       .pjl("SET PROCESSINGTYPE=\"STAPLING\"")
                       .pjl("SET PROCESSINGOPTION=\"ONE_STAPLE\"")
                       .pjl("SET PROCESSINGTYPE=\"PUNCH\"")
                       .pjl("SET PROCESSINGOPTION=\"TOP_2HOLE\"")
                       .raw(page));
        OpenJob kx(JobBytes().uel().pjl("SET STAPLE=LEFTTOP").pjl("SET KPUNCHOPTION=MAIN").raw(page));

        const JobInfo hpInfo = parse(hp)->job->jobInfo;
        const JobInfo kxInfo = parse(kx)->job->jobInfo;

        EXPECT_EQ(static_cast<int>(hpInfo.stapling), row.hpStapling) << row.orientation;
        EXPECT_EQ(static_cast<int>(hpInfo.punching), row.hpPunching) << row.orientation;
        EXPECT_EQ(static_cast<int>(kxInfo.stapling), row.kxStapling) << row.orientation;
        EXPECT_EQ(static_cast<int>(kxInfo.punching), row.kxPunching) << row.orientation;
    }
}

TEST(Parser, KnowsThatThereIsNoFinishingForHpAndKxJobsThatTellNone)
{
    Record expected;
    expected.pjl = true;
    expected.stapling = "0";
    expected.punching = "0";
    expected.originalBrand = "2";

    const std::string job = JobBytes().uel().pjl("COMMENT \"HP Universal Printing\"").uel().str();

    EXPECT_EQ(recordOf(job), expected.json());
    EXPECT_EQ(recordOf(job, {Pdl::Detect, false, true}), expected.json());
}

TEST(Parser, LeavesTheFinishingOfOtherBrandsAlone)
{
    Record expected;
    expected.pjl = true;
    expected.stapling = "101";
    expected.originalBrand = "10";

    EXPECT_EQ(recordOf(JobBytes().uel().pjl("COMMENT Lexmark").pjl("SET STAPLEOPTION=DEFAULT").uel().str()),
              expected.json());
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

TEST(Parser, SavesAJobWithoutPjlByteForByte)
{
    const std::string bytes = JobBytes().raw("a\0b"sv).uel().uel().raw("c").esc("%-12345").str();

    EXPECT_EQ(parsedAndSaved(bytes), bytes);
}

TEST(Parser, SavesTidyPjlByteForByte)
{
    const std::string bytes = JobBytes()
                                  .raw("before")
                                  .uel()
                                  .pjl("SET COPIES=2")
                                  .pjl()
                                  .pjl("EOJ")
                                  .pjl("ENTER LANGUAGE=XPS")
                                  .raw("PK\x03\x04\x0C\r\n@PJL\x1B")
                                  .uel()
                                  .pjl("EOJ NAME=\"a\"")
                                  .uel()
                                  .str();

    EXPECT_EQ(parsedAndSaved(bytes), bytes);
}

struct Rewriting {
    const char* what;
    std::string bytes;
    std::string saved;
};

TEST(Parser, WritesPjlAnewWhenTheJobIsSaved)
{
    const std::array<Rewriting, 7> rows{{
        {"line ends", JobBytes().uel().raw("@PJL EOJ\n").uel().str(),
         JobBytes().uel().pjl("EOJ").uel().str()},
        {"blanks", JobBytes().uel().raw("@PJL  SET \t A = B \r\n").uel().str(),
         JobBytes().uel().pjl("SET A = B").uel().str()},
        {"an equal sign behind the command", JobBytes().uel().pjl("FOO=1").uel().str(),
         JobBytes().uel().pjl("FOO 1").uel().str()},
        {"text and line feeds between lines",
         JobBytes().uel().pjl("EOJ").raw("\n\ntext\r\n").pjl("EOJ").uel().str(),
         JobBytes().uel().pjl("EOJ").pjl("EOJ").uel().str()},
        {"a line that has lost its end", JobBytes().uel().raw("@PJL JOB").pjl("EOJ").uel().str(),
         JobBytes().uel().pjl("JOB").pjl("EOJ").uel().str()},
        {"an escape sequence without ENTER", JobBytes().uel().pjl("EOJ").esc("E").uel().str(),
         JobBytes().uel().pjl("EOJ").pjl("ENTER LANGUAGE=PCL").esc("E").uel().str()},
        {"a block that the file ends in", JobBytes().uel().pjl("EOJ").str(),
         JobBytes().uel().pjl("EOJ").uel().str()},
    }};

    for (const Rewriting& row : rows)
        EXPECT_EQ(parsedAndSaved(row.bytes), row.saved) << row.what;
}

TEST(Parser, ReadsWhatItSavedAsTheSameJob)
{
    const std::string once =
        parsedAndSaved(JobBytes().uel().raw("@PJL  A=B\n\n@PJL\nx").pjl("EOJ").esc("E").str());

    EXPECT_EQ(parsedAndSaved(once), once);
}

TEST(Parser, TakesAJobThatIsCutAnywhere)
{
    const std::string whole = JobBytes()
                                  .raw("lead")
                                  .uel()
                                  .pjl("SET COPIES=2")
                                  .pjl("ENTER LANGUAGE=XPS")
                                  .raw("body\x0C")
                                  .uel()
                                  .pjl("EOJ")
                                  .uel()
                                  .str();
    std::vector<std::size_t> failed;
    std::vector<std::size_t> gotUel;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::string cut = whole.substr(0, size);
        OpenJob job(cut);

        const auto result = parse(job);

        const std::string written = saved(*result->job, job.file);
        if (!result->parsed) {
            failed.push_back(size);
            EXPECT_EQ(result->job->chunks.size(), 1U);
            EXPECT_EQ(written, cut);
        } else if (written == cut + "\x1B%-12345X") {
            gotUel.push_back(size);
        } else {
            EXPECT_EQ(written, cut);
        }
        EXPECT_EQ(result->job->size(), static_cast<std::int64_t>(written.size()));
    }

    // The lines end at 32, 57 and 81. Behind the first and the last one the file ends in a block of PJL; a
    // cut UEL behind the last one is an escape sequence of PCL that is none.
    std::vector<std::size_t> insideLines;
    for (const auto& [from, to] :
         {std::pair(17U, 31U), std::pair(33U, 56U), std::pair(75U, 80U), std::pair(82U, 89U)}) {
        for (std::size_t size = from; size <= to; ++size)
            insideLines.push_back(size);
    }
    EXPECT_EQ(failed, insideLines);
    EXPECT_EQ(gotUel, (std::vector<std::size_t>{32, 81}));
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
