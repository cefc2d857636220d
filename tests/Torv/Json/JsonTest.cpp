#include "Torv/Json/Json.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

#include "Torv/Encoding.h"
#include "Torv/GenericException.h"

namespace Torv::Json
{
namespace
{

std::string nested(int depth, const std::string& open, const std::string& core, const std::string& close)
{
    std::string text;
    for (int level = 0; level < depth; ++level)
        text += open;
    text += core;
    for (int level = 0; level < depth; ++level)
        text += close;
    return text;
}

void expectLossless(const std::string& bytes)
{
    const std::string text = _encodeString(bytes);

    ASSERT_TRUE(Encoding::isUtf8(text)) << testing::PrintToString(bytes);
    ASSERT_EQ(parse(text).toString(), bytes);
}

struct RefusedText {
    const char* name;
    std::string text;
};

class TextThatIsNoJson : public testing::TestWithParam<RefusedText>
{
};

TEST_P(TextThatIsNoJson, IsRefused)
{
    EXPECT_THROW(parse(GetParam().text), GenericException);
}

INSTANTIATE_TEST_SUITE_P(
    Json, TextThatIsNoJson,
    testing::Values(
        RefusedText{"Empty", ""}, RefusedText{"Blank", "  \n"}, RefusedText{"Word", "nul"},
        RefusedText{"SingleQuotes", "'a'"}, RefusedText{"OpenArray", "[1"}, RefusedText{"OpenString", "\"a"},
        RefusedText{"TrailingComma", "[1,]"}, RefusedText{"TwoValues", "1 2"},
        RefusedText{"NulBehindTheValue", std::string("[1]\0", 4)}, RefusedText{"KeyWithoutValue", "{\"a\"}"},
        RefusedText{"KeyThatIsNoString", "{1:2}"}, RefusedText{"ControlByteInString", "\"\n\""},
        RefusedText{"ByteThatIsNoUtf8", "\"\xE4\""}, RefusedText{"LoneHighSurrogate", R"("\ud800")"},
        RefusedText{"LoneLowSurrogate", R"("\udc00")"},
        RefusedText{"HighSurrogateAndLetter", R"("\ud800\u0041")"}, RefusedText{"UnknownEscape", R"("\x41")"},
        RefusedText{"LeadingZero", "01"}, RefusedText{"IntegerAboveSixtyFourBits", "18446744073709551616"},
        RefusedText{"IntegerBelowSixtyFourBits", "-9223372036854775809"},
        RefusedText{"RealThatDoesNotFit", "1e400"}, RefusedText{"NotANumber", "NaN"},
        RefusedText{"ByteOrderMark", "\xEF\xBB\xBF[1]"}),
    [](const auto& row) { return row.param.name; });

TEST(Json, SaysWhatIsWrong)
{
    try {
        parse("");
        FAIL() << "nothing was thrown";
    } catch (const GenericException& exception) {
        EXPECT_STREQ(exception.what(), "Json::parse(): The text is no JSON | error=Empty: no JSON found");
    }
}

TEST(Json, AcceptsSixtyFourLevelsAndNoMore)
{
    EXPECT_NO_THROW(parse(nested(64, "[", "1", "]")));
    EXPECT_NO_THROW(parse(nested(64, "[", "", "]")));
    EXPECT_NO_THROW(parse(nested(64, "{\"a\":", "1", "}")));
    EXPECT_NO_THROW(parse(nested(63, "{\"a\":", "{}", "}")));
    EXPECT_NO_THROW(parse(nested(32, "[{\"a\":", "\"]}\\\"[[[[\"", "}]")));
    EXPECT_NO_THROW(parse("[" + nested(63, "[", "1", "]") + "," + nested(63, "[", "\"[\\\\\"", "]") + "]"));

    EXPECT_THROW(parse(nested(65, "[", "1", "]")), GenericException);
    EXPECT_THROW(parse(nested(65, "[", "", "]")), GenericException);
    EXPECT_THROW(parse(nested(65, "{\"a\":", "1", "}")), GenericException);
    EXPECT_THROW(parse(nested(64, "{\"a\":", "{}", "}")), GenericException);
    EXPECT_THROW(parse("[" + nested(63, "[", "1", "]") + "," + nested(64, "[", "", "]") + "]"),
                 GenericException);
    EXPECT_THROW(parse(nested(1000000, "[", "", "]")), GenericException);
    EXPECT_THROW(parse(nested(1000000, "[", "", "")), GenericException);
}

TEST(Json, WritesBackTheDeepestNesting)
{
    const std::string text = nested(32, "[{\"a\":", "1", "}]");

    EXPECT_EQ(parse(text).toJson(), text);
}

TEST(Json, EscapesWhatJsonAsksFor)
{
    EXPECT_EQ(_encodeString(""), "\"\"");
    EXPECT_EQ(_encodeString("plain text / \x7F"), "\"plain text / \x7F\"");
    EXPECT_EQ(_encodeString("\"\\\b\f\n\r\t"), R"("\"\\\b\f\n\r\t")");
    EXPECT_EQ(_encodeString(std::string("\0\x01\x0B\x1B\x1F", 5)), R"("\u0000\u0001\u000b\u001b\u001f")");
    EXPECT_EQ(_encodeString("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"),
              "\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\"");
}

TEST(Json, EscapesAtEveryPlaceOfALongerText)
{
    for (std::size_t place = 0; place < 24; ++place) {
        std::string bytes(24, 'a');
        bytes[place] = '\n';
        std::string expected = "\"" + std::string(24, 'a') + "\"";
        expected.replace(place + 1, 1, "\\n");

        EXPECT_EQ(_encodeString(bytes), expected);
    }
}

TEST(Json, WritesBytesThatAreNoUtf8AsCharactersOfTheirOwn)
{
    EXPECT_EQ(_encodeString("\x80"), "\"\xEE\xBE\x80\"");
    EXPECT_EQ(_encodeString("\xBF"), "\"\xEE\xBE\xBF\"");
    EXPECT_EQ(_encodeString("\xC0"), "\"\xEE\xBF\x80\"");
    EXPECT_EQ(_encodeString("\xFF"), "\"\xEE\xBF\xBF\"");
    EXPECT_EQ(_encodeString("a\xE4z\n"), "\"a\xEE\xBF\xA4z\\n\"");
    EXPECT_EQ(_encodeString("\xEE\xBE\x80"), "\"\xEE\xBF\xAE\xEE\xBE\xBE\xEE\xBE\x80\"");
}

TEST(Json, AppendsBehindWhatIsThere)
{
    std::string out = "x";

    appendString(out, "y");

    EXPECT_EQ(out, "x\"y\"");
}

TEST(Json, AppendsNumbersOfAllSizes)
{
    std::string out = "x";

    appendNumber(out, 0);
    appendNumber(out, std::numeric_limits<std::int64_t>::min());
    appendNumber(out, std::numeric_limits<std::int64_t>::max());
    appendNumber(out, std::numeric_limits<std::uint64_t>::max());

    EXPECT_EQ(out, "x0-9223372036854775808922337203685477580718446744073709551615");
}

TEST(Json, KeepsAllPairsOfBytes)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string pair = {static_cast<char>(first), static_cast<char>(second)};
            ASSERT_NO_FATAL_FAILURE(expectLossless(pair));
        }
    }
}

TEST(Json, KeepsRandomBytes)
{
    std::mt19937 random(20240501);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes;
        for (auto size = random() % 64; size != 0; --size)
            bytes += static_cast<char>(random() % 3 == 0 ? random() % 128 : 128 + random() % 128);
        ASSERT_NO_FATAL_FAILURE(expectLossless(bytes));
    }
}

TEST(Json, KeepsItsOwnEscapesAndTheirParts)
{
    expectLossless("\xEE\xBE\x80\xEE\xBF\xBF\xEE\xBE\xEE\xBE\xEE\xEE\xBF\xBF");
    expectLossless(_encodeString("\xFF\xFE"));
    expectLossless(_encodeString(_encodeString("\xEE\xBE\x80\xC3")));
    expectLossless("\xEE\xBC\x80\xEE\xBD\xBF\xEF\x80\x80");
}

TEST(Json, ParsesTextsOfAnyCapacity)
{
    for (std::size_t size = 0; size < 200; ++size) {
        std::string text = "\"" + std::string(size, 'a') + "\"";
        text.shrink_to_fit();

        EXPECT_EQ(parse(std::move(text)).toString(), std::string(size, 'a'));
    }
}

} // namespace
} // namespace Torv::Json
