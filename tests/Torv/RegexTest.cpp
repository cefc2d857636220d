#include "Torv/Regex.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "Torv/GenericException.h"

namespace Torv
{
namespace
{

constexpr std::string_view numberPattern = R"(n=(\d+)(x)?)";
constexpr char wordPattern[] = R"(/Option\s+\((\w+)\))";

std::string found(const Regex& regex, std::string_view subject, int group = 0)
{
    const auto text = regex.find(subject, group);
    return text ? std::string(*text) : "nothing";
}

TEST(Regex, FindsTheLeftmostMatchAndItsGroups)
{
    const Regex regex("(a+)(b)?(c*)");

    EXPECT_EQ(found(regex, "xxaac aab", 0), "aac");
    EXPECT_EQ(found(regex, "xxaac aab", 1), "aa");
    EXPECT_EQ(found(regex, "xxaac aab", 2), "nothing");
    EXPECT_EQ(found(regex, "aab", 3), "");
    EXPECT_EQ(found(regex, "aab", 4), "nothing");
    EXPECT_EQ(found(regex, "aab", -1), "nothing");
    EXPECT_EQ(found(regex, "xyz", 0), "nothing");
    EXPECT_EQ(regex.groupCount(), 3);
}

TEST(Regex, GivesViewsIntoTheSubject)
{
    const std::string subject = "key=value";

    const auto text = Regex("=(.*)").find(subject, 1);

    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->data(), subject.data() + 4);
}

TEST(Regex, PrefersTheFirstAlternativeAsEcmaScriptDoes)
{
    EXPECT_EQ(found(Regex("a|ab"), "ab"), "a");
    EXPECT_EQ(found(Regex("a+?"), "aaa"), "a");
}

TEST(Regex, TellsWhetherSomethingMatches)
{
    EXPECT_TRUE(Regex("b").matches("abc"));
    EXPECT_FALSE(Regex("d").matches("abc"));
    EXPECT_TRUE(Regex("").matches({}));
    EXPECT_TRUE(Regex("^$").matches({}));
}

TEST(Regex, TakesTheCaseOfLettersAsTold)
{
    EXPECT_FALSE(Regex("abc").matches("xABCx"));
    EXPECT_TRUE(Regex("abc", Regex::Case::Ignored).matches("xABCx"));
    EXPECT_TRUE(Regex("[A-C]+z", Regex::Case::Ignored).matches("abZ"));
}

TEST(Regex, FoldsOnlyAsciiForAsciiPatterns)
{
    const Regex letter("^[a-z]$", Regex::Case::Ignored);
    for (int byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        const bool isLetter = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');

        EXPECT_EQ(letter.matches(std::string_view(&character, 1)), isLetter) << byte;
    }
}

TEST(Regex, CountsSixBytesAsSpace)
{
    const Regex space(R"(^\s$)");
    const Regex inBrackets(R"(^[x\s]$)");
    const Regex notSpace(R"(^\S$)");
    const Regex notInBrackets(R"(^[^\s]$)");
    for (int byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        const std::string_view subject(&character, 1);
        const bool isSpace = byte == 9 || byte == 10 || byte == 11 || byte == 12 || byte == 13 || byte == 32;

        EXPECT_EQ(space.matches(subject), isSpace) << byte;
        EXPECT_EQ(inBrackets.matches(subject), isSpace || byte == 'x') << byte;
        EXPECT_EQ(notSpace.matches(subject), !isSpace) << byte;
        EXPECT_EQ(notInBrackets.matches(subject), !isSpace) << byte;
    }
}

TEST(Regex, TakesEveryByteButLineEndsForADot)
{
    const Regex dot("^.$");
    const Regex literal(R"(^\.[.]$)");
    for (int byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);

        EXPECT_EQ(dot.matches(std::string_view(&character, 1)), byte != '\n' && byte != '\r') << byte;
    }
    EXPECT_TRUE(literal.matches(".."));
    EXPECT_FALSE(literal.matches(".a"));
}

TEST(Regex, KnowsWhereBracketsEnd)
{
    EXPECT_TRUE(Regex(R"(^[]\s]+$)").matches("] ]"));
    EXPECT_TRUE(Regex(R"(^[^]\s]$)").matches("a"));
    EXPECT_FALSE(Regex(R"(^[^]\s]$)").matches("]"));
    EXPECT_TRUE(Regex(R"(^[[:alpha:]\s]+$)").matches("a\vb"));
    EXPECT_TRUE(Regex(R"(^[\]\s]+.$)").matches("]\vx"));
    EXPECT_TRUE(Regex(R"(^\[\s\]$)").matches("[\v]"));
    EXPECT_TRUE(Regex(R"(^\\s$)").matches("\\s"));
    EXPECT_TRUE(Regex(R"(^[-\d\.]+$)").matches("-1.5"));
}

TEST(Regex, AnchorsAtTheEndsOfTheSubjectOnly)
{
    EXPECT_FALSE(Regex("^b").matches("a\nb"));
    EXPECT_FALSE(Regex("a$").matches("a\nb"));
    EXPECT_FALSE(Regex("a$").matches("a\n"));
    EXPECT_TRUE(Regex("(?m)^b").matches("a\nb"));
}

TEST(Regex, TakesAnyBytesAsSubject)
{
    const std::string subject("\0\xFF\xC3\xA4\0z", 6);

    EXPECT_EQ(found(Regex("\\xff(.{3})z"), subject, 1), std::string("\xC3\xA4\0", 3));
    EXPECT_EQ(found(Regex("\xC3\xA4"), subject), "\xC3\xA4");
}

TEST(Regex, RefusesPatternsThatDoNotCompile)
{
    for (const char* pattern : {"(", "[", "[]", ")", "*a", "[b-a]", R"((a)\1)", "(?=a)", R"([\S])",
                                R"([^\S])", R"(\Qa)", "\\", "[\\"})
        EXPECT_THROW(Regex{pattern}, GenericException) << pattern;
}

TEST(Regex, NamesThePatternThatDoesNotCompile)
{
    try {
        Regex regex("x(");
        FAIL() << "nothing was thrown";
    } catch (const GenericException& exception) {
        EXPECT_TRUE(std::string_view(exception.what())
                        .starts_with("Regex: The pattern does not compile | pattern=x( | error="))
            << exception.what();
    }
}

TEST(Regex, SearchesWithAPatternOfTheNamespace)
{
    EXPECT_EQ((Regex::search<numberPattern, int>("a n=42", 7, 1)), 42);
    EXPECT_EQ((Regex::search<numberPattern, int>("nothing", 7, 1)), 7);
    EXPECT_EQ((Regex::search<numberPattern, std::string>("n=42", "none", 1)), "42");
    EXPECT_EQ((Regex::search<numberPattern, std::string_view>("n=42", "none", 2)), "none");
    EXPECT_EQ((Regex::search<wordPattern, std::string>("/Option \v(Punch)", "", 1)), "Punch");
}

TEST(Regex, SearchesWithAPatternOfAFunction)
{
    static constexpr char text[] = "([a-z]+)!";
    static constexpr std::string_view view = "(b+)";

    EXPECT_EQ((Regex::search<text, std::string>("12 go!", "", 1)), "go");
    EXPECT_EQ((Regex::search<view, std::string>("abbc", "", 1)), "bb");
}

TEST(Regex, FallsBackIfTheNumberDoesNotConvert)
{
    static constexpr char anything[] = "<([^>]*)>";

    EXPECT_EQ((Regex::search<anything, int>("<x>", -1, 1)), -1);
    EXPECT_EQ((Regex::search<anything, int>("<>", -1, 1)), -1);
    EXPECT_EQ((Regex::search<anything, int>("<99999999999>", -1, 1)), -1);
    EXPECT_EQ((Regex::search<anything, int>("< 12 pages>", -1, 1)), 12);
    EXPECT_EQ((Regex::search<anything, int>("<12>", -1, 2)), -1);
}

TEST(Regex, StandsLongHostileSubjects)
{
    const std::string subject(10000000, 'a');

    EXPECT_FALSE(Regex("(a*)*b").matches(subject));
    EXPECT_FALSE(Regex("(a|aa)+$b").matches(subject));
    EXPECT_FALSE(Regex("^(([a-z])+.)+[A-Z]").matches(subject));
    EXPECT_EQ(Regex("^(a*)*$").find(subject, 0)->size(), 10000000U);
}

TEST(Regex, MayBeUsedFromSeveralThreads)
{
    const Regex regex("(b+)c");
    int matched = 0;
    std::thread other([&] {
        for (int round = 0; round < 1000; ++round)
            matched += regex.matches("aabbc");
    });
    for (int round = 0; round < 1000; ++round)
        EXPECT_EQ(found(regex, "aabbc", 1), "bb");

    other.join();

    EXPECT_EQ(matched, 1000);
}

} // namespace
} // namespace Torv
