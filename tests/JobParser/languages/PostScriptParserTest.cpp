#include "JobParser/languages/PostScriptParser.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/ChunkPsComment.h"
#include "JobParser/languages/PjlParser.h"
#include "JobParser/languages/PrescribeParser.h"
#include "JobParser/model/ChunkRawData.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

namespace JobParser::PostScript
{
namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::string_view exitLanguage = "\x1B%-12345X";

/// The chunks of a job in words, as in "Raw 0+3, %%EOF\n".
std::string inWords(const Job& job)
{
    std::string words;
    for (const auto& chunk : job.chunks) {
        words += words.empty() ? "" : ", ";
        if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get()))
            words += "Raw " + std::to_string(raw->offset) + "+" + std::to_string(raw->size());
        else if (const auto* block = dynamic_cast<const ChunkPrescribe*>(chunk.get()))
            words += "Prescribe " + std::to_string(block->ofs) + "+" + std::to_string(block->size());
        else if (const auto* comment = dynamic_cast<const ChunkPsComment*>(chunk.get()))
            words += comment->comment;
        else
            words += "?";
    }
    return words;
}

struct Reading {
    explicit Reading(std::string_view bytes) : job(bytes), pjl(job.parent), prescribe(pjl) {}

    void parse() { parser.parse(info); }
    std::string chunks() const { return inWords(job.job); }

    OpenJob job;
    Pjl::Parser pjl;
    Prescribe::Parser prescribe;
    Parser parser{job.parent, &prescribe, &pjl, PaperOrientationParser(job.parent), {}, {}, 0};
    JobInfo info;
};

std::string parsed(std::string_view bytes)
{
    Reading reading(bytes);
    reading.parse();
    EXPECT_TRUE(reading.job.file.atEnd());
    return reading.chunks();
}

/// What a body fails with, where the file stands then, and the chunks so far.
std::string failure(std::string_view bytes)
{
    Reading reading(bytes);
    try {
        reading.parse();
    } catch (const JobParserException& error) {
        EXPECT_EQ(reading.info.flags(JobInfo::FlagOrientation), 0);
        return std::to_string(reading.job.file.m_offset) + " " + error.what() + " | " + reading.chunks();
    }
    return "none";
}

TEST(PostScriptParser, BeginsWithNothing)
{
    const Reading reading("");

    EXPECT_EQ(reading.parser.comment, "");
    EXPECT_EQ(reading.parser.featureText, "");
    EXPECT_EQ(reading.parser.featureKind, 0);
}

struct Body {
    std::string_view bytes;
    const char* chunks;
};

TEST(PostScriptParser, CutsABodyIntoCommentsAndRawData)
{
    constexpr std::array<Body, 24> rows{{
        {"", ""},
        {"a\n", "Raw 0+2"},
        {"\n", "Raw 0+1"},
        {"\r\n\r\n", "Raw 0+4"},
        {"%!PS\n", "Raw 0+5"},
        {"%\n%%\n", "Raw 0+2, %%\n"},
        {"%%EOF\n", "%%EOF\n"},
        {"%%EOF\r\n\r\n\n", "%%EOF\r\n\r\n\n"},
        {"%%a\n%%b\r%%c\n", "%%a\n, %%b\r, %%c\n"},
        {"a\n%%b\nc\nd\n%%e\n", "Raw 0+2, %%b\n, Raw 6+4, %%e\n"},
        {"a %%b\n", "Raw 0+6"},
        {" %%b\n", "Raw 0+5"},
        {"%%a\tb\n", "Raw 0+6"},
        {"%%a\x1F\n", "Raw 0+5"},
        {"%%a\0\n"sv, "Raw 0+5"},
        {"%%\x80\xFF\n", "%%\x80\xFF\n"},
        {"%%%\n", "%%%\n"},
        {"\x04%%EOF\n", "Raw 0+1, %%EOF\n"},
        {"\x04\x04", "Raw 0+2"},
        {"\x01M%%a\n", "Raw 0+2, %%a\n"},
        {"\x01%%a\n", "Raw 0+1, %%a\n"},
        {"a\x04%%a\n", "Raw 0+6"},
        {"\x01N%%a\n", "Raw 0+6"},
        {"\x1B%-12345%%a\n", "Raw 0+12"},
    }};

    for (const Body& row : rows)
        EXPECT_EQ(parsed(row.bytes), row.chunks) << testing::PrintToString(row.bytes);
}

TEST(PostScriptParser, StopsAtAUelThatStaysUnread)
{
    Reading reading("%%a\nb\n\x1B%-12345X@PJL"sv);

    reading.parse();

    EXPECT_EQ(reading.chunks(), "%%a\n, Raw 4+2");
    EXPECT_EQ(reading.job.file.m_offset, 6);
    EXPECT_EQ(reading.info.orientation, Orientation::Portrait);
    EXPECT_NE(reading.info.flags(JobInfo::FlagOrientation), 0);
}

TEST(PostScriptParser, SeesAUelAtTheStartOfATokenOnly)
{
    for (const char* start : {"", "\n", "\x04", "\x01", "\x01M", "%%a\n"}) {
        Reading reading(std::string(start) + std::string(exitLanguage) + "x");
        reading.parse();
        EXPECT_EQ(reading.job.file.m_offset, static_cast<std::int64_t>(std::string_view(start).size()));
    }
    EXPECT_EQ(parsed("a\x1B%-12345X\n"), "Raw 0+11");
    EXPECT_EQ(parsed("%\x1B%-12345X\n"), "Raw 0+11");
}

TEST(PostScriptParser, BeginsAtThePositionOfTheFile)
{
    Reading reading("%%a\n%%b\nc\n"sv);
    reading.job.file.setPos(5);

    reading.parse();

    EXPECT_EQ(reading.chunks(), "Raw 5+5") << "% alone at its start is no comment";
}

TEST(PostScriptParser, GivesTheTokensOfABody)
{
    struct Token {
        int kind;
        std::int64_t end;
        const char* comment;
    };
    constexpr std::array<Token, 12> tokens{{
        {4, 2, ""},
        {0, 8, "%%b\r\n\n"},
        {4, 10, "%"},
        {4, 13, "%"},
        {5, 14, "%"},
        {5, 16, "%"},
        {5, 17, "%"},
        {4, 22, "%"},
        {3, 24, "%%!R! "},
        {4, 30, "%%!R! "},
        {5, 31, "%%!R! "},
        {1, 31, "%%!R! "},
    }};
    Reading reading("a\n%%b\r\n\n%\n%c\n\x04\x01M\x01xy\n\n\n%%!R! x\n\x04\x1B%-12345X\x01"sv);
    Parser& parser = reading.parser;

    for (const Token& token : tokens) {
        EXPECT_EQ(static_cast<int>(parser.getPsToken()), token.kind) << token.end;
        EXPECT_EQ(reading.job.file.m_offset, token.end);
        EXPECT_EQ(parser.comment, token.comment) << token.end;
    }
    reading.job.file.setPos(40);
    EXPECT_EQ(static_cast<int>(parser.getPsToken()), 5);
    EXPECT_EQ(static_cast<int>(parser.getPsToken()), 2);
    EXPECT_EQ(static_cast<int>(parser.getPsToken()), 2);
}

TEST(PostScriptParser, FailsWhereTheFileEndsInsideALine)
{
    constexpr std::array<Body, 13> rows{{
        {"a", "1 GetPSToken(): Unexpected end of file | "},
        {"ab", "2 GetPSToken(): Unexpected end of file | "},
        {"a\nb", "3 GetPSToken(): Unexpected end of file | "},
        {"%", "1 GetPSToken(): Unexpected end of file | "},
        {"a\n%", "3 GetPSToken(): Unexpected end of file | "},
        {"%a", "2 GetPSToken(): Unexpected end of file | "},
        {"%%", "2 GetPSToken(): Unexpected end of file | "},
        {"%%EOF", "5 GetPSToken(): Unexpected end of file | "},
        {"%%a\t", "4 GetPSToken(): Unexpected end of file | "},
        {"\x1B", "1 GetPSToken(): Unexpected end of file | "},
        {"\x1B%-12345", "8 GetPSToken(): Unexpected end of file | "},
        {"\x04"
         "a",
         "2 GetPSToken(): Unexpected end of file | "},
        {"a\n%%b\nc\n%%d\ne", "13 GetPSToken(): Unexpected end of file | Raw 0+2, %%b\n, Raw 6+2, %%d\n"},
    }};

    for (const Body& row : rows)
        EXPECT_EQ(failure(row.bytes), row.chunks) << testing::PrintToString(row.bytes);
}

TEST(PostScriptParser, FailsInsideALineOfAFeatureAsWell)
{
    EXPECT_EQ(failure("%%BeginFeature: *Staple 1\nab\nc"),
              "30 GetPSToken(): Unexpected end of file | %%BeginFeature: *Staple 1\n");
}

TEST(PostScriptParser, EndsBehindALineEndOrAControlByte)
{
    for (const char* bytes : {"a\n", "a\r", "%\n", "%a\r", "%%\n", "\x01", "\x04", "\x01M", "a\n\x04"})
        EXPECT_EQ(failure(bytes), "none") << testing::PrintToString(bytes);
}

TEST(PostScriptParser, TakesACommentOf255Bytes)
{
    const std::string longest = "%%" + std::string(253, 'x');

    EXPECT_EQ(parsed(longest + "\n"), longest + "\n");
    EXPECT_EQ(parsed(longest + "\r\n"), longest + "\r\n");
    EXPECT_EQ(parsed(longest + "x\n"), "Raw 0+257");
    EXPECT_EQ(parsed(longest + "\na\n"), longest + "\n, Raw 256+2") << "with more behind it in the view";
    EXPECT_EQ(parsed(longest + "x\na\n"), "Raw 0+259");
    EXPECT_EQ(parsed("%%" + std::string(298, 'x') + "\n%%a\n"), "Raw 0+301, %%a\n");
}

TEST(PostScriptParser, TakesACommentOf257BytesWithItsLineEnds)
{
    const std::string longest = "%%" + std::string(253, 'x');

    EXPECT_EQ(parsed(longest + "\n\n\n%%a\n"), "Raw 0+258, %%a\n");
    EXPECT_EQ(parsed("%%" + std::string(255, '\n') + "a\n"), "%%" + std::string(255, '\n') + ", Raw 257+2");
    EXPECT_EQ(parsed("%%" + std::string(256, '\n') + "a\n"), "Raw 0+260");
    EXPECT_EQ(parsed("%%" + std::string(1000, '\r')), "Raw 0+1002");
}

TEST(PostScriptParser, HandsAPrescribeBlockOver)
{
    Reading reading("a\n%%!R! COPY 3;EXIT;\n%%b\n%%!R!x\n"sv);

    reading.parse();

    EXPECT_EQ(reading.chunks(), "Raw 0+4, Prescribe 4+16, Raw 20+1, %%b\n, %%!R!x\n");
    EXPECT_EQ(reading.prescribe.jobInfo.copies, 3);
}

TEST(PostScriptParser, HandsAPrescribeBlockOverAtItsStart)
{
    EXPECT_EQ(parsed("%%!R! EXIT;%%a\n"), "Raw 0+2, Prescribe 2+9, %%a\n");
    EXPECT_EQ(parsed(" %%!R! EXIT;\n"), "Raw 0+13");
    EXPECT_EQ(parsed("%%!r! EXIT;\n"), "%%!r! EXIT;\n");
}

TEST(PostScriptParser, PassesOnWhatPrescribeFailsWith)
{
    EXPECT_EQ(failure("a\n%%!R! COPY"), "12 GetPrescribeToken(): Unexpected EOF | Raw 0+4");
}

TEST(PostScriptParser, PassesOnWhatTheOrientationFailsWith)
{
    Reading reading("x\n%%EndPageSetup\n[a b c d e f]msf\n................\n"sv);

    EXPECT_THROW(reading.parse(), std::invalid_argument);
    EXPECT_EQ(reading.chunks(), "Raw 0+2, %%EndPageSetup\n, Raw 17+34");
    EXPECT_EQ(failure("x\n%%EndPageSetup\n[\n%%a]\n"),
              "24 Unexpected end of file | Raw 0+2, %%EndPageSetup\n, Raw 17+2, %%a]\n");
}

struct FeatureRow {
    const char* text;
    int duplex;
    int stapling;
    int punching;
    int kind;
};

constexpr int unknown = -1;

TEST(PostScriptParser, ReadsFeatures)
{
    constexpr std::array<FeatureRow, 50> rows{{
        {"*Duplex None\n", 0, unknown, unknown, 0},
        {"*DUPLEX NONE\n", 0, unknown, unknown, 0},
        {"*Duplex Nonesense\n", 0, unknown, unknown, 0},
        {"*Duplex DuplexNoTumble\r\n", 1, unknown, unknown, 0},
        {"*Duplex DuplexTumble\r\n", 2, unknown, unknown, 0},
        {"*Duplex xDUPLEXNOTUMBLEx\n", 1, unknown, unknown, 0},
        {"*Duplex \n", 2, unknown, unknown, 0},
        {"*Duplex\n", unknown, unknown, unknown, 0},
        {"*Duplex  None\n", 2, unknown, unknown, 0},
        {"*EFDuplex False\n", 0, unknown, unknown, 0},
        {"*EFDuplex None\n", 2, unknown, unknown, 0},
        {"*EFDuplex DuplexNoTumble\n", 1, unknown, unknown, 0},
        {"*efduplex duplextumble\n", 2, unknown, unknown, 0},
        {"Duplex ShortEdge\n", 2, unknown, unknown, 0},
        {"duplex SHORTEDGE\n", 2, unknown, unknown, 0},
        {"Duplex LongEdge\n", 1, unknown, unknown, 0},
        {"Duplex None\n", 1, unknown, unknown, 0},
        {"Duplex\n", unknown, unknown, unknown, 0},
        {"*PageSize A4\n", unknown, unknown, unknown, 1},
        {"*pagesize A4\n", unknown, unknown, unknown, 1},
        {"PageSize A4\n", unknown, unknown, unknown, 0},
        {"*Staple 1\n", unknown, unknown, unknown, 2},
        {"*staple None\n", unknown, unknown, unknown, 2},
        {"*Staple\n", unknown, unknown, unknown, 0},
        {"*Punch None\n", unknown, unknown, 0, 3},
        {"*PUNCH main none\n", unknown, unknown, 0, 3},
        {"*punch MAIN\n", unknown, unknown, 101, 3},
        {"*Punch xMainx\n", unknown, unknown, 101, 3},
        {"*Punch 2\n", unknown, unknown, 100, 3},
        {"*Punch\n", unknown, unknown, unknown, 0},
        {"*StapleLocation LEFT_1PT\n", unknown, unknown, unknown, 4},
        {"*staplelocation LEFT_1PT\n", unknown, unknown, unknown, 0},
        {"*STAPLELOCATION LEFT_1PT\n", unknown, unknown, unknown, 0},
        {"*StapleLocation\n", unknown, unknown, unknown, 0},
        {"*Punching 2HOLE\n", unknown, unknown, unknown, 5},
        {"*punching 2HOLE\n", unknown, unknown, unknown, 0},
        {"*Punching\n", unknown, unknown, unknown, 0},
        {"Staple Off\n", unknown, 0, unknown, 0},
        {"staple xOFFx\n", unknown, 0, unknown, 0},
        {"Staple On\n", unknown, 100, unknown, 0},
        {"STAPLE \n", unknown, 100, unknown, 0},
        {"Staple\n", unknown, unknown, unknown, 0},
        {"Punch Off\n", unknown, unknown, 0, 0},
        {"punch xOFFx\n", unknown, unknown, 0, 0},
        {"Punch On\n", unknown, unknown, 100, 0},
        {"Punch\n", unknown, unknown, unknown, 0},
        {" *Duplex None\n", unknown, unknown, unknown, 0},
        {"x\n", unknown, unknown, unknown, 0},
        {"\n", unknown, unknown, unknown, 0},
        {"", unknown, unknown, unknown, 0},
    }};

    for (const FeatureRow& row : rows) {
        for (const char* start : {"%%BeginFeature: ", "%%BEGINFEATURE: ", "%%beginfeature: "}) {
            Reading reading("");
            reading.parser.comment = start + std::string(row.text);
            reading.parser.parseComment(reading.info);

            const JobInfo& info = reading.info;
            const auto known = [&](JobInfo::Flag group, int value) {
                return info.flags(static_cast<int>(group)) == 0 ? unknown : value;
            };
            EXPECT_EQ(known(JobInfo::FlagDuplex, static_cast<int>(info.duplex)), row.duplex) << row.text;
            EXPECT_EQ(known(JobInfo::FlagStapling, static_cast<int>(info.stapling)), row.stapling)
                << row.text;
            EXPECT_EQ(known(JobInfo::FlagPunching, static_cast<int>(info.punching)), row.punching)
                << row.text;
            EXPECT_EQ(reading.parser.featureKind, row.kind) << row.text;
        }
    }
}

TEST(PostScriptParser, ReplacesWhatWasKnownOfFinishing)
{
    struct Row {
        const char* text;
        Staple stapling;
        Punch punching;
    };
    constexpr std::array<Row, 7> rows{{
        {"Staple Off\n", Staple::None, Punch::FourHoles},
        {"Staple On\n", Staple::UnknownPosition, Punch::FourHoles},
        {"Punch Off\n", Staple::Two, Punch::None},
        {"Punch On\n", Staple::Two, Punch::UnknownKind},
        {"*Punch None\n", Staple::Two, Punch::None},
        {"*Punch Main\n", Staple::Two, Punch::DriverDefault},
        {"*Punch 2\n", Staple::Two, Punch::UnknownKind},
    }};

    for (const Row& row : rows) {
        Reading reading("");
        reading.info.setStapling(Staple::Two, true);
        reading.info.setPunching(Punch::FourHoles, true);
        reading.parser.comment = "%%BeginFeature: " + std::string(row.text);

        reading.parser.parseComment(reading.info);

        EXPECT_EQ(reading.info.stapling, row.stapling) << row.text;
        EXPECT_EQ(reading.info.punching, row.punching) << row.text;
    }
}

TEST(PostScriptParser, ReadsNothingFromOtherComments)
{
    for (const char* comment :
         {"%%Duplex None\n", "%%BeginFeature *Duplex None\n", "%%BeginFeature:*Duplex None\n",
          "%%BeginFeatures: *Duplex None\n", "%BeginFeature: *Duplex None\n"}) {
        Reading reading("");
        reading.parser.comment = comment;
        reading.parser.parseComment(reading.info);
        EXPECT_EQ(reading.info.m_flags, 0U) << comment;
        EXPECT_EQ(reading.parser.featureKind, 0) << comment;
    }
}

JobInfo facts(std::string_view bytes)
{
    Reading reading(bytes);
    reading.parse();
    return reading.info;
}

int stapleOf(const std::string& body)
{
    const JobInfo info = facts("%%BeginFeature: *Staple 1\n" + body + "%%EndFeature\n");
    return info.flags(JobInfo::FlagStapling) == 0 ? unknown : static_cast<int>(info.stapling);
}

TEST(PostScriptParser, TakesTheStapleOfABody)
{
    EXPECT_EQ(stapleOf("<< /Staple 3 /StaplePosition 1 >> setpagedevice\n"), 2);
    EXPECT_EQ(stapleOf("<< /Staple 3 /StaplePosition 2 >> setpagedevice\n"), 1);
    EXPECT_EQ(stapleOf("<< /Staple 3 /StaplePosition 3 >> setpagedevice\n"), 3);
    EXPECT_EQ(stapleOf("<< /Staple 3 >> setpagedevice\n"), 0);
    EXPECT_EQ(stapleOf("<< /Staple 0 /StaplePosition 1 >> setpagedevice\n"), 0);
    EXPECT_EQ(stapleOf("<< /StaplePosition 1 >> setpagedevice\n"), 0);
    EXPECT_EQ(stapleOf("x\n"), 0);
    EXPECT_EQ(stapleOf("<< /StaplePosition 2 >> \n a\r\n << /Staple 3 >>\n"), 1);
    EXPECT_EQ(stapleOf("/StaplePosition 1 x /Staple 3 \n"), 0) << "the blank at the end is trimmed";
}

TEST(PostScriptParser, ReplacesAStapleByThatOfABody)
{
    for (const auto& [body, staple] :
         {std::pair{"/Staple 3 /StaplePosition 1 x", Staple::RightTop},
          std::pair{"/Staple 0 x", Staple::None}, std::pair{"x", Staple::None}}) {
        Reading reading("");
        reading.info.setStapling(Staple::Two, true);
        reading.parser.featureText = body;

        reading.parser.parseStapleFeatureDefinition(reading.info);

        EXPECT_EQ(reading.info.stapling, staple) << body;
    }
}

TEST(PostScriptParser, TakesNothingOfBodiesThatAreOnlyCollected)
{
    constexpr std::string_view body = "/Staple 3 /StaplePosition 1 /MediaProcessingOption (LEFT_2PT)";
    for (const int kind : {0, 1, 3, 6}) {
        Reading reading("");
        reading.parser.featureKind = kind;
        reading.parser.featureText = body;

        reading.parser.parseFeatureDefinition(reading.info);

        EXPECT_EQ(reading.info.m_flags, 0U) << kind;
        EXPECT_EQ(reading.pjl.jobInfo.m_flags, 0U) << kind;
    }
}

TEST(PostScriptParser, TakesNothingOfABodyThatIsBlank)
{
    EXPECT_EQ(stapleOf(""), unknown);
    EXPECT_EQ(stapleOf("\n\r\n"), unknown);
    EXPECT_EQ(stapleOf("  \n\t\n"), unknown);
    EXPECT_EQ(stapleOf("%%a\n%%b\n"), unknown) << "comments belong to no body";
}

/// What is collected of lines behind `%%BeginFeature:`.
std::string collected(const std::string& lines)
{
    Reading reading("%%BeginFeature: *Staple 1\n" + lines);
    reading.parse();
    return reading.parser.featureText;
}

TEST(PostScriptParser, CollectsTheLinesOfABody)
{
    EXPECT_EQ(collected("ab\ncd\r\n"), "ab\ncd\r");
    EXPECT_EQ(collected("ab\n\n\ncd\n"), "ab\ncd\n");
    EXPECT_EQ(collected("ab\n%%cd\nef\n"), "ab\nef\n");
    EXPECT_EQ(collected("%a\n"), "a\n") << "without the first byte of a comment with one percent sign";
    EXPECT_EQ(collected("%\na\n"), "a\n");
    EXPECT_EQ(collected("%%ab\tcd\n"), "\tcd\n") << "from the byte on that breaks a comment";
    EXPECT_EQ(collected("%%" + std::string(253, 'x') + "yz\n"), "yz\n");
    EXPECT_EQ(collected("\x1B%-1\n"), "\x1B%-1\n");
    EXPECT_EQ(collected("\x04"
                        "a\n\x01Mb\n"),
              "a\nb\n");
    EXPECT_EQ(collected(std::string("a\0b\n", 4)), std::string("a\0b\n", 4));
}

TEST(PostScriptParser, CollectsNothingOutsideAFeature)
{
    Reading reading("ab\n%%BeginFeature: *Duplex None\ncd\n"sv);

    reading.parse();
    reading.parser.toFeature('x');

    EXPECT_EQ(reading.parser.featureText, "");
}

TEST(PostScriptParser, CollectsSingleCharacters)
{
    Reading reading("");
    reading.parser.featureKind = 1;

    reading.parser.toFeature('a');
    reading.parser.toFeature('\xFF');

    EXPECT_EQ(reading.parser.featureText, "a\xFF");
}

TEST(PostScriptParser, EndsAFeatureAtItsComment)
{
    for (const char* end : {"%%EndFeature\n", "%%ENDFEATURE", "%%endfeature", "%%EndFeatures: x\n"}) {
        Reading reading("");
        reading.parser.featureKind = 2;
        reading.parser.featureText = "  /Staple 3 /StaplePosition 1 x  ";
        reading.parser.comment = end;

        reading.parser.parseComment(reading.info);

        EXPECT_EQ(reading.info.stapling, Staple::RightTop) << end;
        EXPECT_EQ(reading.parser.featureKind, 0);
        EXPECT_EQ(reading.parser.featureText, "");
    }
}

TEST(PostScriptParser, KeepsTheKindOfAFeatureThatAnotherOneFollows)
{
    EXPECT_EQ(
        facts("%%BeginFeature: *Staple 1\n/Staple 3 \n%%BeginFeature: *Duplex None\n/StaplePosition 1 x\n"
              "%%EndFeature\n")
            .stapling,
        Staple::RightTop);
    EXPECT_EQ(facts("%%BeginFeature: *PageSize A4\n/Staple 3 x\n%%BeginFeature: *Staple 1\n"
                    "/StaplePosition 1 x\n%%EndFeature\n")
                  .stapling,
              Staple::RightTop);
    EXPECT_EQ(facts("%%BeginFeature: *Staple 1\n/Staple 3 /StaplePosition 1 x\n%%BeginFeature: *PageSize A4\n"
                    "%%EndFeature\n")
                  .flags(JobInfo::FlagStapling),
              0);
}

TEST(PostScriptParser, KeepsAFeatureOpenFromBodyToBody)
{
    Reading reading("%%BeginFeature: *Staple 1\n/Staple 3 \n\x1B%-12345X/StaplePosition 1 x\n"
                    "%%EndFeature\n"sv);

    reading.parse();
    reading.job.file.advancePos(static_cast<std::int64_t>(exitLanguage.size()));
    reading.parse();

    EXPECT_EQ(reading.info.stapling, Staple::RightTop);
    EXPECT_EQ(reading.parser.featureKind, 0);
}

TEST(PostScriptParser, TakesTheStaplingOfHpIntoTheRecordOfPjl)
{
    Reading reading("%%BeginFeature: *StapleLocation LEFT_1PT\n<</MediaProcessingOption (LEFT_2PT)>>\n"
                    "%%EndFeature\n"sv);

    reading.parse();

    EXPECT_EQ(reading.pjl.jobInfo.stapling, Staple::Two);
    EXPECT_EQ(reading.pjl.stapleRotation, 0);
    EXPECT_EQ(reading.pjl.jobInfo.originalBrand, Zem::Printer::OriginalBrand::Hp);
    EXPECT_EQ(reading.info.flags(JobInfo::FlagStapling), 0);
}

TEST(PostScriptParser, TakesThePunchingOfHpIntoTheRecordOfPjl)
{
    Reading reading(
        "%%BeginFeature: *Punching 2HOLE\n<</MediaProcessingOption (LEFT_2PT)>>\n%%EndFeature\n"sv);

    reading.parse();

    EXPECT_EQ(reading.pjl.jobInfo.punching, Punch::TwoHoles);
    EXPECT_EQ(reading.pjl.punchRotation, 0);
    EXPECT_EQ(reading.pjl.jobInfo.originalBrand, Zem::Printer::OriginalBrand::Hp);
    EXPECT_EQ(reading.info.flags(JobInfo::FlagPunching), 0);
}

TEST(PostScriptParser, TakesABodyOfHpWithoutAnOptionForAnUnknownWord)
{
    Reading stapled("%%BeginFeature: *StapleLocation x\ny\n%%EndFeature\n"sv);
    Reading punched("%%BeginFeature: *Punching x\ny\n%%EndFeature\n"sv);

    stapled.parse();
    punched.parse();

    EXPECT_EQ(stapled.pjl.jobInfo.stapling, Staple::UnknownPosition);
    EXPECT_EQ(punched.pjl.jobInfo.punching, Punch::UnknownKind);
}

TEST(PostScriptParser, BoundsTheBodyOfAFeatureThatIsNeverClosed)
{
    std::string body = "/Staple 3 x\n";
    for (int line = 0; line < 200000; ++line)
        body += "0 0 moveto (text) show\n";
    Reading reading("%%BeginFeature: *Staple 1\n" + body + std::string(3000000, ' ') +
                    "/StaplePosition 2 x\n");

    reading.parse();

    EXPECT_LT(reading.parser.featureText.size(), 100000U);
    reading.parser.comment = "%%EndFeature\n";
    reading.parser.parseComment(reading.info);
    EXPECT_EQ(reading.info.stapling, Staple::LeftTop);
}

TEST(PostScriptParser, ReadsTheOrientationOfTheJob)
{
    EXPECT_EQ(facts("%%ViewingOrientation: 0 1 -1 0\nx\n").orientation, Orientation::Landscape);
    EXPECT_EQ(facts("%%BeginPageSetup\nx -90 rotate\n%%EndPageSetup\n").orientation,
              Orientation::ReverseLandscape);
}

/// The body read a byte at a time, without features: the kinds of tokens, and then the chunks.
class ByteRule
{
public:
    explicit ByteRule(std::string_view bytes) : m_bytes(bytes) {}

    std::string chunks()
    {
        std::size_t start = 0;
        for (;;) {
            const std::size_t token = m_at;
            const int kind = next();
            if (kind == failed)
                return m_words + "failure";
            if (kind == 1 || kind == 2) {
                flush(start, token);
                return m_words;
            }
            if (kind == 0) {
                flush(start, token);
                m_words += m_comment + ", ";
                start = m_at;
            }
        }
    }

private:
    static constexpr int failed = -1;

    bool ended() const { return m_at == m_bytes.size(); }
    static bool isEnd(char byte) { return byte == '\r' || byte == '\n'; }

    void flush(std::size_t start, std::size_t end)
    {
        if (start != end)
            m_words += "Raw " + std::to_string(start) + "+" + std::to_string(end - start) + ", ";
    }

    int next()
    {
        if (ended())
            return 2;
        if (m_bytes.substr(m_at).starts_with(exitLanguage))
            return 1;
        const char byte = m_bytes[m_at++];
        if (byte == 1) {
            if (!ended() && m_bytes[m_at] == 'M')
                ++m_at;
            return 5;
        }
        if (byte == 4)
            return 5;
        if (isEnd(byte))
            return lineEnd();
        return byte == '%' ? percent() : skip();
    }

    int lineEnd()
    {
        while (!ended() && isEnd(m_bytes[m_at]))
            ++m_at;
        return 4;
    }

    int skip()
    {
        while (!ended()) {
            if (isEnd(m_bytes[m_at++]))
                return lineEnd();
        }
        return failed;
    }

    int percent()
    {
        m_comment = "%";
        if (ended())
            return failed;
        const char byte = m_bytes[m_at++];
        if (isEnd(byte))
            return lineEnd();
        if (byte != '%')
            return skip();
        m_comment += '%';
        return comment();
    }

    int comment()
    {
        while (!ended()) {
            const char byte = m_bytes[m_at++];
            if (isEnd(byte)) {
                m_comment += byte;
                return commentEnd();
            }
            if (static_cast<unsigned char>(byte) < 32 || m_comment.size() > 254)
                return skip();
            m_comment += byte;
        }
        return failed;
    }

    int commentEnd()
    {
        while (!ended() && isEnd(m_bytes[m_at])) {
            const char byte = m_bytes[m_at++];
            if (m_comment.size() > 256)
                return lineEnd();
            m_comment += byte;
        }
        return 0;
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
    std::string m_comment;
    std::string m_words;
};

/// In the form of ByteRule; the body may lie anywhere in a larger file.
std::string chunksOrFailure(Reading& reading)
{
    std::string end;
    try {
        reading.parse();
    } catch (const JobParserException&) {
        end = "failure";
    }
    const std::string words = reading.chunks();
    return words + (words.empty() ? "" : ", ") + end;
}

TEST(PostScriptParser, FollowsTheByteRulesForAllShortBodies)
{
    const std::string alphabet = "%\n\x1B\x01\x04M";
    std::size_t count = 1;
    for (std::size_t size = 0; size <= 5; ++size, count *= alphabet.size()) {
        for (std::size_t number = 0; number < count; ++number) {
            std::string body;
            for (std::size_t rest = number; body.size() < size; rest /= alphabet.size())
                body += alphabet[rest % alphabet.size()];
            Reading reading(body);
            ASSERT_EQ(chunksOrFailure(reading), ByteRule(body).chunks()) << testing::PrintToString(body);
        }
    }
}

TEST(PostScriptParser, FollowsTheByteRulesForRandomBodies)
{
    const std::array<std::string, 14> pieces{
        "%",
        "%%",
        "\n",
        "\r\n",
        "\x1B",
        std::string(exitLanguage),
        "\x01",
        "\x04",
        "M",
        "text ",
        "\t",
        std::string(60, 'x'),
        std::string(250, 'y'),
        std::string(90, '\n'),
    };
    std::mt19937 random(5);
    for (int repeat = 0; repeat < 5000; ++repeat) {
        std::string body;
        for (std::size_t size = random() % 30; size > 0; --size)
            body += pieces[random() % pieces.size()];
        Reading reading(body);
        ASSERT_EQ(chunksOrFailure(reading), ByteRule(body).chunks()) << testing::PrintToString(body);
    }
}

TEST(PostScriptParser, FollowsTheByteRulesOverTheBordersOfViews)
{
    constexpr std::int64_t viewSize = 4194304;
    const std::string text = "a\n%%b\r\n\n%c\n\x04\x01M%%" + std::string(253, 'd') + "\r\n%%e\tf\n%%g\n";
    const auto length = static_cast<std::int64_t>(text.size());
    Reading reading(std::string(static_cast<std::size_t>(viewSize + 600), 'x'));
    SparseFile sparse(std::string(static_cast<std::size_t>(viewSize - 400), 'x'));
    for (std::int64_t shift = -length - 2; shift <= 2; ++shift) {
        sparse.resize(viewSize + shift);
        sparse.writeAt(viewSize - 400, std::string(static_cast<std::size_t>(400 + shift), 'x') + text);
        reading.job.file.open(sparse.path());
        reading.job.file.setPos(viewSize - 410);
        reading.job.job.chunks.clear();
        const std::string whole = std::string(static_cast<std::size_t>(410 + shift), 'x') + text;

        reading.parse();

        std::string expected;
        std::string found;
        Job moved;
        for (const auto& chunk : reading.job.job.chunks) {
            if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get()))
                moved.appendChunk(
                    std::make_shared<ChunkRawData>(raw->offset - (viewSize - 410), raw->m_size));
            else
                moved.appendChunk(chunk);
        }
        EXPECT_EQ(inWords(moved) + ", ", ByteRule(whole).chunks()) << shift;
    }
}

TEST(PostScriptParser, EndsSoonForManyBodiesInAJob)
{
    std::string bytes = "%%BeginPageSetup\nx\n%%EndPageSetup\n" + std::string(1000000, '.') + "\n";
    for (int body = 0; body < 20000; ++body)
        bytes += std::string(exitLanguage) + "a[b\n";
    Reading reading(bytes);

    while (!reading.job.file.atEnd()) {
        reading.parse();
        if (!reading.job.file.atEnd())
            reading.job.file.advancePos(static_cast<std::int64_t>(exitLanguage.size()));
    }

    EXPECT_EQ(reading.job.job.chunks.size(), 20003U + 1U);
}

} // namespace
} // namespace JobParser::PostScript
