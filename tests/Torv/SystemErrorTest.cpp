#include "Torv/SystemError.h"

#include <cerrno>
#include <clocale>
#include <gtest/gtest.h>
#include <string>

TEST(SystemError, NamesTheErrorsOfTheSystem)
{
    EXPECT_EQ(Torv::systemError(ENOENT), "No such file or directory");
    EXPECT_EQ(Torv::systemError(EISDIR), "Is a directory");
    EXPECT_EQ(Torv::systemError(EACCES), "Permission denied");
}

TEST(SystemError, GivesATextWithTheNumberForAnUnknownError)
{
    EXPECT_EQ(Torv::systemError(123456), "Unknown error 123456");
}

TEST(SystemError, LeavesTheLocaleOfTheHostAlone)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);

    Torv::systemError(ENOENT);

    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}
