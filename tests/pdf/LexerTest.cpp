// Syntax, read through the functions of Parser, byte by byte and through windows of several sizes.

#include "pdf/Lexer.h"

#include <array>
#include <gtest/gtest.h>

#include "tests/pdf/PdfSupport.h"

namespace Pdf
{
namespace
{

using namespace std::string_literals;

constexpr std::array<std::size_t, 5> windowSizes{0, 1, 2, 7, 1000000};

std::string shown(const Value& value)
{
    if (value.index() == 0)
        return "None";
    if (const auto* reference = std::get_if<FalseReference>(&value))
        return "False " + std::to_string(reference->number()) + Value(reference->generation()).serialize();
    try {
        return value.serialize();
    } catch (const JobParser::JobParserException& error) {
        return error.what();
    }
}

/// What comes of reading a value: the value or what was thrown; then the current byte and where it stands.
std::string readValue(std::string_view text, std::size_t windowSize)
{
    OpenText open(text, windowSize);
    std::string outcome;
    try {
        outcome = shown(open.parser.parseValue<Value>());
    } catch (const Parser::PdfParserException& error) {
        outcome = "threw: "s + error.what();
    } catch (const std::bad_variant_access&) {
        outcome = "threw: bad variant access";
    }
    EXPECT_EQ(open.source.position, open.parser.position() + 1);
    const std::uint8_t current = open.parser.current();
    return outcome + " | " + (current == 0 ? "NUL" : std::string(1, static_cast<char>(current))) + ' ' +
           std::to_string(open.parser.position());
}

struct ValueRow {
    const char* name;
    std::string text;
    const char* outcome;
};

class ReadingAValue : public testing::TestWithParam<ValueRow>
{
};

TEST_P(ReadingAValue, GivesTheValueAndStandsBehindIt)
{
    for (const std::size_t windowSize : windowSizes)
        EXPECT_EQ(readValue(GetParam().text, windowSize), GetParam().outcome) << "window of " << windowSize;
}

const char* nameOf(const testing::TestParamInfo<ValueRow>& row)
{
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, ReadingAValue,
    testing::Values(ValueRow{"Integer", "612 ", " 612 |   3"}, ValueRow{"AtTheEnd", "612", " 612 | NUL 2"},
                    ValueRow{"Real", "12.5/", " 12.5 | / 4"}, ValueRow{"Plus", "+5/", " 5 | / 2"},
                    ValueRow{"Minus", "-5/", " -5 | / 2"}, ValueRow{"MinusAlone", "-/", " -0 | / 1"},
                    ValueRow{"PlusAlone", "+/", " 0 | / 1"}, ValueRow{"PointAlone", "./", " 0 | / 1"},
                    ValueRow{"MinusAtTheEnd", "-", "None | NUL 0"},
                    ValueRow{"PointAtTheEnd", ".", "None | NUL 0"},
                    ValueRow{"SeveralPoints", "1.2.3/", " 12.3 | / 5"},
                    ValueRow{"TwoSigns", "--1", " -0 | - 1"}, ValueRow{"Exponent", "1e5", " 1 | e 1"},
                    ValueRow{"LeadingPoint", ".25/", " 0.25 | / 3"},
                    ValueRow{"TrailingPoint", "4./", " 4 | / 2"}, ValueRow{"None", "x", "None | x 0"},
                    ValueRow{"ClosingBracket", "]", "None | ] 0"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    References, ReadingAValue,
    testing::Values(
        ValueRow{"Reference", "3 0 R/", " 3 0 R | / 5"}, ValueRow{"Plus", "+3 0 R/", " 3 0 R | / 6"},
        ValueRow{"PlusWithoutDigits", "+ 3 0 R", "False 0 3 | 0 4"},
        ValueRow{"AtTheEnd", "3 0 R", " 3 0 R | NUL 4"}, ValueRow{"WithoutBlanks", "3 0R/", " 3 0 R | / 4"},
        ValueRow{"OverComments", "3%x\r0%y\nR/", " 3 0 R | / 9"},
        ValueRow{"TwoNumbers", "1 2 /", "False 1 2 | / 4"},
        ValueRow{"TwoNumbersAtTheEnd", "1 2", "False 1 2 | NUL 2"},
        ValueRow{"FractionalGeneration", "1 2.5 R", "False 1 2.5 | R 6"},
        ValueRow{"NearlyWholeGeneration", "1 2.0000001 R/", " 1 2 R | / 13"},
        ValueRow{"GreatGeneration", "1 4294967296 R", "False 1 4294967296 | R 13"},
        ValueRow{"GreatNumber", "4294967297 0 R/", " 1 0 R | / 14"},
        ValueRow{"NoneBehindAMinus", "-3 0 R", " -3 |   2"},
        ValueRow{"NoneBehindAPoint", "1.5 0 R", " 1.5 |   3"}, ValueRow{"NumberAndBlank", "7 ", " 7 |   1"},
        ValueRow{"NumberAndLetter", "7 R", " 7 | R 2"}, ValueRow{"SignedGeneration", "1 -2 R", " 1 | - 2"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(Strings, ReadingAValue,
                         testing::Values(ValueRow{"Nested", "(a\\)b(c)d)/", "(a\\)b(c)d) | / 10"},
                                         ValueRow{"Empty", "()/", "() | / 2"},
                                         ValueRow{"AtTheEnd", "(a)", "(a) | NUL 2"},
                                         ValueRow{"Cut", "(a(b)", "None | NUL 4"},
                                         ValueRow{"CutInAnEscape", "(a\\", "None | NUL 2"},
                                         ValueRow{"Escapes", "(\\n\\134\\\\)/", "(\\n\\134\\\\) | / 10"},
                                         ValueRow{"Hexadecimal", "<48 65>/", "<48 65> | / 7"},
                                         ValueRow{"HexadecimalAtTheEnd", "<48>", "<48> | NUL 3"},
                                         ValueRow{"EmptyHexadecimalRunsOn", "<>(x)>/", "<>(x)> | / 6"},
                                         ValueRow{"HexadecimalCut", "<48", "None | NUL 2"},
                                         ValueRow{"BracketAtTheEnd", "<", "None | NUL 0"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Names, ReadingAValue,
                         testing::Values(ValueRow{"Plain", "/Type ", "/Type |   5"},
                                         ValueRow{"Empty", "/ ", "/ |   1"},
                                         ValueRow{"Escape", "/A#42C ", "/ABC |   6"},
                                         ValueRow{"EscapeOfSmallDigits", "/#7a#4F/", "/zO | / 7"},
                                         ValueRow{"EscapeTakesADelimiter", "/A#4/ ", "/A@ |   5"},
                                         ValueRow{"EscapeOfNoDigits", "/A#xy/", "/A#00 | / 5"},
                                         ValueRow{"EscapeOfADelimiter", "/A#20B/", "/A#20B | / 6"},
                                         ValueRow{"AtTheEnd", "/Type", "None | NUL 4"},
                                         ValueRow{"CutInAnEscape", "/A#4", "None | NUL 3"},
                                         ValueRow{"BytesAboveAscii", "/\xC3\xBC/", "/\xC3\xBC | / 3"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Keywords, ReadingAValue,
                         testing::Values(ValueRow{"True", "true/", " true | / 4"},
                                         ValueRow{"False", "false/", " false | / 5"},
                                         ValueRow{"Null", "null/", " null | / 4"},
                                         ValueRow{"TrueAtTheEnd", "true", "None | NUL 3"},
                                         ValueRow{"CutShort", "nul", "None | NUL 2"},
                                         ValueRow{"NotTrue", "trap", "threw: true expected at 0x2! | a 2"},
                                         ValueRow{"NotFalse", "fals ", "threw: false expected at 0x4! |   4"},
                                         ValueRow{"NotNull", "nil", "threw: null expected at 0x1! | i 1"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    Arrays, ReadingAValue,
    testing::Values(ValueRow{"FourNumbers", "[0 0 612 792]/", "[ 0 0 612 792] | / 13"},
                    ValueRow{"FiveNumbers", "[1 2 3 4 5]/", "[ 1 2 3 4 5] | / 11"},
                    ValueRow{"References", "[1 0 R 2 0 R]/", "[ 1 0 R 2 0 R] | / 13"},
                    ValueRow{"ReferenceBehindANumber", "[1 2 3 R]/", "[ 1 2 3 R] | / 9"},
                    ValueRow{"RealsBetween", "[1 2.5 3]/", "[ 1 2.5 3] | / 9"},
                    ValueRow{"RealThatBecomesAReference", "[1.5 0 R]/", "[ 1 0 R] | / 9"},
                    ValueRow{"Nested", "[[1][[]2]/A]/", "[[ 1][[] 2]/A] | / 12"},
                    ValueRow{"Mixed", "[/A(b)<0>true null<</C 1>>]/", "[/A(b)<0> true null<</C 1>>] | / 27"},
                    ValueRow{"WhiteSpace", "[ %x\n1\0\t]/"s, "[ 1] | / 9"},
                    ValueRow{"AtTheEnd", "[1]", "[ 1] | NUL 2"},
                    ValueRow{"OpeningAtTheEnd", "[", "[] | NUL 0"},
                    ValueRow{"CutBehindAValue", "[1 ", "threw: Array closing ']' expected at 0x2! |   2"},
                    ValueRow{"CutInAValue", "[1 (a", "threw: Array closing ']' expected at 0x4! | NUL 4"},
                    ValueRow{"InnerOneCut", "[1[", "threw: Array closing ']' expected at 0x2! | NUL 2"},
                    ValueRow{"NotClosed", "[1>", "threw: Array closing ']' expected at 0x2! | > 2"},
                    ValueRow{"LoneR", "[R]", "threw: bad variant access | R 1"},
                    ValueRow{"RBehindOneNumber", "[1 R]", "threw: bad variant access | R 3"},
                    ValueRow{"RBehindNames", "[/A /B R]", "threw: bad variant access | R 7"},
                    ValueRow{"RBehindAnArrayOfNumbers", "[[1.0 2.0]R]", "threw: bad variant access | R 10"},
                    ValueRow{"RBehindNumberAndArray", "[1.0[2.0]R]", "threw: bad variant access | R 9"},
                    ValueRow{"RAtTheEnd", "[1.5 0 R", "[ 1 0 R] | NUL 7"},
                    ValueRow{"GreatFirstNumber", "[4294967298 1]/", "[ 2 1] | / 14"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Dictionaries, ReadingAValue,
    testing::Values(
        ValueRow{"Entries", "<</B 1/A<</C 2 0 R>>>>/", "<</A<</C 2 0 R>>/B 1>> | / 22"},
        ValueRow{"Empty", "<<>>/", "<<>> | / 4"},
        ValueRow{"FirstOfEqualKeys", "<</A 1/A 2>>/", "<</A 1>> | / 12"},
        ValueRow{"FirstOfEqualKeysThoughNone", "<</A >>/", "<<>> | / 7"},
        ValueRow{"NameForAValue", "<</A /B>>/", "<</A/B>> | / 9"},
        ValueRow{"TwoNumbersForAValue", "<</Key 1 2 /Next 3>>/",
                 "FalseRef not allowed in real objects | / 20"},
        ValueRow{"ValueMissing", "<</A >>/", "<<>> | / 7"}, ValueRow{"EmptyKey", "<</ 1>>/", "<</ 1>> | / 7"},
        ValueRow{"EscapedKey", "<</#41 1>>/", "<</A 1>> | / 10"},
        ValueRow{"AtTheEnd", "<</A 1>>", "<</A 1>> | NUL 7"},
        ValueRow{"OpeningAtTheEnd", "<<", "<<>> | NUL 1"},
        ValueRow{"CutInAKey", "<</A 1/B", "<</A 1>> | NUL 7"},
        ValueRow{"CutInACommentBehindASolidus", "<</A 1%/", "<</A 1>> | NUL 7"},
        ValueRow{"CutInTheClosing", "<</A 1>", "<</A 1>> | NUL 6"},
        ValueRow{"CutInAValue", "<</A (b", "threw: Dictionary closing '>>' expected at 0x6! | NUL 6"},
        ValueRow{"CutBehindAValue", "<</A 1 ", "threw: Dictionary closing '>>' expected at 0x6! |   6"},
        ValueRow{"NotClosed", "<</A 1]", "threw: Dictionary closing '>>' expected at 0x6! | ] 6"},
        ValueRow{"HalfClosed", "<</A 1>]", "threw: Dictionary closing '>>' expected at 0x7! | ] 7"},
        ValueRow{"NoKey", "<<1 2>>", "threw: Dictionary closing '>>' expected at 0x2! | 1 2"}),
    nameOf);

TEST(Lexer, KeepsTheFirstOfManyEqualKeys)
{
    std::string text = "<<";
    for (int round = 0; round < 3; ++round) {
        for (int key = 99; key >= 0; --key)
            text += "/K" + std::to_string(key) + " " + std::to_string(round);
    }
    OpenText open(text + ">>");

    const Value value = open.parser.parseValue<Value>();

    EXPECT_EQ(std::get<Dictionary>(value).entries().size(), 100U);
    for (const auto& entry : std::get<Dictionary>(value).entries())
        EXPECT_EQ(std::get<double>(entry.value), 0);
}

TEST(Lexer, ReadsNestingOfAMillionLevels)
{
    constexpr std::size_t depth = 1000000;
    const std::string arrays = std::string(depth, '[') + std::string(depth, ']');
    std::string dictionaries;
    for (std::size_t level = 0; level < depth; ++level)
        dictionaries += "<</A";
    dictionaries += " 1";
    for (std::size_t level = 0; level < depth; ++level)
        dictionaries += ">>";

    EXPECT_EQ(OpenText(arrays).parser.parseValue<Value>().serialize(), arrays);
    EXPECT_EQ(OpenText(dictionaries).parser.parseValue<Value>().serialize(), dictionaries);
    EXPECT_THROW(OpenText(arrays.substr(0, depth)).parser.parseValue<Value>(), Parser::PdfParserException);
}

TEST(Lexer, TakesSevenBytesForWhiteSpace)
{
    const std::string white = "\0\x09\x0A\x0C\x0D\x20%"s;

    EXPECT_EQ(white.size(), 7U);
    for (unsigned byte = 0; byte < 256; ++byte)
        EXPECT_EQ(Parser::isWsCharacter[byte], white.find(static_cast<char>(byte)) != std::string::npos)
            << byte;
}

struct WhiteRow {
    std::string text;
    bool isMore;
    std::size_t position;
};

TEST(Lexer, SkipsWhiteSpaceAndComments)
{
    for (const std::size_t windowSize : windowSizes) {
        for (const auto& [text, isMore, position] : {
                 WhiteRow{"x", true, 0},
                 WhiteRow{" \t\n\f\r\0x"s, true, 6},
                 WhiteRow{"% comment\rnext", true, 10},
                 WhiteRow{"%a\nx", true, 3},
                 WhiteRow{"%a\r\nx", true, 4},
                 WhiteRow{"%a\r%b\r x", true, 7},
                 WhiteRow{" ", false, 0},
                 WhiteRow{"   ", false, 2},
                 WhiteRow{"%abc", false, 3},
                 WhiteRow{"%", false, 0},
                 WhiteRow{"%\n", false, 1},
                 WhiteRow{"%\r%", false, 2},
                 WhiteRow{"%%EOF\n", false, 5},
             }) {
            OpenText open(text, windowSize);

            EXPECT_EQ(open.parser.ws(), isMore) << text;
            EXPECT_EQ(open.parser.position(), position) << text;
            EXPECT_EQ(open.parser.current(), static_cast<std::uint8_t>(text[position])) << text;
            EXPECT_EQ(open.source.position, position + 1) << text;
        }
    }
}

TEST(Lexer, CountsFromBehindTheFirstByte)
{
    MemorySource source("ab");
    Parser::Parser parser(source);

    EXPECT_EQ(parser.position(), 0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(parser.current(), 0);
    EXPECT_EQ(parser.next(), 'a');
    EXPECT_EQ(parser.position(), 0U);
    EXPECT_EQ(parser.next(), 'b');
    EXPECT_THROW(parser.next(), Parser::ISource::EofException);
    EXPECT_EQ(parser.current(), 'b');
    EXPECT_EQ(parser.position(), 1U);
}

TEST(Lexer, SkipsToTheByteSoManyPlacesOn)
{
    for (const std::size_t windowSize : windowSizes) {
        OpenText open("0123456789", windowSize);

        open.parser.skip(0);
        EXPECT_EQ(open.parser.current(), '0');
        open.parser.skip(1);
        EXPECT_EQ(open.parser.current(), '1');
        open.parser.skip(7);
        EXPECT_EQ(open.parser.current(), '8');
        EXPECT_EQ(open.parser.position(), 8U);
        EXPECT_EQ(open.source.position, 9U);
        EXPECT_THROW(open.parser.skip(3), Parser::ISource::EofException);
        EXPECT_THROW(open.parser.skip(0xFFFFFFFFFFFFFFFF), Parser::ISource::EofException);
    }
}

TEST(Lexer, MatchesBytesAndTakesThoseThatAreEqual)
{
    for (const std::size_t windowSize : windowSizes) {
        OpenText whole("obj ", windowSize);
        OpenText half("obx ", windowSize);

        EXPECT_TRUE(whole.parser.isMatch(""));
        EXPECT_EQ(whole.parser.position(), 0U);
        EXPECT_TRUE(whole.parser.isMatch("obj"));
        EXPECT_EQ(whole.parser.current(), ' ');
        EXPECT_FALSE(half.parser.isMatch("obj"));
        EXPECT_EQ(half.parser.current(), 'x');
        EXPECT_EQ(half.source.position, 3U);
    }
}

TEST(Lexer, TellsWhatItExpectedAndWhere)
{
    OpenText open(std::string(31, ' ') + "x");
    open.parser.ws();

    EXPECT_STREQ(open.parser.expected("Integer").what(), "Integer expected at 0x1f!");
    try {
        open.parser.match("xref");
        FAIL();
    } catch (const Parser::ISource::EofException& error) {
        EXPECT_STREQ(error.what(), "");
    }
}

TEST(Lexer, RaisesWhatItExpected)
{
    OpenText open("obx");

    try {
        open.parser.match("obj");
        FAIL();
    } catch (const Parser::PdfParserException& error) {
        EXPECT_STREQ(error.what(), "obj expected at 0x2!");
    }
}

TEST(Lexer, FindsBytesWithoutEverGoingBack)
{
    for (const std::size_t windowSize : windowSizes) {
        OpenText found("xxabc", windowSize);
        found.parser._find_noBactraking("ab");
        EXPECT_EQ(found.parser.current(), 'c');

        OpenText unfound("aab", windowSize);
        EXPECT_THROW(unfound.parser._find_noBactraking("ab"), Parser::ISource::EofException);

        OpenText nothing("ab", windowSize);
        nothing.parser._find_noBactraking("");
        EXPECT_EQ(nothing.parser.current(), 'a');
    }
}

TEST(Lexer, ReadsIntegersThatWrap)
{
    EXPECT_EQ(OpenText("0 ").parser.parseValue<unsigned int>(), 0U);
    EXPECT_EQ(OpenText("4294967295 ").parser.parseValue<unsigned int>(), 4294967295U);
    EXPECT_EQ(OpenText("4294967297 ").parser.parseValue<unsigned int>(), 1U);
    EXPECT_THROW(OpenText("12").parser.parseValue<unsigned int>(), Parser::ISource::EofException);
    try {
        OpenText("-1 ").parser.parseValue<unsigned int>();
        FAIL();
    } catch (const Parser::PdfParserException& error) {
        EXPECT_STREQ(error.what(), "Integer expected at 0x0!");
    }
}

TEST(Lexer, ReadsAReferenceUpToItsR)
{
    OpenText open("12%c\n0 R");

    EXPECT_EQ(open.parser.parseValue<Reference>(), (Reference{12, 0}));
    EXPECT_EQ(open.parser.current(), ' ');
}

TEST(Lexer, ReadsANameFromBehindItsSolidus)
{
    OpenText open("Type/");

    EXPECT_EQ(open.parser.parseValue<Name>(), "Type");
    EXPECT_EQ(open.parser.current(), '/');
    EXPECT_THROW(OpenText("Type").parser.parseValue<Name>(), Parser::ISource::EofException);
}

TEST(Lexer, ReadsNumbersWithoutLookingForReferences)
{
    OpenText open("3 0 R");

    EXPECT_EQ(open.parser.matchNumber(false).serialize(), " 3");
    EXPECT_EQ(open.parser.current(), ' ');
}

} // namespace
} // namespace Pdf
