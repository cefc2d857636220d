// Jobs as printer drivers write them, language by language: read, cut, malformed, saved unchanged.

#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "tests/JobParser/RecordJson.h"
#include "tests/support/OpenJob.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/WholeJobs.h"

#include "Torv/Json/Json.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;
using WholeJobs::detectAll;
using WholeJobs::dumped;
using WholeJobs::parse;
using WholeJobs::saved;

/// What the job writes when it is parsed and saved unchanged.
std::string parsedAndSaved(std::string_view bytes)
{
    OpenJob job(bytes);
    const auto result = parse(job);
    EXPECT_TRUE(result->parsed);
    EXPECT_NO_THROW(result->job->checkChunkSizes(job.file));
    return saved(*result->job, job.file);
}

TEST(ParserJobs, ReadsAJobInPclByItsFirstBytes)
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

TEST(ParserJobs, MarksTheFirstPageOfAPclBodyWithoutSetupAtTheStartOfTheJob)
{
    OpenJob job(JobBytes().uel().pjl("ENTER LANGUAGE=PCL").raw("ab\f").uel());

    const auto result = parse(job);

    EXPECT_EQ(dumped(*result->job),
              "Job parser: Dumping 6 chunks\nFirst page start\nUEL\n@PJL ENTER LANGUAGE=PCL\n"
              "Raw (2 bytes)\nForm Feed\nUEL\n");
}

TEST(ParserJobs, MarksTheFirstPageOfTheLastPclBody)
{
    OpenJob job(JobBytes().esc("E").raw("a").uel().pjl("ENTER LANGUAGE=PCL").esc("E").raw("b").uel());

    const auto result = parse(job);

    EXPECT_EQ(dumped(*result->job), "Job parser: Dumping 8 chunks\nESC E\nRaw (1 bytes)\nUEL\n"
                                    "@PJL ENTER LANGUAGE=PCL\nESC E\nFirst page start\nRaw (1 bytes)\nUEL\n");
}

TEST(ParserJobs, ReadsAJobInPrescribeByItsFirstBytes)
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

TEST(ParserJobs, ReadsAJobInPostScriptByItsFirstBytes)
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

TEST(ParserJobs, MakesAJobWithMalformedPostScriptOneRawStretch)
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

TEST(ParserJobs, PassesOnWhatMatricesThatAreNoNumbersThrow)
{
    OpenJob job("%!PS\nx\n%%EndPageSetup\n[a b c d e f]msf\n................\n"sv);

    EXPECT_THROW(parse(job), std::invalid_argument);
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

TEST(ParserJobs, MakesAJobWithMalformedPclOrPrescribeOneRawStretch)
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

TEST(ParserJobs, TakesAPrescribeBlockThatIsCutAnywhere)
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

TEST(ParserJobs, WritesKeptCombinedSequencesAsSingleOnes)
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

TEST(ParserJobs, MakesAJobInPclAndPrescribeAgainFromItsMetadata)
{
    Library::init({});
    OpenJob job(JobBytes().esc("E").raw("ab\f!R!EXIT;").esc("&l26a2X").uel());
    const auto result = parse(job);

    const Job again(Torv::Json::parse(result->job->toJson()));

    EXPECT_EQ(again.toJson(), result->job->toJson());
    EXPECT_EQ(saved(again, job.file), saved(*result->job, job.file));
}

TEST(ParserJobs, SavesAJobWithoutPjlByteForByte)
{
    const std::string bytes = JobBytes().raw("a\0b"sv).uel().uel().raw("c").esc("%-12345").str();

    EXPECT_EQ(parsedAndSaved(bytes), bytes);
}

TEST(ParserJobs, SavesTidyPjlByteForByte)
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

TEST(ParserJobs, WritesPjlAnewWhenTheJobIsSaved)
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

TEST(ParserJobs, ReadsWhatItSavedAsTheSameJob)
{
    const std::string once =
        parsedAndSaved(JobBytes().uel().raw("@PJL  A=B\n\n@PJL\nx").pjl("EOJ").esc("E").str());

    EXPECT_EQ(parsedAndSaved(once), once);
}

TEST(ParserJobs, TakesAJobThatIsCutAnywhere)
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

} // namespace
} // namespace JobParser
