#include "JobParser/languages/PostScriptFeatureText.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "Torv/Text.h"

namespace JobParser::PostScript
{
namespace
{

struct Answer {
    const char* text;
    const char* answer;
};

TEST(PostScriptFeatureText, GivesTheWordOfTheMediaProcessingOption)
{
    constexpr std::array<Answer, 12> rows{{
        {"<</MediaProcessingOption (LEFT_2PT)>>", "LEFT_2PT"},
        {"/MediaProcessingOption\t\r\n\v\f (a)", "a"},
        {"/MediaProcessingOption (a) /MediaProcessingOption (b)", "a"},
        {"/MediaProcessingOption () /MediaProcessingOption (b)", "b"},
        {"/MediaProcessingOption (a b) (c)", ""},
        {"/MediaProcessingOption(a)", ""},
        {"/MediaProcessingOption ( a)", ""},
        {"/MediaProcessingOption (a-b)", ""},
        {"/mediaprocessingoption (a)", ""},
        {"/MediaProcessingOption (a", ""},
        {"/MediaProcessingOption (\xC4)", ""},
        {"", ""},
    }};

    for (const Answer& row : rows)
        EXPECT_EQ(FeatureText::mediaProcessingOption(row.text), row.answer) << row.text;
}

TEST(PostScriptFeatureText, CutsAWordAfter4096Bytes)
{
    const std::string word = std::string(4095, 'a') + "bc";

    EXPECT_EQ(FeatureText::mediaProcessingOption("/MediaProcessingOption (" + word + ")"),
              std::string(4095, 'a') + "b");
}

struct NumberAnswer {
    const char* text;
    int number;
};

TEST(PostScriptFeatureText, GivesTheNumberOfTheFirstStaple)
{
    constexpr std::array<NumberAnswer, 11> rows{{
        {"<< /Staple 3 /StaplePosition 1 >>", 3},
        {"/Staple 0 ", 0},
        {"/Staple 0 /Staple 3 ", 0},
        {"/Staple 1 /Staple 3 ", 3},
        {"/Staple 3", 0},
        {"/Staple 3\n", 0},
        {"/Staple  3 ", 0},
        {"/Staple 33 ", 0},
        {"/staple 3 ", 0},
        {"Staple 3 ", 0},
        {"", 0},
    }};

    for (const NumberAnswer& row : rows)
        EXPECT_EQ(FeatureText::staple(row.text), row.number) << row.text;
}

TEST(PostScriptFeatureText, GivesTheNumberOfTheFirstStaplePosition)
{
    constexpr std::array<NumberAnswer, 9> rows{{
        {"/StaplePosition 1 ", 1},
        {"/StaplePosition 2 ", 2},
        {"/StaplePosition 3 ", 3},
        {"/StaplePosition 0 /StaplePosition 3 /StaplePosition 1 ", 3},
        {"/StaplePosition 4 ", 0},
        {"/StaplePosition 1", 0},
        {"/StaplePosition 12 ", 0},
        {"/stapleposition 1 ", 0},
        {"", 0},
    }};

    for (const NumberAnswer& row : rows)
        EXPECT_EQ(FeatureText::staplePosition(row.text), row.number) << row.text;
}

/// All that a parser asks a text for, as it does at the end of a feature.
std::string answers(const std::string& text)
{
    const std::string_view trimmed = Torv::trim(text);
    return (trimmed.empty() ? "empty " : "text ") + std::to_string(FeatureText::staple(trimmed)) + " " +
           std::to_string(FeatureText::staplePosition(trimmed)) + " " +
           std::string(FeatureText::mediaProcessingOption(trimmed));
}

std::string shortened(std::string text)
{
    FeatureText::shorten(text);
    return text;
}

TEST(PostScriptFeatureText, IsShortAfterwardsWhateverItWas)
{
    constexpr std::size_t most = 10000;

    EXPECT_LT(shortened(std::string(1000000, 'x')).size(), most);
    EXPECT_LT(shortened(std::string(1000000, ' ')).size(), most);
    EXPECT_LT(shortened("/MediaProcessingOption" + std::string(1000000, '\n')).size(), most);
    EXPECT_LT(shortened("/MediaProcessingOption (" + std::string(1000000, 'a')).size(), most);
    EXPECT_LT(shortened("/MediaProcessingOption (" + std::string(1000000, 'a') + ")").size(), most);
    EXPECT_LT(shortened("/Staple 3 /StaplePosition 1 /MediaProcessingOption (" + std::string(1000000, 'a') +
                        ")" + std::string(1000000, 'x'))
                  .size(),
              most);
}

TEST(PostScriptFeatureText, LeavesAShortTextButForLongWhiteSpace)
{
    EXPECT_EQ(shortened("<< /Staple 3\n >> a  b"), "<< /Staple 3\n\n>> a \nb");
    EXPECT_EQ(shortened("a \n\t\r b \n \n"), "a \nb \n");
    EXPECT_EQ(shortened(""), "");
}

TEST(PostScriptFeatureText, GivesTheSameAnswersShortenedAndAppendedTo)
{
    const std::array<std::string, 24> pieces{
        "/Staple 3",
        " ",
        "/Staple",
        " 3 ",
        "/Staple 0 ",
        "/StaplePosition 1",
        "/StaplePosition",
        " 2 ",
        "\n",
        "  ",
        "(",
        "/Media",
        "ProcessingOption",
        "/MediaProcessingOption",
        "(LEFT_2PT)",
        ")",
        "RIGHT_3HOLE",
        "x",
        std::string(5, ' '),
        std::string(4090, 'a'),
        std::string(4200, 'b'),
        std::string(5000, '.'),
        std::string(9000, ' '),
        "3",
    };
    std::mt19937 random(3);
    for (int repeat = 0; repeat < 3000; ++repeat) {
        std::string whole;
        std::string kept;
        const int count = 1 + static_cast<int>(random() % 12);
        for (int piece = 0; piece < count; ++piece) {
            const std::string& text = pieces[random() % pieces.size()];
            whole += text;
            kept += text;
            FeatureText::shorten(kept);
            ASSERT_EQ(answers(kept), answers(whole)) << repeat;
        }
    }
}

TEST(PostScriptFeatureText, KeepsAWordOfAnyLengthOpen)
{
    const std::string open = shortened("/MediaProcessingOption (" + std::string(6000, 'a'));
    const std::string longer = shortened(open + std::string(6000, 'b'));
    const std::string word(4096, 'a');

    EXPECT_EQ(answers(open + ")"), "text 0 0 " + word);
    EXPECT_EQ(answers(longer + ")"), "text 0 0 " + word);
    EXPECT_EQ(answers(longer), "text 0 0 ");
    EXPECT_EQ(answers(longer + " )"), "text 0 0 ");
}

TEST(PostScriptFeatureText, KeepsAMatchBeforeTheEndThatWhiteSpaceFollows)
{
    const std::string filler(5000, '.');
    const std::string blanks(100000, '\n');

    EXPECT_EQ(answers(shortened(filler + "/Staple 3 " + blanks)), "text 0 0 ");
    EXPECT_EQ(answers(shortened(filler + "/Staple 3 " + blanks) + "x"), "text 3 0 ");
    EXPECT_EQ(answers(shortened(filler + "/Staple 3 x" + blanks)), "text 3 0 ");
    EXPECT_EQ(answers(shortened("/Staple 3 " + filler + blanks)), "text 3 0 ");
}

} // namespace
} // namespace JobParser::PostScript
