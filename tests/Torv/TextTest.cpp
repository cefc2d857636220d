#include "Torv/Text.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace Torv
{
namespace
{

using Parts = std::vector<std::string>;

constexpr std::size_t unlimited = 10000000;

TEST(Text, ComparesIgnoringTheCaseOfAscii)
{
    EXPECT_TRUE(iequals("Duplex", "dUPLEX"));
    EXPECT_TRUE(iequals("", ""));
    EXPECT_FALSE(iequals("a", "ab"));
    EXPECT_FALSE(iequals("ab", "a"));
    EXPECT_FALSE(iequals("@[", "`{"));
    EXPECT_FALSE(iequals("\xC4", "\xE4"));
}

TEST(Text, FindsPrefixesIgnoringCase)
{
    EXPECT_TRUE(istartsWith("%%PAGE: 1", "%%page:"));
    EXPECT_TRUE(istartsWith("abc", ""));
    EXPECT_FALSE(istartsWith("ab", "abc"));
    EXPECT_FALSE(istartsWith("xabc", "abc"));
}

TEST(Text, FindsWordsIgnoringCase)
{
    EXPECT_TRUE(icontains("The MANUAL feed", "manual"));
    EXPECT_TRUE(icontains("abc", "C"));
    EXPECT_TRUE(icontains("", ""));
    EXPECT_TRUE(icontains("abc", ""));
    EXPECT_FALSE(icontains("", "a"));
    EXPECT_FALSE(icontains("abab", "abc"));
}

TEST(Text, ChangesOnlyTheLettersOfAscii)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    std::string lower = all;
    std::string upper = all;
    lower.replace('A', 26, "abcdefghijklmnopqrstuvwxyz");
    upper.replace('a', 26, "ABCDEFGHIJKLMNOPQRSTUVWXYZ");

    EXPECT_EQ(toLower(all), lower);
    EXPECT_EQ(toUpper(all), upper);
}

TEST(Text, TrimsSixBytes)
{
    EXPECT_EQ(trim(" \t\n\v\f\ra b \t\n\v\f\r"), "a b");
    EXPECT_EQ(trimLeft(" \t\n\v\f\ra b "), "a b ");
    EXPECT_EQ(trim(" \t "), "");
    EXPECT_EQ(trim(""), "");
    EXPECT_EQ(trimLeft("  "), "");
    EXPECT_EQ(trim("\xA0z\x85"), "\xA0z\x85");
    EXPECT_EQ(trim(std::string_view("\0 ", 2)), std::string_view("\0", 1));
}

TEST(Text, NarrowsWideTextToUtf8)
{
    EXPECT_EQ(narrow(u""), "");
    EXPECT_EQ(narrow(u"a\x7F"), "a\x7F");
    EXPECT_EQ(narrow(u"\x80\x7FF"), "\xC2\x80\xDF\xBF");
    EXPECT_EQ(narrow(u"\x800\xD7FF\xE000\xFFFF"), "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF");
    EXPECT_EQ(narrow(u"\xD800\xDC00"), "\xF0\x90\x80\x80");
    EXPECT_EQ(narrow(u"\xDBFF\xDFFF"), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(narrow(std::u16string_view(u"\0z", 2)), std::string("\0z", 2));
}

TEST(Text, ReplacesLoneSurrogates)
{
    EXPECT_EQ(narrow(u"\xD800"), "\xEF\xBF\xBD");
    EXPECT_EQ(narrow(u"\xDC00x"), "\xEF\xBF\xBDx");
    EXPECT_EQ(narrow(u"\xD800x"), "\xEF\xBF\xBDx");
    EXPECT_EQ(narrow(u"\xDC00\xD800"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(narrow(u"\xD800\xD800\xDC00"), "\xEF\xBF\xBD\xF0\x90\x80\x80");
}

TEST(Text, SplitsAtEachDelimiter)
{
    EXPECT_EQ(explode("a;b;c", ";", unlimited, false), (Parts{"a", "b", "c"}));
    EXPECT_EQ(explode("a;b,c", ",;", unlimited, false), (Parts{"a", "b", "c"}));
    EXPECT_EQ(explode(";a;;b;", ";", unlimited, false), (Parts{"", "a", "", "b", ""}));
    EXPECT_EQ(explode("abc", ";", unlimited, false), (Parts{"abc"}));
    EXPECT_EQ(explode("a;b", "", unlimited, false), (Parts{"a;b"}));
}

TEST(Text, LeavesEmptyPartsOutIfTold)
{
    EXPECT_EQ(explode("  a  b ", " ", unlimited, true), (Parts{"a", "b"}));
    EXPECT_EQ(explode("a", " ", unlimited, true), (Parts{"a"}));
    EXPECT_EQ(explode("   ", " ", unlimited, true), (Parts{}));
    EXPECT_EQ(explode(" a,b ", ", ", unlimited, true), (Parts{"a", "b"}));
}

TEST(Text, GivesTheRestAsTheLastPart)
{
    EXPECT_EQ(explode("a;b;c", ";", 2, false), (Parts{"a", "b;c"}));
    EXPECT_EQ(explode("a;;c", ";", 2, false), (Parts{"a", ";c"}));
    EXPECT_EQ(explode("a;b", ";", 1, false), (Parts{"a;b"}));
    EXPECT_EQ(explode("  0  1  0 0 ", " ", 3, true), (Parts{"0", "1", "0 0 "}));
    EXPECT_EQ(explode(" a b ", " ", 1, true), (Parts{"a b "}));
    EXPECT_EQ(explode("a  ", " ", 2, true), (Parts{"a"}));
    EXPECT_EQ(explode("a;b", ";", 0, false), (Parts{}));
}

TEST(Text, SplitsAnEmptyTextIntoOneEmptyPartOrNone)
{
    EXPECT_EQ(explode("", ";", unlimited, false), (Parts{""}));
    EXPECT_EQ(explode("", ";", unlimited, true), (Parts{}));
}

TEST(Text, ReadsWholeNumbers)
{
    const std::vector<std::pair<const char*, int>> rows = {{"0", 0},
                                                           {"42", 42},
                                                           {"+42", 42},
                                                           {"-42", -42},
                                                           {" \t\v7\r\n", 7},
                                                           {"007", 7},
                                                           {"-0", 0},
                                                           {"2147483647", 2147483647},
                                                           {"-2147483648", -2147483647 - 1}};
    for (const auto& [text, expected] : rows) {
        int value = -99;

        EXPECT_TRUE(tryParseInt(text, value)) << text;
        EXPECT_EQ(value, expected) << text;
    }
}

TEST(Text, LeavesTheValueAloneIfTheTextIsNoNumber)
{
    for (const char* text : {"", " ", "x", "1x", "x1", "1 2", "1.0", "+", "-", "+-1", "-+1", "++1", "- 1",
                             "0x1", "2147483648", "-2147483649", "99999999999999999999"}) {
        int value = 5;

        EXPECT_FALSE(tryParseInt(text, value)) << text;
        EXPECT_EQ(value, 5) << text;
    }
    int value = 5;
    EXPECT_FALSE(tryParseInt(std::string_view("1\0", 2), value));
    EXPECT_FALSE(tryParseInt({}, value));
}

} // namespace
} // namespace Torv
