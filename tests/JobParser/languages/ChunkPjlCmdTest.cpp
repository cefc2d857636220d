#include "JobParser/languages/ChunkPjlCmd.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <regex>
#include <stdexcept>
#include <vector>

#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/Encoding.h"
#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/ILog.h"
#include "Torv/Log/LogString.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"

using JobParser::ChunkPjlCmd;

namespace
{

std::string saved(const ChunkPjlCmd& chunk)
{
    JobParser::JobFile noFile;
    Torv::IO::StringStream stream;
    chunk.save(noFile, stream);
    return stream.str();
}

std::string dumped(ChunkPjlCmd chunk)
{
    Torv::Log::LogString log;
    chunk.dump(log);
    return log.getAndClear();
}

std::string json(const ChunkPjlCmd& chunk)
{
    JobParser::SerializationContext context;
    return chunk.toJson(context);
}

ChunkPjlCmd fromJson(const std::string& text)
{
    JobParser::UnserializationContext context;
    return ChunkPjlCmd(context, Torv::Json::parse(text));
}

/// Keeps its lines, and throws instead for those that it does not want.
class PickyLog : public Torv::Log::ILog
{
public:
    explicit PickyLog(bool (*wants)(std::string_view)) : m_wants(wants) {}

    bool isEnabled(int) const override { return true; }
    void write(int level, const std::string& message, const std::string& details, bool flag,
               const char* sourceFile, int line) override
    {
        if (!m_wants(message))
            throw std::runtime_error("Unwanted");
        EXPECT_EQ(level, 0);
        EXPECT_EQ(details, "");
        EXPECT_FALSE(flag);
        EXPECT_STREQ(sourceFile, "");
        EXPECT_EQ(line, 0);
        lines.push_back(message);
    }

    std::vector<std::string> lines;

private:
    bool (*m_wants)(std::string_view);
};

} // namespace

TEST(ChunkPjlCmd, KeepsCommandAndParameterAsGiven)
{
    const ChunkPjlCmd chunk("Set", "copies=2");

    EXPECT_EQ(chunk.cmd, "Set");
    EXPECT_EQ(chunk.param, "copies=2");
}

TEST(ChunkPjlCmd, WritesTheThreeShapesOfALine)
{
    const struct {
        const char* cmd;
        const char* param;
        const char* line;
        std::int64_t size;
    } rows[] = {
        {"", "", "@PJL\r\n", 6},
        {"", "COPIES=2", "@PJL\r\n", 6},
        {"RESET", "", "@PJL RESET\r\n", 12},
        {"SET", "COPIES=2", "@PJL SET COPIES=2\r\n", 19},
        {"FOO", "1", "@PJL FOO 1\r\n", 12},
    };
    for (const auto& row : rows) {
        const ChunkPjlCmd chunk(row.cmd, row.param);

        EXPECT_EQ(saved(chunk), row.line);
        EXPECT_EQ(chunk.size(), row.size) << row.line;
    }
}

TEST(ChunkPjlCmd, WritesNulBytes)
{
    const ChunkPjlCmd chunk(std::string("A\0B", 3), std::string("\0", 1));

    EXPECT_EQ(saved(chunk), std::string("@PJL A\0B \0\r\n", 12));
    EXPECT_EQ(chunk.size(), 12);
}

TEST(ChunkPjlCmd, DumpsTheThreeShapesOfALine)
{
    EXPECT_EQ(dumped({"", ""}), "@PJL\n");
    EXPECT_EQ(dumped({"", "COPIES=2"}), "@PJL\n");
    EXPECT_EQ(dumped({"RESET", ""}), "@PJL RESET\n");
    EXPECT_EQ(dumped({"SET", "COPIES=2"}), "@PJL SET COPIES=2\n");
    EXPECT_EQ(dumped({"SET", "NAME=\xC3\xA4"}), "@PJL SET NAME=\xC3\xA4\n");
}

TEST(ChunkPjlCmd, DumpsTextUpToANulByte)
{
    EXPECT_EQ(dumped({"SET", std::string("A\0B", 3)}), "@PJL SET A\n");
}

TEST(ChunkPjlCmd, DumpsOnlyTheCommandOfALineThatIsNoUtf8)
{
    EXPECT_EQ(dumped({"SET", "NAME=\xE4"}), "PJL cmd: SET <invalid UTF8 value>\n");
}

TEST(ChunkPjlCmd, DumpsACommandThatIsNoUtf8AsUtf8)
{
    const std::string line = dumped({"S\xE4T", ""});

    EXPECT_EQ(line, "PJL cmd: S\xEE\xBF\xA4T <invalid UTF8 value>\n");
    EXPECT_TRUE(Torv::Encoding::isUtf8(line));
}

TEST(ChunkPjlCmd, DumpsAtLevelZeroWithoutSourcePlace)
{
    PickyLog log([](std::string_view) { return true; });
    ChunkPjlCmd chunk("SET", "COPIES=2");

    chunk.dump(log);

    EXPECT_EQ(log.lines, (std::vector<std::string>{"@PJL SET COPIES=2"}));
}

TEST(ChunkPjlCmd, DumpsOnlyTheCommandToALogThatThrowsForTheLine)
{
    PickyLog log([](std::string_view line) { return line.find("COPIES") == std::string_view::npos; });
    ChunkPjlCmd chunk("SET", "COPIES=2");

    chunk.dump(log);

    EXPECT_EQ(log.lines, (std::vector<std::string>{"PJL cmd: SET <invalid UTF8 value>"}));
}

TEST(ChunkPjlCmd, DumpsAnyBytesToALogThatThrowsForInvalidUtf8)
{
    for (int byte = 0; byte < 256; ++byte) {
        PickyLog log(Torv::Encoding::isUtf8);
        ChunkPjlCmd chunk(std::string(1, static_cast<char>(byte)), "\xFF");

        chunk.dump(log);

        EXPECT_EQ(log.lines.size(), 1U) << byte;
    }
}

TEST(ChunkPjlCmd, WritesJsonWithTheCommandFirst)
{
    EXPECT_EQ(json({"SET", "NAME=\"a\""}), R"({"cmd":"SET","param":"NAME=\"a\""})");
    EXPECT_EQ(json({"", ""}), R"({"cmd":"","param":""})");
}

TEST(ChunkPjlCmd, ComesBackFromJsonWithAllBytes)
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);

    const ChunkPjlCmd chunk = fromJson(json({"S\xE4T", bytes}));

    EXPECT_EQ(chunk.cmd, "S\xE4T");
    EXPECT_EQ(chunk.param, bytes);
}

TEST(ChunkPjlCmd, RejectsJsonWithoutItsTwoStrings)
{
    for (const char* text : {R"({})", R"({"cmd":"A"})", R"({"param":"A"})", R"({"cmd":1,"param":"A"})",
                             R"({"cmd":"A","param":null})", R"([])", R"("A")"})
        EXPECT_THROW(fromJson(text), Torv::VariantInvalidOperationException) << text;
}

TEST(ChunkPjlCmd, SetsParameters)
{
    const struct {
        const char* param;
        const char* name;
        const char* value;
        const char* result;
    } rows[] = {
        {"NAME=\"a b\" DISPLAY=\"c\"", "display", "\"x\"", "NAME=\"a b\" DISPLAY=\"x\""},
        {"NAME=\"a b\" DISPLAY=\"c\"", "Name", "n", "NAME=n DISPLAY=\"c\""},
        {"", "NAME", "\"x\"", " NAME=\"x\""},
        {"A=1", "B", "2", "A=1 B=2"},
        {"A=1", "B", "", "A=1 B="},
        {"A=1 a=2", "a", "3", "A=3 a=2"},
        {"  A \t=  1\t B=2  ", "a", "9", "  A \t=  9\t B=2  "},
        {"  A \t=  1\t B=2  ", "b", "9", "  A \t=  1\t B=9  "},
        // Names run up to the last equal sign of a word.
        {"A=B=C", "A", "x", "A=B=C A=x"},
        {"A=B=C", "A=B", "x", "A=B=x"},
        // A name cannot lie in a quoted value, but behind a quotation mark that is never closed.
        {"NAME=\"a B=1 c\" B=2", "B", "3", "NAME=\"a B=1 c\" B=3"},
        {"NAME=\"a B=1", "B", "3", "NAME=\"a B=3"},
        {"NAME=\"a\"B=1", "NAME", "x", "NAME=\"a\"B=1 NAME=x"},
        {"NAME=\"a\"B=1", "NAME=\"a\"B", "x", "NAME=\"a\"B=x"},
        {"NAME=\"\"", "NAME", "x", "NAME=x"},
        {"NAMES=1 NAM=2", "NAME", "x", "NAMES=1 NAM=2 NAME=x"},
        {"A=", "A", "1", "A= A=1"},
        {"A==", "A", "1", "A=1"},
        {"= 5", "", "1", "= 5 =1"},
        {"word A=1", "A", "2", "word A=2"},
        {"A=1 B", "B", "2", "A=1 B B=2"},
        {"A= B=1", "A", "2", "A= 2"},
        {"A= B=1", "B", "2", "A= B=1 B=2"},
        {"\xE4=1", "\xE4", "2", "\xE4=2"},
    };
    for (const auto& row : rows) {
        ChunkPjlCmd chunk("JOB", row.param);

        chunk.setParam(row.name, row.value);

        EXPECT_EQ(chunk.param, row.result) << row.param << " | " << row.name;
    }
}

TEST(ChunkPjlCmd, WritesTwoBlanksForTheFirstParameterThatIsSet)
{
    ChunkPjlCmd chunk("JOB", "");

    chunk.setParam("NAME", "\"x\"");

    EXPECT_EQ(saved(chunk), "@PJL JOB  NAME=\"x\"\r\n");
}

TEST(ChunkPjlCmd, SetsParametersToPartsOfItself)
{
    ChunkPjlCmd chunk("A", "A=1");

    chunk.setParam(chunk.cmd, chunk.param);
    EXPECT_EQ(chunk.param, "A=A=1");

    chunk.setParam(chunk.param, chunk.param);
    EXPECT_EQ(chunk.param, "A=A=1 A=A=1=A=A=1");
}

TEST(ChunkPjlCmd, SetsParametersOfAMegabyteOfText)
{
    const std::string manyPairs = [] {
        std::string text;
        for (int i = 0; i < 100000; ++i)
            text += "A=1 B=\"2\" ";
        return text;
    }();
    const struct {
        std::string param;
        std::size_t grown;
    } rows[] = {
        {manyPairs, 5},
        {std::string(1000000, ' '), 5},
        {std::string(1000000, 'x'), 5},
        {std::string(1000000, '='), 5},
        {std::string(1000000, '"'), 5},
        {"A=" + std::string(1000000, '"'), 5},
        {"A=\"" + manyPairs.substr(0, 4) + std::string(1000000, ' '), 5},
        {manyPairs + "NAME=1", 0},
    };
    for (const auto& row : rows) {
        ChunkPjlCmd chunk("JOB", row.param);

        chunk.setParam("NAME", "2");

        EXPECT_EQ(chunk.param.size(), row.param.size() + row.grown + (row.grown == 0 ? 0 : 2));
        EXPECT_EQ(chunk.param.substr(chunk.param.size() - 6), "NAME=2");
    }
}

TEST(ChunkPjlCmd, SplitsItsParameter)
{
    const struct {
        const char* param;
        bool result;
        const char* name;
        const char* value;
    } rows[] = {
        {"COPIES=2", true, "COPIES", "2"},
        {"A B=C", true, "A B", "C"},
        {" \tA\v =\f C\r\n", true, "A", "C"},
        {"A B C", true, "A", "B C"},
        {"A=B=C", true, "A", "B=C"},
        {"=C", true, "", "C"},
        {"A=", true, "A", ""},
        {"=", true, "", ""},
        {" ", true, "", ""},
        {"PJL", false, "", ""},
        {"A\tB", false, "", ""},
        {"", false, "", ""},
    };
    for (const auto& row : rows) {
        std::string name = "before";
        std::string value = "before";

        EXPECT_EQ(ChunkPjlCmd("SET", row.param).parseParamEqValue(name, value), row.result) << row.param;
        EXPECT_EQ(name, row.name) << row.param;
        EXPECT_EQ(value, row.value) << row.param;
    }
}

TEST(ChunkPjlCmd, SplitsIntoItself)
{
    ChunkPjlCmd chunk("SET", "COPIES = 2");

    EXPECT_TRUE(chunk.parseParamEqValue(chunk.cmd, chunk.param));

    EXPECT_EQ(chunk.cmd, "COPIES");
    EXPECT_EQ(chunk.param, "2");
}

TEST(ChunkPjlCmd, GivesTheFirstGroupOfAPattern)
{
    const struct {
        const char* pattern;
        bool result;
        const char* out;
    } rows[] = {
        {"NAME=\"([^\"]*)\"", true, "a b"},
        {"NAME", true, ""},
        {"(X)?NAME", true, ""},
        {"name=(.)", false, "before"},
        {"^DISPLAY", false, "before"},
        {"(?=DIS)([A-Z]+)", true, "DISPLAY"},
        {"(\").*\\1", true, "\""},
    };
    for (const auto& row : rows) {
        std::string out = "before";

        EXPECT_EQ(ChunkPjlCmd("JOB", "NAME=\"a b\" DISPLAY=\"c\"").parseParamRegEx(row.pattern, out),
                  row.result)
            << row.pattern;
        EXPECT_EQ(out, row.out) << row.pattern;
    }
}

TEST(ChunkPjlCmd, TakesAPatternAsTheStandardGrammarDoes)
{
    const struct {
        const char* pattern;
        const char* param;
        bool result;
        const char* out;
    } rows[] = {
        // Brackets may be empty: nothing fits into them, and anything if they are negated.
        {"[]A]", "]A]", false, "before"},
        {"[]A]", "A", false, "before"},
        {"([^])A]", "]A]", true, "]"},
        {"([^]A])", "xA]", true, "xA]"},
        {"[^]A]", "x", false, "before"},
        // No digits belong to a NUL.
        {"A(\\01*)", "A", false, "before"},
        {"A(\\01?)", "A\x01", false, "before"},
        // Alternatives may begin with the same byte, whatever it is.
        {"(\xE4|\xE4x)=", "\xE4x=1", true, "\xE4x"},
        {"(\\xE4|\\xE4x)=", "\xE4x=1", true, "\xE4x"},
        {"([\xE4]|[\xE4]x)=", "\xE4=1", true, "\xE4"},
    };
    for (const auto& row : rows) {
        std::string out = "before";

        EXPECT_EQ(ChunkPjlCmd("JOB", row.param).parseParamRegEx(row.pattern, out), row.result)
            << row.pattern << " in " << row.param;
        EXPECT_EQ(out, row.out) << row.pattern << " in " << row.param;
    }
}

TEST(ChunkPjlCmd, PassesOnThatAPatternDoesNotCompile)
{
    std::string out;

    EXPECT_THROW(ChunkPjlCmd("JOB", "A=1").parseParamRegEx("(", out), std::regex_error);
    EXPECT_THROW(ChunkPjlCmd("JOB", std::string(5000, 'a')).parseParamRegEx("(", out), std::regex_error);
}

TEST(ChunkPjlCmd, MatchesPatternsInUpToFourKilobytes)
{
    std::string out;

    EXPECT_TRUE(ChunkPjlCmd("JOB", std::string(4096, 'a')).parseParamRegEx("(a*)", out));
    EXPECT_EQ(out.size(), 4096U);
    EXPECT_FALSE(ChunkPjlCmd("JOB", std::string(4097, 'a')).parseParamRegEx("(a)", out));
}

TEST(ChunkPjlCmd, MatchesNestedPatternsOnASmallStack)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    std::string out;
    pthread_t thread;
    ASSERT_EQ(pthread_create(
                  &thread, &attributes,
                  [](void* result) -> void* {
                      ChunkPjlCmd("JOB", std::string(4096, 'a'))
                          .parseParamRegEx("((?:(?:(?:a|b)*)*)*)$", *static_cast<std::string*>(result));
                      return nullptr;
                  },
                  &out),
              0);

    ASSERT_EQ(pthread_join(thread, nullptr), 0);

    pthread_attr_destroy(&attributes);
    EXPECT_EQ(out.size(), 4096U);
}
