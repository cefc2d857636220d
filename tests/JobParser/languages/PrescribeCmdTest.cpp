#include "JobParser/languages/PrescribeCmd.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "JobParser/JobParserException.h"

namespace JobParser::Prescribe
{
namespace
{

void addName(PrescribeCmd& cmd, std::string_view letters)
{
    for (const char letter : letters)
        cmd.addCmdChar(static_cast<unsigned char>(letter));
}

void addParam(PrescribeCmd& cmd, std::string_view text)
{
    cmd.startParam();
    for (const char byte : text)
        cmd.addData(static_cast<unsigned char>(byte));
    cmd.finishParam();
}

template <typename Action> std::string failure(Action action)
{
    try {
        action();
    } catch (const JobParserException& error) {
        return error.what();
    }
    return "none";
}

TEST(PrescribeCmd, PacksItsLettersFromTheHighestByteOn)
{
    PrescribeCmd cmd;

    EXPECT_EQ(cmd.name, 0U);
    addName(cmd, "C");
    EXPECT_EQ(cmd.name, 0x43000000U);
    addName(cmd, "OPY");
    EXPECT_EQ(cmd.name, 0x434F5059U);
}

TEST(PrescribeCmd, RefusesAFifthLetter)
{
    PrescribeCmd cmd;
    addName(cmd, "ABCD");

    EXPECT_EQ(failure([&] { cmd.addCmdChar('E'); }), "JobParser: Prescribe cmd name too long");
    EXPECT_EQ(cmd.name, 0x41424344U);
}

TEST(PrescribeCmd, KeepsParametersAsTextsAndReadsNumbers)
{
    PrescribeCmd cmd;
    addParam(cmd, "Color=6");
    addParam(cmd, "");
    addParam(cmd, " 12pt");

    ASSERT_EQ(cmd.m_paramCount, 3U);
    EXPECT_STREQ(cmd.getParamString(0), "Color=6");
    EXPECT_STREQ(cmd.getParamString(1), "");
    EXPECT_STREQ(cmd.getParamString(2), " 12pt");
    EXPECT_EQ(cmd.getParamInt(0), 0);
    EXPECT_EQ(cmd.getParamInt(1), 0);
    EXPECT_EQ(cmd.getParamInt(2), 12);
}

TEST(PrescribeCmd, RefusesThe129thParameter)
{
    PrescribeCmd cmd;
    for (int index = 0; index < 128; ++index)
        addParam(cmd, std::to_string(index));

    EXPECT_EQ(cmd.getParamInt(127), 127);
    EXPECT_EQ(failure([&] { cmd.startParam(); }), "JobParser: Prescribe cmd has too many parameters");
    EXPECT_EQ(cmd.m_paramCount, 128U);
}

TEST(PrescribeCmd, HasRoomFor10240BytesWithTheirClosingZeros)
{
    PrescribeCmd full;
    addParam(full, std::string(10239, 'x'));
    PrescribeCmd unfinished;
    unfinished.startParam();
    for (int index = 0; index < 10240; ++index)
        unfinished.addData('x');

    EXPECT_EQ(std::string_view(full.getParamString(0)).size(), 10239U);
    full.startParam();
    EXPECT_EQ(failure([&] { full.finishParam(); }), "JobParser: Prescribe cmd too long");
    EXPECT_EQ(failure([&] { full.addData('x'); }), "JobParser: Prescribe cmd too long");
    EXPECT_EQ(failure([&] { unfinished.addData('x'); }), "JobParser: Prescribe cmd too long");
    EXPECT_EQ(failure([&] { unfinished.finishParam(); }), "JobParser: Prescribe cmd too long");
}

TEST(PrescribeCmd, IsEmptyAfterClear)
{
    PrescribeCmd cmd;
    addName(cmd, "COPY");
    addParam(cmd, std::string(10239, 'x'));

    cmd.clear();
    addName(cmd, "DUPX");
    addParam(cmd, "7");

    EXPECT_EQ(cmd.name, 0x44555058U);
    EXPECT_EQ(cmd.m_paramCount, 1U);
    EXPECT_EQ(cmd.getParamInt(0), 7);
}

TEST(PrescribeCmdDeathTest, AssertsThatAParameterIsThere)
{
    PrescribeCmd cmd;
    addParam(cmd, "1");

    EXPECT_DEATH(cmd.getParamInt(1), "idx >= 0 && idx < m_paramCount");
    EXPECT_DEATH(cmd.getParamInt(-1), "idx >= 0 && idx < m_paramCount");
    EXPECT_DEATH(cmd.getParamString(1), "Parser");
}

} // namespace
} // namespace JobParser::Prescribe
