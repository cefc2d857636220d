#include "JobParser/languages/Pcl5Parser.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/JobParser/languages/Pcl5Reading.h"

namespace JobParser::Pcl5
{
namespace
{

using namespace std::string_view_literals;

JobInfo facts(std::string_view bytes)
{
    Reading reading(bytes);
    reading.parse();
    return reading.info;
}

/// What a body fails with and where the file stands then.
std::string failure(std::string_view bytes)
{
    Reading reading(bytes);
    try {
        reading.parse();
    } catch (const JobParserException& error) {
        return std::to_string(reading.job.file.m_offset) + " " + error.what();
    }
    return "none";
}

TEST(Pcl5Parser, HasNoFirstPageBeforeABody)
{
    EXPECT_EQ(Reading("abc"sv).parser.firstPageChunk, -1);
    EXPECT_EQ(parsed(""), " | 0");
}

struct Body {
    std::string_view bytes;
    const char* chunks;
};

TEST(Pcl5Parser, CutsABodyIntoChunks)
{
    constexpr std::array<Body, 22> rows{{
        {"hello", "Raw 0+5 | 0"},
        {"\x1B"
         "E",
         "E | 1"},
        {"\f", "FF | 0"},
        {"\f\f", "FF, FF | 0"},
        {"ab\fcd\f", "Raw 0+2, FF, Raw 3+2, FF | 0"},
        {"\x1B"
         "Eab\f\x1B"
         "E",
         "E, Raw 2+2, FF, E | 1"},
        {"ab\x1B"
         "Ecd\x1B&l1Xef",
         "Raw 0+2, E, Raw 4+2, &l1X, Raw 11+2 | 4"},
        {"\x1B&l26A", "&l26A | 1"},
        {"\x1B&l26a1O", "&l26A, &l1O | 1"},
        {"\x1B&l1o26A", "&l1O, &l26A | 2"},
        {"\x1B&l1o26a1S", "&l1O, &l26A, &l1S | 3"},
        {"\x1B&l1O", "Raw 0+5 | 0"},
        {"\x1B"
         "9\x1B=\x1BY",
         "Raw 0+6 | 0"},
        {"\x1B(s3Wabc", "Raw 0+8 | 0"},
        {"\x1B*b3Wa\f\x1B\x1B"
         "E",
         "Raw 0+8, E | 2"},
        {"\x1B*b0W\f", "Raw 0+5, FF | 0"},
        {"\x1B*bW\f", "Raw 0+4, FF | 0"},
        {"\x1B&l1a\x1B"
         "Eab",
         "&l1A, E, Raw 7+2 | 2"},
        {"\x1B&l\x1B"
         "E",
         "Raw 0+3, E | 2"},
        {"ab\x1B&l1a3o\x1B&l1H", "Raw 0+2, &l1A, &l3O, Raw 9+5 | 2"},
        {"!R!x\f", "Raw 0+4, FF | 0"},
        {"ab!R! COPY 2;EXIT;cd", "Raw 0+2, Prescribe 2+16, Raw 18+2 | 0"},
    }};

    for (const Body& row : rows) {
        EXPECT_EQ(parsed(row.bytes), row.chunks) << testing::PrintToString(row.bytes);
    }
}

TEST(Pcl5Parser, StopsAtAUelThatStaysUnread)
{
    Reading reading("ab\x1B%-12345X@PJL"sv);

    reading.parse();

    EXPECT_EQ(reading.chunks(), "Raw 0+2");
    EXPECT_EQ(reading.job.file.m_offset, 2);
}

TEST(Pcl5Parser, BeginsAtThePositionOfTheFile)
{
    Reading reading("\f\fab\fc"sv);
    reading.job.file.setPos(3);

    reading.parse();

    EXPECT_EQ(reading.chunks(), "Raw 3+1, FF, Raw 5+1");
}

TEST(Pcl5Parser, GivesTheTokensOfABody)
{
    Reading reading("a\f\x1B"
                    "E\x1B&l1a2S\x1B&l\x1B"
                    "9!R!EXIT;\x1B%-12345X"sv);

    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 0);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 5);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 4);
    EXPECT_TRUE(reading.parser.isKept);
    EXPECT_EQ(reading.job.file.m_offset, 4);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 4);
    EXPECT_TRUE(reading.parser.isKept);
    EXPECT_EQ(reading.job.file.m_offset, 11);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 4);
    EXPECT_FALSE(reading.parser.isKept);
    EXPECT_EQ(reading.job.file.m_offset, 14);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 4);
    EXPECT_FALSE(reading.parser.isKept);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 3);
    EXPECT_EQ(reading.job.file.m_offset, 16);
    reading.job.file.setPos(24);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 1);
    EXPECT_EQ(reading.job.file.m_offset, 24);
    reading.job.file.setPos(33);
    EXPECT_EQ(static_cast<int>(reading.parser.getToken()), 2);
}

struct Failure {
    std::string bytes;
    const char* error;
};

TEST(Pcl5Parser, FailsForMalformedSequences)
{
    const std::array<Failure, 24> rows{{
        {"\x1B", "1 GetPclToken(): Unexpected EOF"},
        {"ab\x1B", "3 GetPclToken(): Unexpected EOF"},
        {"\x1B&", "2 GetPclToken(): Unexpected EOF"},
        {"\x1B&l", "3 GetPclToken(): Unexpected EOF"},
        {"\x1B&l2", "4 GetPclToken(): Unexpected EOF"},
        {"\x1B&l2a", "5 GetPclToken(): Unexpected EOF"},
        {"\x1B%-12345", "3 PCL: Invalid group character 0x2d"},
        {"\x1B ", "2 PCL: Invalid operation character 0x20"},
        {"\x1B\x1B", "2 PCL: Invalid operation character 0x1b"},
        {"\x1B\x7F", "2 PCL: Invalid operation character 0x7f"},
        {"\x1B\xFF", "2 PCL: Invalid operation character 0xff"},
        {std::string("\x1B\0", 2), "2 PCL: Invalid operation character 0x0"},
        {"\x1B&/", "3 PCL: Invalid group character 0x2f"},
        {"\x1B&\x7F", "3 PCL: Invalid group character 0x7f"},
        {"\x1B&l\x7F", "4 PCL: Invalid param/value character '\x7F'"},
        {"\x1B&l1 A", "5 PCL: Invalid param/value character ' '"},
        {"\x1B&l1\x1B", "5 PCL: Invalid param/value character '\x1B'"},
        {"\x1B&l1:", "5 PCL: Invalid param/value character ':'"},
        {"\x1B&l123456789012345A", "18 PCL: ESC value too long"},
        {"\x1B*b3wabc", "5 GetPclToken(): ESC with binary date not expected"},
        {"\x1B*b-1W", "6 PCL: Negative binary data size"},
        {"\x1B*b-1w", "6 PCL: Negative binary data size"},
        {"\x1B*b4294967295W", "14 PCL: Negative binary data size"},
        {"\x1B*b3Wab", "5 GetPclToken(): Unexpected EOF"},
    }};

    for (const Failure& row : rows)
        EXPECT_EQ(failure(row.bytes), row.error) << testing::PrintToString(row.bytes);
}

/// What a state makes of each byte: the bytes that it takes and those that end the token, and the error for
/// all others. `start` leads into the state.
struct StateRow {
    std::string_view start;
    std::string_view taken;
    std::string_view ending;
    std::string_view error;
};

std::string_view bytesFrom(int first, int last)
{
    static const std::string all = [] {
        std::string bytes;
        for (int byte = 0; byte < 256; ++byte)
            bytes += static_cast<char>(byte);
        return bytes;
    }();
    return std::string_view(all).substr(static_cast<std::size_t>(first),
                                        static_cast<std::size_t>(last - first) + 1);
}

TEST(Pcl5Parser, TakesTheBytesOfEachStateAndNoOthers)
{
    const std::string inValue = "+-.0123456789" + std::string(bytesFrom(96, 126));
    const std::array<StateRow, 4> rows{{
        {"\x1B", bytesFrom(33, 47), bytesFrom(48, 126), "PCL: Invalid operation character 0x"},
        {"\x1B*", bytesFrom(48, 126), "", "PCL: Invalid group character 0x"},
        // An ESC ends the token too, and begins one.
        {"\x1B*p", inValue, bytesFrom(64, 95), "PCL: Invalid param/value character '"},
        {"\x1B*p1", inValue, bytesFrom(64, 95), "PCL: Invalid param/value character '"},
    }};

    for (const StateRow& row : rows) {
        const std::string place = std::to_string(row.start.size() + 1) + " ";
        for (const char byte : bytesFrom(0, 255)) {
            const std::string token = std::string(row.start) + byte;
            const bool isTaken = row.taken.find(byte) != std::string_view::npos;
            const bool isEnd = row.ending.find(byte) != std::string_view::npos;
            const bool isNext = byte == '\x1B' && row.start == "\x1B*p";
            // With bytes behind it that end any token, and can be text.
            const std::string inBody = failure(token + "1Z" + std::string(40, ' '));

            if (isEnd) {
                EXPECT_EQ(failure(token), "none") << testing::PrintToString(token);
                EXPECT_EQ(inBody, "none") << testing::PrintToString(token);
            } else if (isTaken || isNext) {
                EXPECT_EQ(failure(token), place + "GetPclToken(): Unexpected EOF")
                    << testing::PrintToString(token);
                EXPECT_EQ(inBody, "none") << testing::PrintToString(token);
            } else {
                EXPECT_TRUE(failure(token).starts_with(place + std::string(row.error)))
                    << testing::PrintToString(token) << failure(token);
                EXPECT_TRUE(inBody.starts_with(place + std::string(row.error)))
                    << testing::PrintToString(token) << inBody;
            }
        }
    }
}

TEST(Pcl5Parser, StepsOverThePayloadsOfTheSequencesThatHaveOne)
{
    constexpr std::array<std::string_view, 12> withPayload{")s3W", "(s3W", "(f3W", "&n3W", "*b3W", "*b3V",
                                                           "*g3W", "*v3W", "*l3W", "*o3W", "*m3W", "&p3X"};
    constexpr std::array<std::string_view, 12> without{")s3V", "(s3X", "(f3V", "&n3X", "*b3X", "*b3Y",
                                                       "*g3V", "*v3V", "*l3X", "*p3X", "*m3V", "&p3W"};
    // So that it is found both by the search in bulk and near the end of the file.
    const std::string text(40, ' ');

    for (const std::string_view sequence : withPayload) {
        const std::string token = "\x1B" + std::string(sequence);
        EXPECT_EQ(parsed(token + "\f\x1B\x1B"), "Raw 0+8 | 0") << sequence;
        EXPECT_EQ(parsed(token + "\f\x1B\x1B\f" + text), "Raw 0+8, FF, Raw 9+40 | 0") << sequence;
    }
    for (const std::string_view sequence : without) {
        const std::string token = "\x1B" + std::string(sequence);
        EXPECT_EQ(parsed(token + "\f"), "Raw 0+5, FF | 0") << sequence;
        EXPECT_EQ(parsed(token + "\f" + text), "Raw 0+5, FF, Raw 6+40 | 0") << sequence;
    }
}

struct PayloadSize {
    const char* value;
    int size;
};

TEST(Pcl5Parser, ReadsTheSizeOfAPayloadAsANumberOf32Bits)
{
    for (const PayloadSize& row : {PayloadSize{"", 0},
                                   {"0", 0},
                                   {"-0", 0},
                                   {"+3", 3},
                                   {"3.9", 3},
                                   {".9", 0},
                                   {"3-1", 3},
                                   {"+-3", 0},
                                   {"--3", 0},
                                   {"00000003", 3},
                                   {"000000003", 3},
                                   {"0000000003", 3},
                                   {"4294967299", 3},
                                   {"-4294967293", 3}}) {
        const std::string token = "\x1B*b" + std::string(row.value) + "W";
        const std::string payload(static_cast<std::size_t>(row.size), '\x1B');
        const auto size = static_cast<std::int64_t>(token.size() + payload.size());

        EXPECT_EQ(parsed(token + payload + "\f" + std::string(40, ' ')),
                  "Raw 0+" + std::to_string(size) + ", FF, Raw " + std::to_string(size + 1) + "+40 | 0")
            << row.value;
    }
    const std::string behind(40, ' ');
    EXPECT_EQ(failure("\x1B*b2147483648W" + behind), "14 PCL: Negative binary data size");
    EXPECT_EQ(failure("\x1B*b-1W" + behind), "6 PCL: Negative binary data size");
    EXPECT_EQ(failure("\x1B*b2147483647W" + behind), "14 GetPclToken(): Unexpected EOF");
    EXPECT_EQ(failure("\x1B*b41W" + behind), "6 GetPclToken(): Unexpected EOF");
    EXPECT_EQ(failure("\x1B*b40W" + behind), "none");
    EXPECT_EQ(failure("\x1B*b3w" + behind), "5 GetPclToken(): ESC with binary date not expected");
    EXPECT_EQ(failure("\x1B*b123456789012345" + behind), "18 PCL: ESC value too long");
    EXPECT_EQ(failure("\x1B*b12345678901234M" + behind), "none");
}

TEST(Pcl5Parser, TakesSequencesAtTheLimits)
{
    EXPECT_EQ(parsed("\x1B&l12345678901234X"), "&l12345678901234X | 1");
    EXPECT_EQ(parsed("\x1B*b0w0Wab"), "Raw 0+9 | 0");
    EXPECT_EQ(failure("\x1B*b0wab"), "7 GetPclToken(): Unexpected EOF");
}

TEST(Pcl5Parser, RefusesAPayloadBeyondTheFile)
{
    EXPECT_EQ(failure("\x1B*b2147483647Wabc"), "14 GetPclToken(): Unexpected EOF");
    EXPECT_EQ(failure("\x1B*b4294967299Wabc"), "none") << "the low half of the number is 3";
    EXPECT_EQ(failure("\x1B*b1W"), "5 GetPclToken(): Unexpected EOF");
}

TEST(Pcl5Parser, KeepsWhatCameBeforeAMalformedSequence)
{
    Reading reading("\x1B&l3Xab\fcd\x1B&l1 A"sv);

    EXPECT_THROW(reading.parse(), JobParserException);

    EXPECT_EQ(reading.chunks(), "&l3X, Raw 5+2, FF");
    EXPECT_EQ(reading.info.copies, 3);
}

TEST(Pcl5Parser, ReadsABodyThatIsCutAtAnyByte)
{
    const std::string body = "\x1B"
                             "E\x1B&l26a1o2SHello\x1B*b5W\x1B\f!R!\x1B(s1p14v0s0b4168T\f!R!COPY 2;EXIT;x";
    int whole = 0;
    for (std::size_t size = 0; size <= body.size(); ++size) {
        Reading reading(std::string_view(body).substr(0, size));
        try {
            reading.parse();
            ++whole;
            EXPECT_TRUE(reading.job.file.atEnd());
        } catch (const JobParserException& error) {
            EXPECT_STREQ(error.what(), "GetPclToken(): Unexpected EOF") << size;
        }
    }
    EXPECT_GT(whole, 25);
    EXPECT_EQ(parsed(body), "E, &l26A, &l1O, &l2S, Raw 12+32, FF, Prescribe 45+15, Raw 60+1 | 4");
}

TEST(Pcl5Parser, ReadsThePaperByItsCode)
{
    constexpr std::array<std::pair<int, Paper>, 14> papers{{{2, PaperLetter},
                                                            {3, PaperLegal},
                                                            {4, PaperFolio},
                                                            {6, PaperLedger},
                                                            {12, PaperB5},
                                                            {13, PaperA5},
                                                            {15, PaperStatement},
                                                            {25, PaperA5},
                                                            {26, PaperA4},
                                                            {27, PaperA3},
                                                            {45, PaperB5},
                                                            {46, PaperB4},
                                                            {100, PaperB5},
                                                            {139, PaperStatement}}};

    for (int code = -2; code <= 300; ++code) {
        Paper expected = PaperOther;
        for (const auto& [known, paper] : papers)
            expected = known == code ? paper : expected;
        const JobInfo info = facts("\x1B&l" + std::to_string(code) + "A");
        EXPECT_EQ(info.paper, expected) << code;
        EXPECT_EQ(info.m_flags, 8U);
    }
}

struct Number {
    const char* bytes;
    int value;
};

TEST(Pcl5Parser, ReadsOrientationDuplexAndCopies)
{
    for (const Number& row : {Number{"\x1B&l0O", 0},
                              {"\x1B&l1O", 1},
                              {"\x1B&l3O", 3},
                              {"\x1B&l9O", 9},
                              {"\x1B&lO", 0},
                              {"\x1B&l1O\f\x1B&l2O", 2},
                              {"\x1B&l+1.9O", 1}}) {
        EXPECT_EQ(static_cast<int>(facts(row.bytes).orientation), row.value);
        EXPECT_EQ(facts(row.bytes).m_flags, 2048U);
    }
    for (const Number& row : {Number{"\x1B&l0S", 0},
                              {"\x1B&l1S", 1},
                              {"\x1B&l2S", 2},
                              {"\x1B&l7S", 7},
                              {"\x1B&l2S\f\x1B&l0S", 0}}) {
        EXPECT_EQ(static_cast<int>(facts(row.bytes).duplex), row.value);
        EXPECT_EQ(facts(row.bytes).m_flags, 16U);
    }
    for (const Number& row : {Number{"\x1B&l5X", 5},
                              {"\x1B&l0X", 1},
                              {"\x1B&l20000X", 10000},
                              {"\x1B&l5X\f\x1B&l3X", 5},
                              {"\x1B&l3X\f\x1B&l5X", 5},
                              {"\x1B&l-3X", 1}}) {
        EXPECT_EQ(facts(row.bytes).copies, row.value);
        EXPECT_EQ(facts(row.bytes).m_flags, 4U);
    }
}

TEST(Pcl5Parser, LeavesOtherSequencesInTheRawData)
{
    for (const std::string_view bytes :
         {"\x1B&l6D"sv, "\x1B&a10C"sv, "\x1B*t300R"sv, "\x1B(10U"sv, "\x1B&k2G"sv, "\x1B&l26H"sv,
          "\x1B&u300D"sv, "\x1B*p5X"sv, "\x1B&t0P"sv,
          "\x1B"
          "9"sv,
          "\x1B%0B"sv, "\x1B%1A"sv, "\x1B&l1`"sv}) {
        const bool isCombined = bytes.ends_with("`");
        if (isCombined) {
            EXPECT_EQ(failure(bytes), "5 GetPclToken(): Unexpected EOF");
        } else {
            EXPECT_EQ(parsed(bytes), "Raw 0+" + std::to_string(bytes.size()) + " | 0");
            EXPECT_EQ(facts(bytes).m_flags, 0U) << bytes;
        }
    }
}

TEST(Pcl5Parser, LearnsNothingFromAReset)
{
    EXPECT_EQ(facts("\x1B"
                    "E")
                  .m_flags,
              0U);
}

TEST(Pcl5Parser, KeepsAParameterByteThatIsNoLetter)
{
    EXPECT_EQ(parsed("\x1B&l1`2X"), "&l1`, &l2X | 2");
    EXPECT_EQ(parsed("\x1B&l1~2{3X"), "&l1~, &l2{, &l3X | 3");
    EXPECT_EQ(parsed("\x1B&l1@\x1B&l2X"), "Raw 0+5, &l2X | 2");
}

TEST(Pcl5Parser, FindsTheFirstPageBehindTheLastSetupBeforeAFormFeed)
{
    EXPECT_EQ(parsed("\x1B&l1Xab\x1B&l2Acd\f"), "&l1X, Raw 5+2, &l2A, Raw 12+2, FF | 3");
    EXPECT_EQ(parsed("\x1B&l1X\f\x1B&l2A"), "&l1X, FF, &l2A | 1");
    EXPECT_EQ(parsed("ab\f\x1B&l2A"), "Raw 0+2, FF, &l2A | 0");
    EXPECT_EQ(parsed("!R!EXIT;\x1B&l2A\f"), "Prescribe 0+8, &l2A, FF | 2") << "a block is no page";
    EXPECT_EQ(parsed("\x1B&l1a1o1h0e"
                     "0O"),
              "&l1A, &l1O, &l1H, &l0E, &l0O | 1");
}

TEST(Pcl5Parser, CountsTheFirstPageAfreshInEachBody)
{
    Reading reading("\x1B"
                    "E\x1B%-12345Xab\x1B%-12345X"sv);

    reading.parse();
    EXPECT_EQ(reading.parser.firstPageChunk, 1);
    reading.job.file.setPos(11);
    reading.parse();

    EXPECT_EQ(reading.parser.firstPageChunk, 0);
}

TEST(Pcl5Parser, ReadsTextOfTwoByteCharacters)
{
    // A form feed and an escape behind a lead byte are its second byte.
    EXPECT_EQ(parsed("\x1B&t31P\x81\x0C"), "Raw 0+8 | 0");
    EXPECT_EQ(parsed("\x1B&t31P\x9F\x1B"), "Raw 0+8 | 0");
    EXPECT_EQ(parsed("\x1B&t31P\x80\x0C"), "Raw 0+7, FF | 0");
    EXPECT_EQ(parsed("\x1B&t31P\xA0\x0C"), "Raw 0+7, FF | 0");
    EXPECT_EQ(parsed("\x1B&t38P\x80\x0C"), "Raw 0+8 | 0");
    EXPECT_EQ(parsed("\x1B&t38P\xFF\x0C"), "Raw 0+8 | 0");
    EXPECT_EQ(parsed("\x1B&t38P\x7F\x0C"), "Raw 0+7, FF | 0");
    EXPECT_EQ(parsed("\x1B&t21P!\x0C"), "Raw 0+8 | 0");
    EXPECT_EQ(parsed("\x1B&t21P \x0C"), "Raw 0+7, FF | 0");
    EXPECT_EQ(parsed("\x1B&t21P a\x0C"), "Raw 0+9 | 0");
    EXPECT_EQ(parsed("\x1B&t21P\xFF\x0C"), "Raw 0+8 | 0");
    // A PRESCRIBE block begins at a character, whatever its bytes mean, and not inside one.
    EXPECT_EQ(parsed("\x1B&t21P!R!EXIT;"), "Raw 0+6, Prescribe 6+8 | 0");
    EXPECT_EQ(parsed("\x1B&t21Pa!R!EXIT;b"), "Raw 0+16 | 0");
    for (const char* method : {"0", "1", "2", "20", "22", "30", "32", "37", "39", "-21"}) {
        const std::string start = "\x1B&t" + std::string(method) + "P";
        EXPECT_EQ(parsed(start + "\x85\x0C"), "Raw 0+" + std::to_string(start.size() + 1) + ", FF | 0");
    }
    EXPECT_EQ(parsed("\x1B&t31P\x1B&t0P\x81\x0C"), "Raw 0+12, FF | 0");
}

TEST(Pcl5Parser, KeepsTheTextParsingMethodForTheNextBody)
{
    Reading reading("\x1B&t31P\x1B%-12345X\x81\x0C"sv);

    reading.parse();
    reading.job.file.setPos(15);
    reading.parse();

    EXPECT_EQ(reading.chunks(), "Raw 0+6, Raw 15+2");
}

TEST(Pcl5Parser, FailsForHalfACharacterAtTheEnd)
{
    Reading reading("\x1B&t31Pab\x81"sv);

    EXPECT_THROW(reading.parse(), UnexpectedEndOfFileException);
    EXPECT_TRUE(reading.job.job.chunks.empty());
}

TEST(Pcl5Parser, TakesACombinedSequenceOfAMillionMembers)
{
    std::string bytes = "\x1B&l";
    for (int index = 0; index < 999999; ++index)
        bytes += "1h";
    Reading raw(bytes + "1H");
    Reading kept(bytes + "7X");

    raw.parse();
    kept.parse();

    EXPECT_EQ(raw.chunks(), "Raw 0+2000003");
    ASSERT_EQ(kept.job.job.chunks.size(), 1000000U);
    EXPECT_EQ(kept.parser.firstPageChunk, 1000000);
    EXPECT_EQ(kept.info.copies, 7);
    EXPECT_EQ(kept.job.job.size(), 5000000);
}

} // namespace
} // namespace JobParser::Pcl5
