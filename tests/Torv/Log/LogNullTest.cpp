#include "Torv/Log/LogNull.h"

#include <gtest/gtest.h>
#include <limits>

TEST(LogNull, EnablesNoLevel)
{
    const Torv::Log::LogNull log;

    for (const int level : {std::numeric_limits<int>::min(), -1, 0, 1, 2, 3, 4, 5})
        EXPECT_FALSE(log.isEnabled(level)) << level;
}

TEST(LogNull, TakesAnyMessage)
{
    Torv::Log::LogNull log;

    EXPECT_NO_THROW(log.write(0, std::string("\0\xFF%s", 4), "details", true, "JobParser/Parser.cpp", 12));
    EXPECT_NO_THROW(log.write(-1, "", "", false, "", 0));
}
