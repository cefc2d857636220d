#include "Torv/Format.h"

#include <clocale>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "tests/Torv/CommaLocale.h"

namespace Torv
{
namespace
{

enum Plain { PlainThree = 3 };
enum class Scoped : std::uint8_t { Nine = 9 };
enum class Wide : long long { Big = 5000000000 };

TEST(Format, PrintsAsPrintfDoes)
{
    EXPECT_EQ(format("plain"), "plain");
    EXPECT_EQ(format(""), "");
    EXPECT_EQ(format("%dx%d|%s|%05.1f|%-3d|%c|100%%", 21, -3, "text", 2.25, 7, 'c'),
              "21x-3|text|002.2|7  |c|100%");
    EXPECT_EQ(format("%02X %u %*d", 10, 4294967295U, 4, 7), "0A 4294967295    7");
}

TEST(Format, PrintsSixtyFourBits)
{
    EXPECT_EQ(format("%I64d", std::int64_t{-9223372036854775807}), "-9223372036854775807");
    EXPECT_EQ(format("%I64X|%I64u", std::uint64_t{0xFEDCBA9876543210}, std::uint64_t{18446744073709551615U}),
              "FEDCBA9876543210|18446744073709551615");
    EXPECT_EQ(format("%020I64d|%-4I64d|", std::int64_t{5000000000}, std::int64_t{1}),
              "00000000005000000000|1   |");
    EXPECT_EQ(format("%*I64d", 4, std::int64_t{1}), "   1");
    EXPECT_EQ(format("%016I64X", std::uint64_t{0xAB}), "00000000000000AB");
}

TEST(Format, LeavesTheSizeAloneOutsideOfAConversion)
{
    EXPECT_EQ(format("%%I64d"), "%I64d");
    EXPECT_EQ(format("I64 %d I64d", 1), "I64 1 I64d");
    EXPECT_EQ(format("%%%I64d%%I64", std::int64_t{2}), "%2%I64");
    EXPECT_EQ(format("%s", "%I64d"), "%I64d");
    EXPECT_EQ(format("%sI64", "a"), "aI64");
}

TEST(Format, TakesValuesThatNeedAPromotion)
{
    EXPECT_EQ(format("%d %d %d", true, std::int16_t{-1}, PlainThree), "1 -1 3");
    EXPECT_EQ(format("%d", Scoped::Nine), "9");
    EXPECT_EQ(format("%I64d", Wide::Big), "5000000000");
    EXPECT_EQ(format("%g", 0.5F), "0.5");
}

TEST(Format, EndsStringsAtANul)
{
    EXPECT_EQ(format("%s|", std::string("a\0b", 3).c_str()), "a|");
}

TEST(Format, PrintsTextsOfAnyLength)
{
    for (std::size_t size : {510U, 511U, 512U, 513U, 100000U}) {
        const std::string text(size, 'x');

        EXPECT_EQ(format("%s", text.c_str()), text);
    }
    EXPECT_EQ(format("%I64d%s", std::int64_t{1}, std::string(1000, 'y').c_str()),
              "1" + std::string(1000, 'y'));
}

TEST(Format, KeepsBytesThatAreNoText)
{
    EXPECT_EQ(format("%s", "\xFF\xE4\x80"), "\xFF\xE4\x80");
}

TEST(Format, IgnoresTheLocaleOfTheHost)
{
    const Torv::Test::CommaLocale locale;

    EXPECT_EQ(format("%.1f %'d", 1.5, 1000000), "1.5 1000000");
    EXPECT_STREQ(std::localeconv()->decimal_point, ",") << "the host keeps its locale";
}

} // namespace
} // namespace Torv
