#include "JobParser/languages/PostScriptParser.h"

#include <array>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/PrescribeParser.h"
#include "tests/JobParser/languages/PostScriptReading.h"

namespace JobParser::PostScript
{
namespace
{

using namespace std::string_view_literals;

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

TEST(PostScriptParser, ReadsTheOrientationOfTheJob)
{
    EXPECT_EQ(facts("%%ViewingOrientation: 0 1 -1 0\nx\n").orientation, Orientation::Landscape);
    EXPECT_EQ(facts("%%BeginPageSetup\nx -90 rotate\n%%EndPageSetup\n").orientation,
              Orientation::ReverseLandscape);
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
