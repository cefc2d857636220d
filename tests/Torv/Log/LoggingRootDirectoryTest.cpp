#include "Torv/Log/LoggingRootDirectory.h"

#include <gtest/gtest.h>
#include <string>

using Torv::Log::LoggingRootDirectory;

namespace
{

struct Row {
    const char* name;
    const char* knownFile;
    const char* path;
    const char* relative;
};

class LoggingRootDirectoryRow : public testing::TestWithParam<Row>
{
};

std::string rowName(const testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

constexpr Row rows[] = {
    {"Absolute", "/build/jp/JobParser/Parser.cpp", "/build/jp/Torv/Text.cpp", "Torv/Text.cpp"},
    {"Relative", "../src/JobParser/Parser.cpp", "../src/pdf/Lexer.cpp", "pdf/Lexer.cpp"},
    {"DotSlash", "./JobParser/Parser.cpp", "./pdf/Lexer.cpp", "pdf/Lexer.cpp"},
    {"MappedToNothing", "JobParser/Parser.cpp", "pdf/Lexer.cpp", "pdf/Lexer.cpp"},
    {"MappedToAName", "src/JobParser/Parser.cpp", "src/pdf/Lexer.cpp", "pdf/Lexer.cpp"},
    {"RootOfTheSystem", "/JobParser/Parser.cpp", "/pdf/Lexer.cpp", "pdf/Lexer.cpp"},
    {"KnownFileItself", "/a/JobParser/Parser.cpp", "/a/JobParser/Parser.cpp", "JobParser/Parser.cpp"},
    {"OutsideTheRoot", "/build/jp/JobParser/Parser.cpp", "/usr/include/x.h", "/usr/include/x.h"},
    {"SiblingOfTheRoot", "/build/jp/JobParser/Parser.cpp", "/build/jp2/x.h", "/build/jp2/x.h"},
    {"OtherKnownFile", "/build/jp/JobParser/Job.cpp", "/build/jp/x.cpp", "/build/jp/x.cpp"},
    {"OtherDirectoryWithTheSameEnding", "/build/OtherJobParser/Parser.cpp", "/build/Other/x.cpp",
     "/build/Other/x.cpp"},
    {"Empty", "/build/jp/JobParser/Parser.cpp", "", ""},
};

} // namespace

TEST_P(LoggingRootDirectoryRow, MakesThePathRelative)
{
    const LoggingRootDirectory root(GetParam().knownFile, "JobParser/Parser.cpp");

    EXPECT_STREQ(root.makeRelative(GetParam().path), GetParam().relative);
}

INSTANTIATE_TEST_SUITE_P(LoggingRootDirectory, LoggingRootDirectoryRow, testing::ValuesIn(rows), rowName);

TEST(LoggingRootDirectory, GivesAPlaceInThePathItWasGiven)
{
    const LoggingRootDirectory root("/src/JobParser/Parser.cpp", "JobParser/Parser.cpp");
    const char* const path = "/src/Torv/Text.cpp";

    EXPECT_EQ(root.makeRelative(path), path + 5);
}

TEST(LoggingRootDirectory, KnowsTheRootOfItsOwnSources)
{
    EXPECT_STREQ(Torv::Log::makeLoggingRootRelative(__FILE__), "tests/Torv/Log/LoggingRootDirectoryTest.cpp");
}
