#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/PjlParser.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/support/OpenJob.h"

using JobParser::JobParserException;
using JobParser::UnexpectedEndOfFileException;
using JobParser::Pjl::PjlToken;

namespace
{

constexpr const char* unexpectedCharacter = "GetPjlToken(): Unexpected character";
constexpr const char* tooLong = "GetPjlToken(): PJL command too long";

/// The message of the exception that reading a token ends with.
std::string failureOf(JobParser::Pjl::Parser& parser)
{
    try {
        parser.getPjlToken();
    } catch (const UnexpectedEndOfFileException&) {
        return "end of file";
    } catch (const JobParserException& e) {
        return e.what();
    }
    return "no failure";
}

struct TokenRow {
    const char* name;
    std::string bytes;
    PjlToken token;
    std::int64_t position;
};

class PjlTokenKind : public testing::TestWithParam<TokenRow>
{
};

struct LineRow {
    const char* name;
    std::string bytes;
    std::string cmd;
    std::string param;
    std::int64_t position;
};

class PjlLine : public testing::TestWithParam<LineRow>
{
};

struct FailureRow {
    const char* name;
    std::string bytes;
    const char* message;
    std::int64_t position;
};

class MalformedPjlLine : public testing::TestWithParam<FailureRow>
{
};

template <typename Row> std::string nameOf(const testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

/// What the first token of a job without a UEL or a PRESCRIBE start is, by the rule for each byte.
struct FirstToken {
    std::string outcome;
    std::size_t position;
};

FirstToken byteByByte(const std::string& bytes)
{
    std::size_t at = 0;
    while (at < bytes.size() && bytes[at] == '\n')
        ++at;
    if (at == bytes.size())
        return {"end", at};
    for (;; ++at) {
        if (at == bytes.size())
            return {unexpectedCharacter, at};
        if (bytes[at] == '\x1B')
            return {"ENTER", at};
        if (bytes[at] == '@')
            break;
    }
    // None of the jobs compared has a P in it.
    return {unexpectedCharacter, at + 1 == bytes.size() ? at + 1 : at + 2};
}

FirstToken firstToken(const std::string& bytes)
{
    OpenJob job(bytes);
    JobParser::Pjl::Parser parser(job.parent);
    FirstToken result{};
    try {
        result.outcome = parser.getPjlToken() == PjlToken::EndOfFile ? "end" : parser.currentCmd.cmd;
    } catch (const JobParserException& e) {
        result.outcome = e.what();
    }
    result.position = static_cast<std::size_t>(job.file.m_offset);
    return result;
}

} // namespace

TEST_P(PjlTokenKind, IsRecognised)
{
    OpenJob job(GetParam().bytes);
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(parser.getPjlToken(), GetParam().token);
    EXPECT_EQ(job.file.m_offset, GetParam().position);
    EXPECT_TRUE(job.job.chunks.empty());
}

INSTANTIATE_TEST_SUITE_P(
    , PjlTokenKind,
    testing::Values(TokenRow{"EmptyJob", "", PjlToken::EndOfFile, 0},
                    TokenRow{"OnlyLineFeeds", "\n\n\n", PjlToken::EndOfFile, 3},
                    TokenRow{"UelAtTheEnd", "\x1B%-12345X", PjlToken::Uel, 9},
                    TokenRow{"UelBehindLineFeeds", "\n\n\x1B%-12345X\x1B%-12345X", PjlToken::Uel, 11},
                    TokenRow{"UelWithALanguage", "\x1B%-12345X%!PS", PjlToken::Uel, 9},
                    TokenRow{"UelWithHalfAKeyword", "\x1B%-12345X@PJ", PjlToken::Uel, 9},
                    TokenRow{"UelPjl", "\x1B%-12345X@PJL", PjlToken::UelPjl, 9},
                    TokenRow{"UelPjlInLowerCase", "\x1B%-12345X@pjl", PjlToken::UelPjl, 9},
                    TokenRow{"UelWithALineFeedBeforePjl", "\x1B%-12345X\n@PJL", PjlToken::Uel, 9},
                    TokenRow{"Prescribe", "!R!", PjlToken::Prescribe, 0},
                    TokenRow{"PrescribeInLowerCase", "!r! PAGE;", PjlToken::Prescribe, 0},
                    TokenRow{"PrescribeBehindLineFeeds", "\n!R!", PjlToken::Prescribe, 1},
                    TokenRow{"Command", "@PJL\n", PjlToken::Command, 5},
                    TokenRow{"UelWithASmallX", "\x1B%-12345x", PjlToken::Command, 0},
                    TokenRow{"EightBytesOfAUel", "\x1B%-12345", PjlToken::Command, 0}),
    nameOf<TokenRow>);

TEST_P(PjlLine, IsReadAndSplit)
{
    OpenJob job(GetParam().bytes);
    JobParser::Pjl::Parser parser(job.parent);
    parser.currentCmd = {"before", "before"};

    EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
    EXPECT_EQ(parser.currentCmd.cmd, GetParam().cmd);
    EXPECT_EQ(parser.currentCmd.param, GetParam().param);
    EXPECT_EQ(job.file.m_offset, GetParam().position);
}

INSTANTIATE_TEST_SUITE_P(
    , PjlLine,
    testing::Values(LineRow{"CarriageReturnLineFeed", "@PJL SET COPIES=2\r\n@", "SET", "COPIES=2", 19},
                    LineRow{"LineFeed", "@PJL SET COPIES=2\n@", "SET", "COPIES=2", 18},
                    LineRow{"Bare", "@PJL\r\n", "", "", 6},
                    LineRow{"OnlyWhiteSpace", "@PJL \t \r\n", "", "", 9},
                    LineRow{"EqualSignFirst", "@PJL FOO=1\n", "FOO", "1", 11},
                    LineRow{"BlankFirst", "@PJL FOO A=1\n", "FOO", "A=1", 13},
                    LineRow{"BlankBeforeTheEqualSign", "@PJL FOO =1\n", "FOO", "=1", 12},
                    LineRow{"BlanksBehindTheEqualSign", "@PJL FOO= \t1 \n", "FOO", "1", 14},
                    LineRow{"OnlyAnEqualSign", "@PJL =\n", "", "", 7},
                    LineRow{"ManyBlanks", "@PJL  \t SET  \t A \t\n", "SET", "A", 19},
                    LineRow{"TabIsNoSeparator", "@PJL A\tB C\n", "A\tB", "C", 11},
                    LineRow{"TabBeforeTheEqualSign", "@PJL A\t=B\n", "A\t", "B", 10},
                    LineRow{"NoBlankBehindTheKeyword", "@PJLSET A=1\n", "SET", "A=1", 12},
                    LineRow{"OneWord", "@PJL RESET\r\n", "RESET", "", 12},
                    LineRow{"HighBytes", "@PJL A=\x7F\x80\xFF\n", "A", "\x7F\x80\xFF", 11},
                    LineRow{"LowerCaseCommand", "@PJL set copies=2\n", "set", "copies=2", 18},
                    LineRow{"LineFeedsInFront", "\n\n@PJL A\n", "A", "", 9},
                    LineRow{"CarriageReturnsInFront", "\r\r\n@PJL A\n", "A", "", 10},
                    LineRow{"TextInFront", "text\x01\r\n@PJL A\n", "A", "", 14},
                    LineRow{"PartOfAPrescribeStartInFront", "!R@PJL A\n", "A", "", 9},
                    LineRow{"AtSign", "@PJL COMMENT 5@6\r\n", "COMMENT", "5@6", 18},
                    LineRow{"AtSignBeforeTheLineEnd", "@PJL A@\n", "A@", "", 8},
                    LineRow{"ManyAtSigns", "@PJL @@@PJ\n", "@@@PJ", "", 11},
                    LineRow{"KeywordWithoutItsBlank", "@PJL A@PJL\n", "A@PJL", "", 11},
                    LineRow{"KeywordInLowerCase", "@PJL A@pjl B\n", "A@pjl", "B", 13},
                    LineRow{"EndsAtTheNextKeyword", "@PJL COMMENT A @PJL SET QTY=2\r\n", "COMMENT", "A", 15},
                    LineRow{"BareEndsAtTheNextKeyword", "@PJL@PJL SET QTY=2\r\n", "", "", 4},
                    LineRow{"EndsAtAKeywordThatEndsTheJob", "@PJL A@PJL ", "A", "", 6},
                    LineRow{"EscapeSequence", "\x1B\x45@PJL A\n", "ENTER", "LANGUAGE=PCL", 0},
                    LineRow{"EscapeBehindLineFeeds", "\n\n\x1B\x45", "ENTER", "LANGUAGE=PCL", 2},
                    LineRow{"EscapeBehindText", "text\x1B\x45@PJL A\n", "ENTER", "LANGUAGE=PCL", 4},
                    LineRow{"UelBehindText", "text\x1B%-12345X", "ENTER", "LANGUAGE=PCL", 4}),
    nameOf<LineRow>);

TEST_P(MalformedPjlLine, IsRejectedBehindTheOffendingByte)
{
    OpenJob job(GetParam().bytes);
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(failureOf(parser), GetParam().message);
    EXPECT_EQ(job.file.m_offset, GetParam().position);
}

INSTANTIATE_TEST_SUITE_P(
    , MalformedPjlLine,
    testing::Values(FailureRow{"NoAtSign", "text", unexpectedCharacter, 4},
                    FailureRow{"OnlyACarriageReturn", "\n\r\n", unexpectedCharacter, 3},
                    FailureRow{"AtSignEndsTheJob", "@", unexpectedCharacter, 1},
                    FailureRow{"PEndsTheJob", "@P", unexpectedCharacter, 2},
                    FailureRow{"JEndsTheJob", "@PJ", unexpectedCharacter, 3},
                    FailureRow{"NoP", "@xJL", unexpectedCharacter, 2},
                    FailureRow{"NoJ", "@PxL", unexpectedCharacter, 3},
                    FailureRow{"NoL", "@PJx", unexpectedCharacter, 4},
                    FailureRow{"TwoAtSigns", "@@PJL", unexpectedCharacter, 2},
                    FailureRow{"SmallP", "@pJL", unexpectedCharacter, 2},
                    FailureRow{"SmallJ", "@PjL", unexpectedCharacter, 3},
                    FailureRow{"SmallL", "@PJl", unexpectedCharacter, 4},
                    FailureRow{"EscapeInTheKeyword", "@\x1B", unexpectedCharacter, 2},
                    FailureRow{"EscapeInALine", "@PJL A\x1B%-12345X", unexpectedCharacter, 7},
                    FailureRow{"NulInALine", std::string("@PJL A\0\n", 8), unexpectedCharacter, 7},
                    FailureRow{"FormFeedInALine", "@PJL A\f\n", unexpectedCharacter, 7},
                    FailureRow{"LastControlByteInALine", "@PJL A\x1F\n", unexpectedCharacter, 7},
                    FailureRow{"CarriageReturnWithoutLineFeed", "@PJL A\rB", unexpectedCharacter, 8},
                    FailureRow{"TwoCarriageReturns", "@PJL A\r\r\n", unexpectedCharacter, 8},
                    FailureRow{"KeywordEndsTheJob", "@PJL", "end of file", 4},
                    FailureRow{"BodyEndsTheJob", "@PJL SET A", "end of file", 10},
                    FailureRow{"AtSignInTheBodyEndsTheJob", "@PJL A@", "end of file", 7},
                    FailureRow{"KeywordInTheBodyEndsTheJob", "@PJL A@PJL", "end of file", 10},
                    FailureRow{"CarriageReturnEndsTheJob", "@PJL A\r", "end of file", 7}),
    nameOf<FailureRow>);

TEST(PjlTokens, RejectEveryControlByteInALineButTabAndLineEnds)
{
    for (int byte = 0; byte < 256; ++byte) {
        OpenJob job(JobBytes().raw("@PJL A").fill(1, static_cast<char>(byte)).raw("\n"));
        JobParser::Pjl::Parser parser(job.parent);
        const bool good = byte >= 32 || byte == 9 || byte == 10 || byte == 13;

        EXPECT_EQ(failureOf(parser), good ? "no failure" : unexpectedCharacter) << byte;
    }
}

TEST(PjlTokens, PassALineOf1024Bytes)
{
    OpenJob job(JobBytes().raw("@PJL").fill(1024, 'A').raw("\r\n"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
    EXPECT_EQ(parser.currentCmd.cmd, std::string(1024, 'A'));
    EXPECT_EQ(job.file.m_offset, 1030);
}

TEST(PjlTokens, RejectALineOf1025Bytes)
{
    OpenJob job(JobBytes().raw("@PJL").fill(1025, 'A').raw("\r\n"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(failureOf(parser), tooLong);
    EXPECT_EQ(job.file.m_offset, 1029);
}

TEST(PjlTokens, CountTheBlanksOfALine)
{
    OpenJob job(JobBytes().raw("@PJL").fill(1025, ' ').raw("\r\n"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(failureOf(parser), tooLong);
}

TEST(PjlTokens, CountAnAtSignInALine)
{
    OpenJob job(JobBytes().raw("@PJL").fill(1024, 'A').raw("@PJx"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(failureOf(parser), tooLong);
    EXPECT_EQ(job.file.m_offset, 1029);
}

TEST(PjlTokens, EndAFullLineAtTheNextKeyword)
{
    OpenJob job(JobBytes().raw("@PJL").fill(1024, 'A').raw("@PJL B\n"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
    EXPECT_EQ(job.file.m_offset, 1028);
    EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
    EXPECT_EQ(parser.currentCmd.cmd, "B");
}

TEST(PjlTokens, CountEachLineAnew)
{
    OpenJob job(JobBytes().raw("@PJL").fill(1000, 'A').raw("\n@PJL").fill(1000, 'B').raw("\n"));
    JobParser::Pjl::Parser parser(job.parent);

    EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
    EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
    EXPECT_EQ(parser.currentCmd.cmd, std::string(1000, 'B'));
}

TEST(PjlTokens, PassBytesBetweenLinesInBulkAsTheyWouldOneByOne)
{
    const std::string alphabet{'x', '@', '\x1B', '\n', '\0', '\xFF'};
    std::vector<std::string> jobs{""};
    for (std::size_t i = 0; i < jobs.size() && jobs[i].size() < 4; ++i) {
        for (const char byte : alphabet)
            jobs.push_back(jobs[i] + byte);
    }
    ASSERT_EQ(jobs.size(), 1555U);

    for (const std::string& bytes : jobs) {
        const FirstToken expected = byteByByte(bytes);
        const FirstToken found = firstToken(bytes);

        EXPECT_EQ(found.outcome, expected.outcome) << testing::PrintToString(bytes);
        EXPECT_EQ(found.position, expected.position) << testing::PrintToString(bytes);
    }
}

// The first view of a file holds 4194304 bytes.

TEST(PjlTokens, ReadLinesOverTheBorderOfAView)
{
    for (std::size_t before = 4194304 - 20; before <= 4194304 + 2; ++before) {
        OpenJob job(JobBytes().fill(before, 'x').raw("@PJL A@PJL B=5@6\r\n"));
        JobParser::Pjl::Parser parser(job.parent);

        EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
        EXPECT_EQ(parser.currentCmd.cmd, "A");
        EXPECT_EQ(job.file.m_offset, static_cast<std::int64_t>(before) + 6);
        EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
        EXPECT_EQ(parser.currentCmd.param, "5@6");
        EXPECT_EQ(job.file.m_offset, static_cast<std::int64_t>(before) + 18);
        EXPECT_EQ(parser.getPjlToken(), PjlToken::EndOfFile);
    }
}

TEST(PjlTokens, FindAnEscapeAtTheBorderOfAView)
{
    for (std::size_t before = 4194304 - 2; before <= 4194304 + 1; ++before) {
        OpenJob job(JobBytes().fill(before, 'x').esc("E"));
        JobParser::Pjl::Parser parser(job.parent);

        EXPECT_EQ(parser.getPjlToken(), PjlToken::Command);
        EXPECT_EQ(parser.currentCmd.cmd, "ENTER");
        EXPECT_EQ(job.file.m_offset, static_cast<std::int64_t>(before));
    }
}

TEST(PjlTokens, RejectTextThatEndsAtTheBorderOfAView)
{
    for (std::size_t size = 4194304 - 1; size <= 4194304 + 1; ++size) {
        OpenJob job(JobBytes().fill(size, 'x'));
        JobParser::Pjl::Parser parser(job.parent);

        EXPECT_EQ(failureOf(parser), unexpectedCharacter);
        EXPECT_EQ(job.file.m_offset, static_cast<std::int64_t>(size));
    }
}
