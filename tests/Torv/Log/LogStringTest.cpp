#include "Torv/Log/LogString.h"

#include <gtest/gtest.h>
#include <limits>

using Torv::Log::LogString;

TEST(LogString, EnablesEveryLevel)
{
    const LogString log;

    for (const int level : {std::numeric_limits<int>::min(), -1, 0, 1, 2, 3, 4, 5})
        EXPECT_TRUE(log.isEnabled(level)) << level;
}

TEST(LogString, CollectsOneMessageALine)
{
    LogString log;

    log.write(0, "first", "", false, "", 0);
    log.write(4, "second", "", true, "JobParser/Parser.cpp", 12);

    EXPECT_EQ(log.getAndClear(), "first\nsecond\n");
}

TEST(LogString, AddsDetailsBehindTheirMessage)
{
    LogString log;

    log.write(1, "message", "details\nof two lines", false, "", 0);
    log.write(1, "next", "", false, "", 0);

    EXPECT_EQ(log.getAndClear(), "message\ndetails\nof two lines\nnext\n");
}

TEST(LogString, TakesAnyBytes)
{
    LogString log;

    log.write(0, std::string("a\0b\xFF%s%n", 8), std::string("\0", 1), false, "", 0);

    EXPECT_EQ(log.getAndClear(), std::string("a\0b\xFF%s%n\n\0\n", 11));
}

TEST(LogString, IsEmptyOnceItWasRead)
{
    LogString log;
    log.write(0, "first", "", false, "", 0);
    log.getAndClear();

    EXPECT_EQ(log.getAndClear(), "");
    log.write(0, "second", "", false, "", 0);
    EXPECT_EQ(log.getAndClear(), "second\n");
}
