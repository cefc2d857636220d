#include "JobParser/model/BaseParser.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

TEST(BaseParser, MatchesAPatternAndStopsBehindIt)
{
    OpenJob job("abcd"sv);

    EXPECT_TRUE(job.parent.match("abc", false, false));
    EXPECT_EQ(job.file.m_offset, 3);
}

TEST(BaseParser, MatchesAPatternThatIsAllThatIsLeft)
{
    OpenJob job("abc"sv);

    EXPECT_TRUE(job.parent.match("abc", false, false));
    EXPECT_TRUE(job.file.atEnd());
}

TEST(BaseParser, PeeksWithoutMoving)
{
    OpenJob job("xabc"sv);
    job.file.getChar();

    EXPECT_TRUE(job.parent.match("abc", true, false));
    EXPECT_EQ(job.file.m_offset, 1);
}

TEST(BaseParser, StaysWhereItIsIfThePatternDoesNotFit)
{
    OpenJob job("xabd"sv);
    job.file.getChar();

    EXPECT_FALSE(job.parent.match("abc", false, false));
    EXPECT_EQ(job.file.m_offset, 1);
    EXPECT_FALSE(job.parent.match("bbd", true, false));
    EXPECT_EQ(job.file.m_offset, 1);
}

TEST(BaseParser, StaysWhereItIsIfThePatternIsLongerThanWhatIsLeft)
{
    OpenJob job("xab"sv);
    job.file.getChar();

    EXPECT_FALSE(job.parent.match("abc", false, false));
    EXPECT_EQ(job.file.m_offset, 1);
    job.file.setPos(3);
    EXPECT_FALSE(job.parent.match("a", false, false));
    EXPECT_EQ(job.file.m_offset, 3);
}

TEST(BaseParser, MatchesTheEmptyPatternAnywhere)
{
    OpenJob job(""sv);

    EXPECT_TRUE(job.parent.match("", false, false));
    EXPECT_EQ(job.file.m_offset, 0);
}

TEST(BaseParser, MatchesLettersOfTheFileInEitherCaseIfAsked)
{
    OpenJob job("@pJl"sv);

    EXPECT_FALSE(job.parent.match("@PJL", true, false));
    EXPECT_TRUE(job.parent.match("@PJL", true, true));
    EXPECT_FALSE(job.parent.match("@pJl", true, true)) << "the pattern is written in capitals";
}

TEST(BaseParser, ChangesTheCaseOfLettersAlone)
{
    OpenJob job("az`{\xE9"sv);

    EXPECT_TRUE(job.parent.match("AZ`{\xE9", true, true));
    EXPECT_FALSE(job.parent.match("AZ@[\xC9", true, true));
}

TEST(BaseParser, MatchesBytesAboveAscii)
{
    OpenJob job("\xFF\xD8\x00\xE0"sv);

    EXPECT_TRUE(job.parent.match("\xFF\xD8\x00\xE0"sv, false, false));
    EXPECT_EQ(job.file.m_offset, 4);
}

TEST(BaseParser, MatchesOverTheEndOfAView)
{
    SparseFile bytes;
    bytes.resize(4194304 + 100);
    bytes.writeAt(4194304 - 3, "\x1B%-12345X");
    OpenJob job(""sv);
    job.file.open(bytes.path());

    for (const bool peek : {true, false}) {
        job.file.setPos(4194304 - 3);
        EXPECT_TRUE(job.parent.match("\x1B%-12345X", peek, false));
        EXPECT_EQ(job.file.m_offset, peek ? 4194301 : 4194310);
    }
    job.file.setPos(4194304 - 3);
    EXPECT_FALSE(job.parent.match("\x1B%-12345Y", false, false));
    EXPECT_EQ(job.file.m_offset, 4194301);
    EXPECT_EQ(job.file.getChar(), 0x1B);
}

TEST(BaseParser, MatchesAUelAndStopsBehindIt)
{
    OpenJob job(JobBytes().uel().raw("x"));

    EXPECT_TRUE(job.parent.matchUel());
    EXPECT_EQ(job.file.m_offset, 9);
}

struct NoUel {
    const char* what;
    std::string_view bytes;
};

TEST(BaseParser, StaysWhereItIsIfNoUelStandsThere)
{
    constexpr std::array<NoUel, 6> rows{{
        {"another first byte", "x%-12345X"},
        {"eight bytes", "\x1B%-12345"},
        {"one byte", "\x1B"},
        {"small x", "\x1B%-12345x"},
        {"another digit", "\x1B%-12346X"},
        {"a PCL command", "\x1B&l0O\x1B%-12345X"},
    }};

    for (const NoUel& row : rows) {
        OpenJob job(row.bytes);

        EXPECT_FALSE(job.parent.matchUel()) << row.what;
        EXPECT_EQ(job.file.m_offset, 0) << row.what;
    }
}

TEST(BaseParser, ThrowsIfAskedForAUelAtTheEnd)
{
    OpenJob job(""sv);

    EXPECT_THROW(job.parent.matchUel(), UnexpectedEndOfFileException);
}

TEST(BaseParser, TakesOffQuotes)
{
    EXPECT_EQ(BaseParser::unQuote("\"STAPLING\"", '"'), "STAPLING");
    EXPECT_EQ(BaseParser::unQuote("\"\"", '"'), "");
    EXPECT_EQ(BaseParser::unQuote("'a\"'", '\''), "a\"");
}

TEST(BaseParser, RejectsTextsWithoutQuotesAtBothEnds)
{
    for (const std::string text : {"", "\"", "abc", "\"abc", "abc\"", "'abc'"}) {
        try {
            BaseParser::unQuote(text, '"');
            FAIL() << text;
        } catch (const JobParserException& error) {
            EXPECT_EQ(error.what(), "Not a quoted string: " + text);
        }
    }
}

} // namespace
} // namespace JobParser
