#include "Torv/Number.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/Torv/CommaLocale.h"

namespace
{

TEST(Number, ReadsTheLongestNumberThatStandsThere)
{
    EXPECT_EQ(Torv::stoi("42"), 42);
    EXPECT_EQ(Torv::stoi(" \t\n\v\f\r-7 pages"), -7);
    EXPECT_EQ(Torv::stoi("+5"), 5);
    EXPECT_EQ(Torv::stoi("010"), 10);
    EXPECT_EQ(Torv::stoi("0x10"), 0);
    EXPECT_EQ(Torv::stoi("2147483647"), 2147483647);
    EXPECT_EQ(Torv::stoi("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(Torv::stof("1.5mm"), 1.5F);
    EXPECT_EQ(Torv::stof("1,5"), 1.0F);
    EXPECT_EQ(Torv::stod(" -2.5e3x"), -2500.0);
    EXPECT_EQ(Torv::stod("0x10"), 16.0);
    EXPECT_EQ(Torv::stod(".5."), 0.5);
    EXPECT_TRUE(std::isnan(Torv::stod("nan")));
    EXPECT_EQ(Torv::stod("inf"), std::numeric_limits<double>::infinity());
}

TEST(Number, EndsAtANul)
{
    EXPECT_EQ(Torv::stoi(std::string("1\0002", 3)), 1);
    EXPECT_THROW(Torv::stoi(std::string("\0001", 2)), std::invalid_argument);
}

TEST(Number, RefusesTextsWithoutANumber)
{
    for (const char* text : {"", " ", "x", "-", "+-1", "."}) {
        EXPECT_THROW(Torv::stoi(text), std::invalid_argument) << text;
        EXPECT_THROW(Torv::stof(text), std::invalid_argument) << text;
        EXPECT_THROW(Torv::stod(text), std::invalid_argument) << text;
    }
}

TEST(Number, RefusesNumbersThatDoNotFit)
{
    EXPECT_THROW(Torv::stoi("2147483648"), std::out_of_range);
    EXPECT_THROW(Torv::stoi("-2147483649"), std::out_of_range);
    EXPECT_THROW(Torv::stoi("99999999999999999999"), std::out_of_range);
    EXPECT_THROW(Torv::stof("1e39"), std::out_of_range);
    EXPECT_THROW(Torv::stof("1e-60"), std::out_of_range);
    EXPECT_THROW(Torv::stod("1e309"), std::out_of_range);
    EXPECT_THROW(Torv::stod("1e-400"), std::out_of_range);
}

TEST(Number, AtoiReadsTheNumberAtTheStartOrNothing)
{
    EXPECT_EQ(Torv::atoi("42"), 42);
    EXPECT_EQ(Torv::atoi(" \t\n\v\f\r-7 pages"), -7);
    EXPECT_EQ(Torv::atoi("+5"), 5);
    EXPECT_EQ(Torv::atoi("010"), 10);
    EXPECT_EQ(Torv::atoi("0x10"), 0);
    EXPECT_EQ(Torv::atoi("1.9"), 1);
    EXPECT_EQ(Torv::atoi(std::string_view("1\0002", 3)), 1);
    EXPECT_EQ(Torv::atoi("2147483647"), 2147483647);
    EXPECT_EQ(Torv::atoi("-2147483648"), -2147483647 - 1);
    for (const char* text : {"", " ", "x1", "-", "+", "+-1", "-+1", "--1", "++1", "- 1", ".5",
                             "\xA0"
                             "1"})
        EXPECT_EQ(Torv::atoi(text), 0) << text;
    EXPECT_EQ(Torv::atoi(std::string_view("123").substr(0, 2)), 12);
    EXPECT_EQ(Torv::atoi(std::string_view()), 0);
}

TEST(Number, AtoiTakesTheLowHalfOfANumberOf64BitsAtMost)
{
    EXPECT_EQ(Torv::atoi("2147483648"), -2147483647 - 1);
    EXPECT_EQ(Torv::atoi("4294967295"), -1);
    EXPECT_EQ(Torv::atoi("4294967296"), 0);
    EXPECT_EQ(Torv::atoi("4294967299"), 3);
    EXPECT_EQ(Torv::atoi("-4294967299"), -3);
    EXPECT_EQ(Torv::atoi("9223372036854775807"), -1);
    EXPECT_EQ(Torv::atoi("9223372036854775808"), -1);
    EXPECT_EQ(Torv::atoi("99999999999999999999999999"), -1);
    EXPECT_EQ(Torv::atoi("-9223372036854775808"), 0);
    EXPECT_EQ(Torv::atoi("-9223372036854775807"), 1);
    EXPECT_EQ(Torv::atoi("-99999999999999999999999999"), 0);
}

TEST(Number, LeavesErrnoAlone)
{
    errno = EDOM;
    EXPECT_EQ(Torv::stoi("1"), 1);
    EXPECT_EQ(errno, EDOM);

    EXPECT_THROW(Torv::stod("1e999"), std::out_of_range);
    EXPECT_EQ(errno, EDOM);
}

TEST(Number, IgnoresTheLocaleOfTheHost)
{
    const Torv::Test::CommaLocale locale;
    ASSERT_EQ(std::strtod("1,5", nullptr), 1.5);

    EXPECT_EQ(Torv::stof("1.5"), 1.5F);
    EXPECT_EQ(Torv::stod("1,5"), 1.0);
    EXPECT_EQ(Torv::stoi("1.500"), 1);
}

} // namespace
