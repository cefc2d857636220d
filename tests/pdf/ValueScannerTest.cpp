#include "pdf/ValueScanner.h"

#include <array>
#include <gtest/gtest.h>
#include <random>

#include "pdf/Lexer.h"
#include "tests/pdf/PdfSupport.h"

namespace Pdf::Parser
{
namespace
{

struct Scanned {
    bool isTaken;
    std::string text;
    std::ptrdiff_t end;
};

Scanned scan(std::string_view text)
{
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(text.data());
    ValueScanner scanner;
    ValueTape tape;
    const std::uint8_t* const behind = scanner.scan(begin, begin + text.size(), tape);
    if (behind == nullptr)
        return {false, {}, 0};
    return {true, tape.build().serialize(), behind - begin};
}

TEST(ValueScanner, ReadsWhatIsUsual)
{
    for (const auto& [text, value, end] : {
             std::array{"612 /", " 612", "4"},
             std::array{"-1.50/", " -1.5", "5"},
             std::array{"3 0 R/", " 3 0 R", "5"},
             std::array{"/Name>", "/Name", "5"},
             std::array{"(a(b)\\))/", "(a(b)\\))", "8"},
             std::array{"<48 65>/", "<48 65>", "7"},
             std::array{"true/", " true", "4"},
             std::array{"[0 0 595.28 841.89] ", "[ 0 0 595.28 841.89]", "19"},
             std::array{"[4294967298 1] ", "[ 2 1]", "14"},
             std::array{"[1 4294967298] ", "[ 1 4294967298]", "14"},
             std::array{"4294967298 4294967295 R ", " 2 4294967295 R", "23"},
             std::array{"<</B[1 0 R 2 0 R]/A<<>>/C null>>\n", "<</A<<>>/B[ 1 0 R 2 0 R]/C null>>", "32"},
         }) {
        const Scanned scanned = scan(text);

        EXPECT_TRUE(scanned.isTaken) << text;
        EXPECT_EQ(scanned.text, value);
        EXPECT_EQ(std::to_string(scanned.end), end) << text;
    }
}

TEST(ValueScanner, GivesUpWhatIsUnusual)
{
    for (const char* text : {"",
                             "1",
                             "[1]",
                             "/Name",
                             "(a",
                             "<4",
                             "<>x> ",
                             "x ",
                             "/A#41 ",
                             "1.2.3 ",
                             "+ ",
                             ". ",
                             "1234567890123456 ",
                             "[1 2 3 R] ",
                             "[1 %c\n2] ",
                             "[1> ",
                             "<</A>> ",
                             "<</A 1> ",
                             "<<1>> ",
                             "<</A 1 2/B 3>> ",
                             "trux ",
                             "[R] ",
                             "1 2.0000001 R "})
        EXPECT_FALSE(scan(text).isTaken) << text;
}

// What comes of a value, with two bytes in front of it so that the lexer has it in its window.
std::string read(std::string_view text, std::size_t windowSize)
{
    MemorySource source("  " + std::string(text), windowSize);
    Lexer lexer(source);
    lexer.next();
    lexer.next();
    std::string outcome;
    ValueTape tape;
    try {
        lexer.next();
        lexer.readValue(tape);
        outcome = Value(Array({tape.build(), Value()})).serialize();
    } catch (const Torv::GenericException& error) {
        outcome = error.what();
    } catch (const std::bad_variant_access&) {
        outcome = "bad variant access";
    }
    lexer.sync();
    return outcome + " | " + std::to_string(lexer.current) + ' ' + std::to_string(lexer.position()) + ' ' +
           std::to_string(source.position);
}

TEST(ValueScanner, ReadsAsTheLexerDoesByteByByte)
{
    constexpr std::array pieces{"[",    "]",     "<<",   ">>",         "/A",  "/B#41", "/",     " ",
                                "\n",   "1",     "0",    "2.5",        "-3",  "+",     ".",     "R",
                                "(a)",  "(\\",   ")",    "<48>",       "<>",  "true",  "nul",   "%c",
                                "null", "false", " 0 R", "4294967297", "12 ", "/Key ", "<</X ", "x"};
    std::mt19937_64 random(1);
    for (int round = 0; round < 200000; ++round) {
        std::string text;
        for (std::uint64_t count = random() % 12; count > 0; --count)
            text += pieces[random() % pieces.size()];

        ASSERT_EQ(read(text, 1000), read(text, 0)) << text;
    }
}

} // namespace
} // namespace Pdf::Parser
