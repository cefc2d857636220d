#include "JobParser/model/GlobalParser.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/ChunkPclEsc.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/ChunkPsComment.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkUel.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

/// The chunks of a job in words, as in "Raw 0+3, UEL, PJL SET".
std::string inWords(const Job& job)
{
    std::string words;
    for (const auto& chunk : job.chunks) {
        if (!words.empty())
            words += ", ";
        if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get()))
            words += "Raw " + std::to_string(raw->offset) + "+" + std::to_string(raw->m_size);
        else if (dynamic_cast<const ChunkUel*>(chunk.get()) != nullptr)
            words += "UEL";
        else if (const auto* pjl = dynamic_cast<const ChunkPjlCmd*>(chunk.get()))
            words += "PJL " + pjl->cmd;
        else if (const auto* block = dynamic_cast<const ChunkPrescribe*>(chunk.get()))
            words += "Prescribe " + std::to_string(block->ofs) + "+" + std::to_string(block->size());
        else if (dynamic_cast<const ChunkFormFeed*>(chunk.get()) != nullptr)
            words += "FF";
        else if (const auto* comment = dynamic_cast<const ChunkPsComment*>(chunk.get()))
            words += comment->comment;
        else if (const auto* escape = dynamic_cast<const ChunkPclEsc*>(chunk.get()))
            words += std::string("ESC ") + static_cast<char>(escape->opGroupParam >> 16);
        else
            words += "?";
    }
    return words;
}

std::string rawModeInWords(OpenJob& job)
{
    Global::Parser parser(job.job, job.file, job.papers);
    parser.rawMode(true);
    EXPECT_TRUE(job.file.atEnd());
    return inWords(job.job);
}

std::string rawModeInWords(std::string_view bytes)
{
    OpenJob job(bytes);
    return rawModeInWords(job);
}

/// What the raw loop makes of bytes without PJL and PRESCRIBE, a byte at a time.
std::string byteRule(std::string_view bytes)
{
    constexpr std::string_view exitLanguage = "\x1B%-12345X";
    Job job;
    std::size_t start = 0;
    const auto flush = [&](std::size_t end) {
        if (end != start)
            job.appendChunk(std::make_shared<ChunkRawData>(start, end - start));
    };
    std::size_t position = 0;
    while (position < bytes.size()) {
        if (!bytes.substr(position).starts_with(exitLanguage)) {
            ++position;
            continue;
        }
        flush(position);
        job.appendChunk(std::make_shared<ChunkUel>());
        position += exitLanguage.size();
        start = position;
    }
    flush(position);
    return inWords(job);
}

TEST(GlobalParser, PutsTheFileAtItsStart)
{
    OpenJob job("abc"sv);
    job.file.setPos(2);

    const Global::Parser parser(job.job, job.file, job.papers);

    EXPECT_EQ(job.file.m_offset, 0);
    EXPECT_EQ(parser.pdlJobInfo.m_flags, 0U);
    EXPECT_EQ(parser.pjl.jobInfo.m_flags, 0U);
    EXPECT_TRUE(job.job.chunks.empty());
}

struct Recognition {
    std::string_view bytes;
    int pdl;
};

TEST(GlobalParser, RecognisesALanguageByItsFirstBytes)
{
    constexpr std::array<Recognition, 24> rows{{
        {"%!PS-Adobe-3.0", 2},
        {"%PDF-1.7", 6},
        {"\xFF\xD8\xFF\xE0\x00\x10JFIF"sv, 7},
        {"!R! EXIT;", 4},
        {"\x1B"
         "E\x1B&l1O",
         1},
        {") HP-PCL XL;3;0", 5},
        {"PK\x03\x04\x14", 8},
        {"UNIRAST", 9},
        {"%!PS", 2},
        {"PK\x03\x04", 8},
        {"%!P", 0},
        {"%PDF", 0},
        {"%!ps", 0},
        {"\xFF\xD8\xFF\xE1", 0},
        {"!r!", 0},
        {"\x1B", 0},
        {"\x1B"
         "e",
         0},
        {"( HP-PCL XL;", 0},
        {"PK\x05\x06", 0},
        {"unirast", 0},
        {" %!PS", 0},
        {"\x1B%-12345X@PJL", 0},
        {"", 0},
        {"hello", 0},
    }};

    for (const Recognition& row : rows) {
        OpenJob job(row.bytes);
        Global::Parser parser(job.job, job.file, job.papers);

        EXPECT_EQ(static_cast<int>(parser.autoDetectPdl()), row.pdl) << row.bytes;
        EXPECT_EQ(job.file.m_offset, 0) << row.bytes;
        EXPECT_TRUE(job.job.chunks.empty());
    }
}

TEST(GlobalParser, KeepsUnknownBytesAsOneRawStretch)
{
    EXPECT_EQ(rawModeInWords("hello, world"), "Raw 0+12");
    EXPECT_EQ(rawModeInWords("\x1B&l1O\x1B*t300R"), "Raw 0+12");
}

TEST(GlobalParser, AppendsNothingAtTheEndOfTheData)
{
    OpenJob job("abc"sv);
    Global::Parser parser(job.job, job.file, job.papers);
    job.file.setPos(3);

    parser.rawMode(true);

    EXPECT_TRUE(job.job.chunks.empty());
    EXPECT_FALSE(job.job.modified);
    EXPECT_EQ(rawModeInWords(""), "");
}

TEST(GlobalParser, BeginsAtThePositionOfTheFile)
{
    OpenJob job("abcdef"sv);
    Global::Parser parser(job.job, job.file, job.papers);
    job.file.setPos(2);

    parser.rawMode(true);

    EXPECT_EQ(inWords(job.job), "Raw 2+4");
}

struct RawStretches {
    const char* what;
    std::string bytes;
    const char* chunks;
};

TEST(GlobalParser, CutsAJobAtItsUels)
{
    const std::array<RawStretches, 9> rows{{
        {"nothing behind the UEL", JobBytes().raw("abc").uel().str(), "Raw 0+3, UEL"},
        {"the UEL alone", JobBytes().uel().str(), "UEL"},
        {"a UEL behind a UEL", JobBytes().uel().uel().str(), "UEL, UEL"},
        {"data between UELs", JobBytes().uel().raw("ab").uel().raw("c").str(), "UEL, Raw 9+2, UEL, Raw 20+1"},
        {"eight bytes of a UEL", JobBytes().raw("ab\x1B%-12345").str(), "Raw 0+10"},
        {"a cut UEL before a whole one", JobBytes().esc("%-123").uel().str(), "Raw 0+6, UEL"},
        {"an escape before a UEL", JobBytes().raw("\x1B").uel().str(), "Raw 0+1, UEL"},
        {"a small x", JobBytes().raw("\x1B%-12345x").str(), "Raw 0+9"},
        {"a keyword without UEL", JobBytes().pjl("SET QTY=2").str(), "Raw 0+16"},
    }};

    for (const RawStretches& row : rows)
        EXPECT_EQ(rawModeInWords(row.bytes), row.chunks) << row.what;
}

TEST(GlobalParser, CutsAsTheByteRuleDoesForAllShortTexts)
{
    constexpr std::array<std::string_view, 7> alphabet{"\x1B", "%", "\x1B%-12345X", "-12345X", "!", "R", "x"};
    std::vector<std::string> texts{""};
    std::size_t compared = 0;

    for (std::size_t begin = 0, length = 0; length <= 4; ++length) {
        const std::size_t end = texts.size();
        for (std::size_t index = begin; index < end; ++index) {
            const std::string text = texts[index];
            if (text.find("!R!") == std::string::npos) {
                ASSERT_EQ(rawModeInWords(text), byteRule(text)) << testing::PrintToString(text);
                ++compared;
            }
            for (const std::string_view letter : alphabet)
                texts.push_back(text + std::string(letter));
        }
        begin = end;
    }

    // 1 + 7 + 49 + 343 + 2401 without the 15 that hold a PRESCRIBE start.
    EXPECT_EQ(compared, 2786U);
}

/// Ends of the first two views of a long file.
constexpr std::array<std::int64_t, 2> viewEnds{4194304, 8384512};
constexpr std::int64_t longSize = 8384512 + 5000;

TEST(GlobalParser, FindsAUelAtEveryOffsetAroundTheEndOfAView)
{
    SparseFile bytes;
    bytes.resize(longSize);
    for (const std::int64_t viewEnd : viewEnds) {
        for (std::int64_t offset = viewEnd - 12; offset <= viewEnd + 3; ++offset) {
            bytes.writeAt(offset, "\x1B%-12345X");
            OpenJob job(""sv);
            job.file.open(bytes.path());

            EXPECT_EQ(rawModeInWords(job), "Raw 0+" + std::to_string(offset) + ", UEL, Raw " +
                                               std::to_string(offset + 9) + "+" +
                                               std::to_string(longSize - offset - 9));
            bytes.writeAt(offset, std::string(9, '\0'));
        }
    }
}

TEST(GlobalParser, FindsNoCutUelAroundTheEndOfAView)
{
    SparseFile bytes;
    bytes.resize(longSize);
    for (std::int64_t offset = viewEnds[0] - 10; offset <= viewEnds[0] + 1; ++offset) {
        for (const std::size_t length : {1U, 2U, 5U, 8U}) {
            bytes.writeAt(offset, std::string_view("\x1B%-12345X").substr(0, length));
            OpenJob job(""sv);
            job.file.open(bytes.path());

            EXPECT_EQ(rawModeInWords(job), "Raw 0+8389512");
            bytes.writeAt(offset, std::string(9, '\0'));
        }
    }
}

TEST(GlobalParser, FindsNoUelThatTheFileEndsInAroundTheEndOfAView)
{
    for (std::int64_t offset = viewEnds[0] - 10; offset <= viewEnds[0] + 1; ++offset) {
        for (const std::size_t length : {1U, 2U, 5U, 8U}) {
            SparseFile bytes;
            const auto size = offset + static_cast<std::int64_t>(length);
            bytes.resize(size);
            bytes.writeAt(offset, std::string_view("\x1B%-12345X").substr(0, length));
            OpenJob job(""sv);
            job.file.open(bytes.path());

            EXPECT_EQ(rawModeInWords(job), "Raw 0+" + std::to_string(size));
        }
    }
}

TEST(GlobalParser, FindsUelsThatFollowEachOtherOverTheEndOfAView)
{
    SparseFile bytes;
    bytes.resize(viewEnds[0] + 14);
    bytes.writeAt(viewEnds[0] - 13, JobBytes().uel().uel().uel().str());
    OpenJob job(""sv);
    job.file.open(bytes.path());

    EXPECT_EQ(rawModeInWords(job), "Raw 0+4194291, UEL, UEL, UEL");
}

TEST(GlobalParser, HandsPjlToItsParser)
{
    OpenJob job(JobBytes().uel().pjl("SET COPIES=3").pjl("ENTER LANGUAGE=XPS").raw("PK..").uel());
    Global::Parser parser(job.job, job.file, job.papers);

    parser.rawMode(true);

    EXPECT_EQ(inWords(job.job), "UEL, PJL SET, PJL ENTER, Raw 53+4, UEL");
    EXPECT_TRUE(parser.pjl.jobInfo.pjl);
    EXPECT_EQ(parser.pjl.jobInfo.copies, 3);
    EXPECT_EQ(parser.pjl.jobInfo.pdl, Pdl::Xps);
    EXPECT_FALSE(parser.pdlJobInfo.pjl);
}

TEST(GlobalParser, HandsPjlInSmallLettersToItsParserToo)
{
    OpenJob job(JobBytes().uel().raw("@pjl SET COPIES=3\r\n"));
    Global::Parser parser(job.job, job.file, job.papers);

    EXPECT_ANY_THROW(parser.rawMode(true)) << "the parser of PJL takes capitals alone";
    EXPECT_EQ(inWords(job.job), "UEL");
    EXPECT_TRUE(parser.pjl.jobInfo.pjl);
}

TEST(GlobalParser, KeepsWhatPjlSaidInEarlierBlocks)
{
    OpenJob job(JobBytes()
                    .uel()
                    .pjl("SET COPIES=3")
                    .pjl("ENTER LANGUAGE=XPS")
                    .raw("body")
                    .uel()
                    .pjl("SET ECONOMODE=ON")
                    .uel());
    Global::Parser parser(job.job, job.file, job.papers);

    parser.rawMode(true);

    EXPECT_EQ(inWords(job.job), "UEL, PJL SET, PJL ENTER, Raw 53+4, UEL, PJL SET, UEL");
    EXPECT_EQ(parser.pjl.jobInfo.copies, 3);
    EXPECT_TRUE(parser.pjl.jobInfo.ecoMode);
}

TEST(GlobalParser, GoesOnOverTheBodiesOfLanguagesThatItDoesNotRead)
{
    for (const char* language : {"ESCP", "JPEG", "XPS", "URF", "NONSENSE"}) {
        OpenJob job(
            JobBytes().uel().pjl(std::string("ENTER LANGUAGE=") + language).raw("ab").esc("cd").uel());

        const std::string chunks = rawModeInWords(job);

        EXPECT_EQ(chunks, "UEL, PJL ENTER, Raw " + std::to_string(job.file.m_realDataSize - 14) + "+5, UEL")
            << language;
    }
}

TEST(GlobalParser, HandsPclToItsParserAndTakesUpAtTheUel)
{
    OpenJob job(
        JobBytes().uel().pjl("ENTER LANGUAGE=PCL").esc("E").raw("ab\f").esc("&l2X").uel().raw("\fcd"));
    Global::Parser parser(job.job, job.file, job.papers);

    parser.rawMode(true);

    EXPECT_EQ(inWords(job.job), "UEL, PJL ENTER, ESC E, Raw 36+2, FF, ESC &, UEL, Raw 53+3");
    EXPECT_EQ(parser.pdlJobInfo.copies, 2);
    EXPECT_EQ(parser.pdlJobInfo.m_flags, 4U);
    EXPECT_EQ(parser.pcl5.firstPageChunk, 3);
}

TEST(GlobalParser, HandsAnEscapeBehindPjlToPcl)
{
    OpenJob job(JobBytes().uel().pjl("SET COPIES=3").esc("E").uel());
    Global::Parser parser(job.job, job.file, job.papers);

    parser.rawMode(true);

    EXPECT_EQ(inWords(job.job), "UEL, PJL SET, PJL ENTER, ESC E, UEL");
    EXPECT_EQ(parser.pcl5.firstPageChunk, 4);
}

TEST(GlobalParser, HandsPostScriptToItsParserAndTakesUpAtTheUel)
{
    OpenJob job(JobBytes()
                    .uel()
                    .pjl("ENTER LANGUAGE=POSTSCRIPT")
                    .raw("%!PS\n%%BeginFeature: *Duplex DuplexTumble\nab\n")
                    .uel()
                    .raw("%%a\n"));
    Global::Parser parser(job.job, job.file, job.papers);

    parser.rawMode(true);

    EXPECT_EQ(inWords(job.job), "UEL, PJL ENTER, Raw 41+5, %%BeginFeature: *Duplex DuplexTumble\n, Raw 83+3, "
                                "UEL, Raw 95+4");
    EXPECT_EQ(parser.pdlJobInfo.duplex, Duplex::ShortEdge);
    EXPECT_EQ(parser.pdlJobInfo.orientation, Orientation::Portrait);
    EXPECT_EQ(parser.pdlJobInfo.m_flags, static_cast<std::uint32_t>(JobInfo::FlagDuplex) |
                                             static_cast<std::uint32_t>(JobInfo::FlagOrientation));
}

TEST(GlobalParser, SharesItsPrescribeAndPjlParsersWithPostScript)
{
    OpenJob job(JobBytes()
                    .uel()
                    .pjl("ENTER LANGUAGE=POSTSCRIPT")
                    .raw("%%!R! COPY 4;EXIT;\n%%BeginFeature: *Punching x\n"
                         "/MediaProcessingOption (TOP_3PT)\n%%EndFeature\n")
                    .uel());
    Global::Parser parser(job.job, job.file, job.papers);

    parser.rawMode(true);

    EXPECT_EQ(parser.prescribe.jobInfo.copies, 4);
    EXPECT_EQ(parser.pjl.jobInfo.punching, Punch::ThreeHoles);
    EXPECT_EQ(parser.pjl.punchRotation, 1);
}

TEST(GlobalParser, ReadsPrescribeBehindPjlAndAmongRawData)
{
    OpenJob job(JobBytes()
                    .uel()
                    .pjl("SET COPIES=2")
                    .raw("!R!CMNT Color=4,Mono=6;EXIT;ab!R!DUPX 1;EXIT;!R!exit;c!R!d")
                    .uel());
    Global::Parser parser(job.job, job.file, job.papers);

    parser.rawMode(true);

    EXPECT_EQ(inWords(job.job),
              "UEL, PJL SET, Prescribe 28+28, Raw 56+2, Prescribe 58+15, Prescribe 73+8, Raw 81+5, UEL");
    EXPECT_EQ(parser.prescribe.jobInfo.monoCount, 3);
    EXPECT_EQ(parser.prescribe.jobInfo.colorCount, 2);
    EXPECT_EQ(parser.prescribe.jobInfo.duplex, Duplex::LongEdge);
    EXPECT_EQ(parser.pcl5.firstPageChunk, -1);
}

TEST(GlobalParser, TakesAPrescribeStartBehindPjlWithoutLookingForItsEnd)
{
    OpenJob job(JobBytes().uel().pjl().raw("!R!RES 1" + std::string(200, ' ') + ";EXIT;ab"));

    EXPECT_EQ(rawModeInWords(job), "UEL, PJL , Prescribe 15+214, Raw 229+2");
}

TEST(GlobalParser, PassesOnWhatTheLanguagesThrow)
{
    OpenJob pcl(JobBytes().uel().pjl("ENTER LANGUAGE=PCL").esc(" "));
    OpenJob prescribe("ab!R!ABCDE;EXIT;"sv);
    Global::Parser pclParser(pcl.job, pcl.file, pcl.papers);
    Global::Parser prescribeParser(prescribe.job, prescribe.file, prescribe.papers);

    EXPECT_THROW(pclParser.rawMode(true), JobParserException);
    EXPECT_THROW(prescribeParser.rawMode(true), JobParserException);

    EXPECT_EQ(inWords(pcl.job), "UEL, PJL ENTER");
    EXPECT_EQ(inWords(prescribe.job), "Raw 0+2");
}

/// The rule for PRESCRIBE blocks in raw data, a byte at a time.
std::string prescribeByteRule(const std::string& bytes)
{
    OpenJob job(bytes);
    std::string words;
    std::int64_t start = 0;
    const auto add = [&](const std::string& word) { words += (words.empty() ? "" : ", ") + word; };
    const auto flush = [&](std::int64_t end) {
        if (end != start)
            add("Raw " + std::to_string(start) + "+" + std::to_string(end - start));
    };
    std::int64_t position = 0;
    const auto size = static_cast<std::int64_t>(bytes.size());
    while (position < size) {
        Global::Parser fresh(job.job, job.file, job.papers);
        job.file.setPos(position);
        if (fresh.matchUel()) {
            flush(position);
            add("UEL");
            position = start = job.file.m_offset;
        } else if (fresh.prescribe.guessPrescribe()) {
            flush(position);
            fresh.prescribe.parse();
            add("Prescribe " + std::to_string(position) + "+" + std::to_string(job.file.m_offset - position));
            position = start = job.file.m_offset;
        } else {
            ++position;
        }
    }
    flush(size);
    return words;
}

TEST(GlobalParser, FindsPrescribeAsTheByteRuleDoesInRandomData)
{
    constexpr std::array<std::string_view, 8> fragments{"!R!",   "!",  "R!",  "EXIT;",
                                                        "exit ", "T;", "x;y", "\x1B%-12345X"};
    std::mt19937 random(11);
    for (int repeat = 0; repeat < 150; ++repeat) {
        std::string text;
        while (text.size() < 500) {
            const std::size_t fragment = random() % fragments.size();
            if (fragment != 3 || random() % 8 == 0)
                text += fragments[fragment];
        }
        // A command that the end of the data cuts fails; this ends the last one.
        text += ";EXIT;";
        std::string expected;
        try {
            expected = prescribeByteRule(text);
        } catch (const JobParserException&) {
            EXPECT_ANY_THROW(rawModeInWords(text));
            continue;
        }
        ASSERT_EQ(rawModeInWords(text), expected) << testing::PrintToString(text);
    }
}

TEST(GlobalParser, WalksDataFullOfStartsWithoutAnEnd)
{
    std::string text;
    while (text.size() < 3000000)
        text += "!R!";
    EXPECT_EQ(rawModeInWords(text), "Raw 0+3000000");
    EXPECT_EQ(rawModeInWords(text + "\x1B%-12345X"), "Raw 0+3000000, UEL");
    EXPECT_EQ(rawModeInWords("\x1B%-12345X" + text + "EXIT;"), "UEL, Raw 9+2999901, Prescribe 2999910+104");
}

TEST(GlobalParser, CountsAJpegAsOneColourPage)
{
    OpenJob job("\xFF\xD8\xFF\xE0 and more"sv);
    Global::Parser parser(job.job, job.file, job.papers);

    parser.jpegMode(true);

    EXPECT_EQ(parser.pdlJobInfo.monoCount, 0);
    EXPECT_EQ(parser.pdlJobInfo.grayCount, 0);
    EXPECT_EQ(parser.pdlJobInfo.colorCount, 1);
    EXPECT_EQ(parser.pdlJobInfo.m_flags, 2U);
    EXPECT_EQ(inWords(job.job), "Raw 0+13");
}

TEST(GlobalParser, TellsTheEndOfTheDataFromTheRest)
{
    OpenJob job("x"sv);
    Global::Parser parser(job.job, job.file, job.papers);

    EXPECT_EQ(static_cast<int>(parser.getRawToken()), 0);
    EXPECT_EQ(job.file.m_offset, 1);
    EXPECT_EQ(static_cast<int>(parser.getRawToken()), 3);
    EXPECT_EQ(job.file.m_offset, 1);
    EXPECT_TRUE(job.job.chunks.empty());
}

struct RawToken {
    std::string bytes;
    int token;
    std::int64_t position;
};

TEST(GlobalParser, TellsWhatStandsAtThePosition)
{
    const std::array<RawToken, 13> rows{{
        {"", 3, 0},
        {JobBytes().uel().pjl().str(), 2, 9},
        {JobBytes().uel().raw("@pJl").str(), 2, 9},
        {JobBytes().uel().raw("@PJ").str(), 1, 9},
        {JobBytes().uel().str(), 1, 9},
        {JobBytes().uel().uel().str(), 1, 9},
        {JobBytes().esc("%-12345").str(), 0, 1},
        {"@PJL", 0, 1},
        {"x", 0, 1},
        {"!R!EXIT;", 4, 0},
        {"!R!EXIT", 0, 1},
        {"!R!" + std::string(97, ' ') + "EXIT;", 0, 1},
        {"!", 0, 1},
    }};

    for (const RawToken& row : rows) {
        OpenJob job(row.bytes);
        Global::Parser parser(job.job, job.file, job.papers);

        EXPECT_EQ(static_cast<int>(parser.getRawToken()), row.token) << testing::PrintToString(row.bytes);
        EXPECT_EQ(job.file.m_offset, row.position) << testing::PrintToString(row.bytes);
    }
}

} // namespace
} // namespace JobParser
