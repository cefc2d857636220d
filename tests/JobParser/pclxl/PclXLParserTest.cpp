#include "JobParser/pclxl/PclXLParser.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "JobParser/pclxl/Operator.h"
#include "tests/JobParser/pclxl/PclXlWalk.h"
#include "tests/support/ChunkForms.h"
#include "tests/support/OpenJob.h"
#include "tests/support/PclXlBytes.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

// --- The walk

TEST(PclXLParser, CoversAStreamWithChunksWithoutAGap)
{
    const PclXlBytes bytes = PclXlBytes()
                                 .ubyte(2, 143)
                                 .op(0x41)
                                 .ubyte(0, 0x88)
                                 .op(0x48)
                                 .ubyte(2, mediaSize)
                                 .op(0x43)
                                 .op(0x50)
                                 .uint16(1, pageCopies)
                                 .op(0x44)
                                 .op(0x49)
                                 .op(0x42);

    EXPECT_EQ(walked(bytes), "A 0-4, raw 5-9, C 10-14, raw 15-15, D 16-21, raw 22-23");
}

TEST(PclXLParser, EndsBehindTheEndOfTheSessionWhateverFollows)
{
    OpenJob job("B\x1B%-12345X"sv);
    PclXLParser parser(job.file, ignoreBlock);

    parser.parse();

    EXPECT_EQ(inWords(parser.m_chunks), "raw 0-0");
    EXPECT_EQ(job.file.m_offset, 1);
}

TEST(PclXLParser, BeginsWhereTheFileStands)
{
    OpenJob job(") HP-PCL XL;\nCB"sv);
    job.file.setPos(13);
    PclXLParser parser(job.file, ignoreBlock);

    parser.parse();

    EXPECT_EQ(inWords(parser.m_chunks), "C 13-13, raw 14-14");
}

TEST(PclXLParser, MakesNoChunkBetweenOperatorsThatTouch)
{
    EXPECT_EQ(walked("CDCDB"sv), "C 0-0, D 1-1, C 2-2, D 3-3, raw 4-4");
}

TEST(PclXLParser, LeavesOperatorsWithoutAMeaningInRanges)
{
    std::string bytes;
    for (int op = 0x45; op <= 0xBF; ++op) {
        if (op != 0x47 && op != 0x4F)
            bytes += static_cast<char>(op);
    }
    const std::string end = std::to_string(bytes.size());

    EXPECT_EQ(walked(bytes + "B"), "raw 0-" + end);
}

TEST(PclXLParser, CountsEmbeddedDataBehindAnOperatorToTheNextOne)
{
    EXPECT_EQ(walked(PclXlBytes().op(0xB0).embedded("BBB").op(0x44).op(0x42)), "raw 0-0, D 1-9, raw 10-10");
    EXPECT_EQ(walked(PclXlBytes().op(0xB0).shortEmbedded("BBB").ubyte(1, 9).op(0x44).op(0x42)),
              "raw 0-0, D 1-10, raw 11-11");
}

TEST(PclXLParser, StepsOverValuesOfEveryTypeBySize)
{
    constexpr std::array<std::pair<int, std::size_t>, 24> sizes{
        {{0xC0, 1},  {0xC1, 2},  {0xC2, 4}, {0xC3, 2},  {0xC4, 4},  {0xC5, 4},  {0xD0, 2},  {0xD1, 4},
         {0xD2, 8},  {0xD3, 4},  {0xD4, 8}, {0xD5, 8},  {0xE0, 4},  {0xE1, 8},  {0xE2, 16}, {0xE3, 8},
         {0xE4, 16}, {0xE5, 16}, {0xF0, 8}, {0xF1, 16}, {0xF2, 32}, {0xF3, 16}, {0xF4, 32}, {0xF5, 32}}};

    for (const auto& [tag, size] : sizes) {
        // The data look like the end of a session. Once at the end of the file, once far from it.
        const PclXlBytes one = PclXlBytes().value(tag, std::string(size, 'B'), 9).op(0x43).op(0x42);
        const std::string end = std::to_string(size + 3);
        const std::string last = std::to_string(size + 4);
        EXPECT_EQ(walked(one), "C 0-" + end + ", raw " + last + "-" + last) << tag;
        EXPECT_EQ(walked(PclXlBytes(one).raw(std::string(500, 'x'))), walked(one)) << tag;
        if (tag >= 0xF0)
            continue; // Behind these stand identifiers and embedded data, no arrays.
        for (const int lengthBytes : {1, 2, 4}) {
            const PclXlBytes array = PclXlBytes()
                                         .array(tag + 8, 3, lengthBytes)
                                         .raw(std::string(3 * size, 'B'))
                                         .id(9)
                                         .op(0x43)
                                         .op(0x42);
            const std::string behind =
                std::to_string(2 + static_cast<std::size_t>(lengthBytes) + 3 * size + 2);
            EXPECT_EQ(walked(array).substr(0, 4 + behind.size()), "C 0-" + behind) << tag;
            EXPECT_EQ(walked(PclXlBytes(array).raw(std::string(500, 'x'))), walked(array)) << tag;
        }
    }
}

TEST(PclXLParser, TakesTheSecondByteOfAWideIdentifier)
{
    OpenJob job(PclXlBytes().op(0x50).op(0xC0).op(2).wideId(0, mediaSize).op(0x43).op(0x42).str());
    PclXLParser parser(job.file, ignoreBlock);

    parser.parse();

    EXPECT_EQ(parser.m_mediaSizes, (std::set<EMediaSize>{EMediaSize{2}}));
    EXPECT_EQ(inWords(parser.m_chunks), "raw 0-0, C 1-6, raw 7-7");
    EXPECT_EQ(ChunkForms::saved(*parser.m_chunks[1], job.file), "\xC0\x02\xF8\x25"
                                                                "C")
        << "it comes out in its short form";
}

TEST(PclXLParser, LosesEmbeddedDataInFrontOfAnOperatorThatIsKept)
{
    OpenJob job(PclXlBytes().op(0xB0).shortEmbedded("abc").uint16(1, pageCopies).op(0x44).op(0x42).str());
    PclXLParser parser(job.file, ignoreBlock);

    parser.parse();

    EXPECT_EQ(ChunkForms::saved(*parser.m_chunks[1], job.file), "\xC1\x01\0\xF8\x31"
                                                                "D"sv);
}

TEST(PclXLParser, SavesOtherStreamsByteForByte)
{
    const std::string bytes = PclXlBytes()
                                  .op(0x50)
                                  .value(0xD1, "abcd", 137)
                                  .ubyte(2, 143)
                                  .op(0x41)
                                  .text("a4", mediaSize, 2)
                                  .text("", 39, 4)
                                  .value(0xE3, "12345678", 66)
                                  .op(0x43)
                                  .text("Lexmark Enhanced", 129, 4)
                                  .op(0x47)
                                  .op(0xB0)
                                  .embedded("data")
                                  .op(0x79)
                                  .uint16(2, pageCopies)
                                  .op(0x44)
                                  .op(0x42)
                                  .str();
    OpenJob job(bytes);
    PclXLParser parser(job.file, ignoreBlock);
    parser.parse();

    std::string saved;
    for (const auto& chunk : parser.m_chunks)
        saved += ChunkForms::saved(*chunk, job.file);

    EXPECT_EQ(saved, bytes);
}

// --- Pages

std::pair<std::uint32_t, std::uint32_t> pagesAndCopies(const std::vector<int>& copies)
{
    PclXlBytes bytes;
    for (const int each : copies)
        bytes.uint16(each, pageCopies).op(0x44);
    OpenJob job(bytes.op(0x42).str());
    PclXLParser parser(job.file, ignoreBlock);
    parser.parse();
    return {parser.m_pageCount, parser.m_copies};
}

TEST(PclXLParser, CountsPagesAndTheirCommonCopies)
{
    using Pair = std::pair<std::uint32_t, std::uint32_t>;

    EXPECT_EQ(pagesAndCopies({}), Pair(0, 1));
    EXPECT_EQ(pagesAndCopies({3, 3}), Pair(6, 3));
    EXPECT_EQ(pagesAndCopies({3, 2}), Pair(5, 1));
    EXPECT_EQ(pagesAndCopies({3, 2, 3}), Pair(8, 1));
    EXPECT_EQ(pagesAndCopies({3, 2, 1, 1}), Pair(7, 1));
    EXPECT_EQ(pagesAndCopies({0, 5}), Pair(5, 5)) << "the next page counts as the first";
    EXPECT_EQ(pagesAndCopies({0}), Pair(0, 0));
    EXPECT_EQ(pagesAndCopies({5, 0}), Pair(5, 1));
}

TEST(PclXLParser, CountsAPageWithoutCopiesAsOne)
{
    OpenJob job("DDB"sv);
    PclXLParser parser(job.file, ignoreBlock);

    parser.parse();

    EXPECT_EQ(parser.m_pageCount, 2U);
    EXPECT_EQ(parser.m_copies, 1U);
}

// --- Malformed streams

struct Malformed {
    const char* name;
    std::string bytes;
    const char* failure;
};

class MalformedPclXl : public testing::TestWithParam<Malformed>
{
};

TEST_P(MalformedPclXl, IsRefusedAtTheEndOfTheFileAndFarFromIt)
{
    const auto& [name, bytes, failure] = GetParam();

    EXPECT_EQ(walked("C" + bytes), failure);
    // More than what is walked in bulk, on both sides.
    const std::string before = PclXlBytes().raw(std::string(300, '\x50')).str();
    EXPECT_EQ(walked(before + "C" + bytes + std::string(300, '\0')), failure);
}

INSTANTIATE_TEST_SUITE_P(
    Streams, MalformedPclXl,
    testing::Values(
        Malformed{"PairOfNoType", "\xD6", "Invalid control byte %02X / 214"},
        Malformed{"BoxOfNoType", "\xE7", "Invalid control byte %02X / 231"},
        Malformed{"EightOfNoType", "\xF6", "Invalid control byte %02X / 246"},
        Malformed{"ArrayOfPairsOfNoType", "\xDE", "Invalid control byte %02X / 222"},
        Malformed{"LastByte", "\xFF", "Invalid control byte %02X / 255"},
        Malformed{"NoIdentifier", "\xC0\x01\xC0", "Attribute expected instead %02X / 192"},
        Malformed{"ZeroForAnIdentifier", std::string("\xC1\x01\x02\0", 4), "Attribute expected instead %02X"},
        Malformed{"EndInPlaceOfAnIdentifier",
                  "\xC0\x01"
                  "B",
                  "Attribute expected instead %02X / 66"},
        Malformed{"NoIdentifierBehindAnArray", "\xC8\xC0\x01xx", "Attribute expected instead %02X / 120"},
        Malformed{"LengthOfASignedType", "\xC8\xC3", "Invalid array length type C3"},
        Malformed{"LengthOfAByteThatIsNoTag", "\xC9\x05", "Invalid array length type 05"},
        Malformed{"LengthOfTheEnd",
                  "\xC8"
                  "B",
                  "Invalid array length type 42"},
        Malformed{"ByteThatIsNoTag", " ", assertion}, Malformed{"ZeroByte", std::string(1, '\0'), assertion},
        Malformed{"ElementOfNoType", "\xC6", assertion},
        Malformed{"ArrayOfNoType", "\xCE\xC0\x01", assertion},
        Malformed{"ByteThatIsNoTagAsAnArray", std::string("\x08\xC0\x02", 3), assertion},
        Malformed{"ByteThatIsNoTagWithTheBitOfAnArray", "(x", "Invalid array length type 78"},
        Malformed{"ByteThatIsNoTagWithALengthOfNone", std::string("\x28\xC0\0x", 4),
                  "Attribute expected instead %02X / 120"},
        Malformed{"NoEmbeddedData", std::string("\xFA\0\0\0\0", 5), assertion},
        Malformed{"NoEmbeddedDataOfAByte", std::string("\xFB\0", 2), assertion}),
    [](const auto& row) { return row.param.name; });

TEST(PclXLParser, RefusesAnIdentifierWhereATagShouldBe)
{
    // Both have the bit of an array, so that a length is read behind them.
    EXPECT_EQ(walked("\xF8\x25"sv), "Invalid array length type 25");
    EXPECT_EQ(walked("\xF9\xC0\x01"sv), assertion);
    EXPECT_EQ(walked("\xFE\xC0\x01"sv), assertion);
}

TEST(PclXLParser, StepsOverAnArrayOfNoElementsWhateverItsType)
{
    EXPECT_EQ(walked("\x28\xC0\0\xF8\x09\xCE\xC0\0\xF8\x09"
                     "CB"sv),
              "C 0-10, raw 11-11");
}

TEST(PclXLParser, TakesTheBytesOfAValueBehindTheEndOfTheFileForTheIdentifier)
{
    EXPECT_EQ(walked(PclXlBytes().array(0xC8, 100, 1).raw("abc")), "Attribute expected instead %02X / 97");
    EXPECT_EQ(walked(PclXlBytes().op(0xC2).raw("abc")), "Attribute expected instead %02X / 97");
    EXPECT_EQ(walked(PclXlBytes().array(0xC8, 100, 1).id(9).op(0x50).op(0x42)), "raw 0-6")
        << "an identifier that is not there is found";
}

TEST(PclXLParser, DoesNotMoveForEmbeddedDataBehindTheEndOfTheFile)
{
    EXPECT_EQ(walked(PclXlBytes().op(0xFA).number(4000000000, 4).op(0x43).op(0x42)), "C 0-5, raw 6-6");
    EXPECT_EQ(walked(PclXlBytes().op(0xFB).number(200, 1).op(0x43).op(0x42)), "C 0-2, raw 3-3");
}

TEST(PclXLParser, CountsTheBytesOfLongArraysWithoutOverflow)
{
    // In 32 bits this were 4 bytes, and 0.
    for (const std::int64_t length : {0x40000001LL, 0x40000000LL, 0xFFFFFFFFLL}) {
        EXPECT_EQ(walked(PclXlBytes().array(0xCA, length, 4).raw("abcd").id(9).op(0x43).op(0x42)),
                  "Attribute expected instead %02X / 97");
        EXPECT_EQ(walked(PclXlBytes().array(0xCA, length, 4).id(9).op(0x50).op(0x42)), "raw 0-9");
    }
}

TEST(PclXLParser, ReservesNoMoreForAValueThanTheFileHolds)
{
    for (const std::int64_t length : {0x40000001LL, 0xFFFFFFFFLL}) {
        EXPECT_EQ(walked(PclXlBytes().array(0xCA, length, 4).id(mediaSize).op(0x43).op(0x42)), endOfFile);
        EXPECT_EQ(walked(PclXlBytes().array(0xC8, length, 4).id(129).op(0x47).op(0x42)), endOfFile);
        EXPECT_EQ(walked(PclXlBytes().array(0xC9, length, 4).id(168).op(0x4F).op(0x42)), endOfFile);
    }
}

TEST(PclXLParser, NeedsTheEndOfItsSession)
{
    EXPECT_EQ(walked(""sv), endOfFile);
    EXPECT_EQ(walked("C"sv), endOfFile);
    EXPECT_EQ(walked(PclXlBytes().ubyte(2, mediaSize).op(0x43)), endOfFile);
}

TEST(PclXLParser, SeesNoEndOfASessionInData)
{
    EXPECT_EQ(
        walked(PclXlBytes().text("BB", textData).op(0xA8).ubyte('B', 'B').embedded("B").op(0x43).op(0x42)),
        "raw 0-7, C 8-18, raw 19-19");
}

TEST(PclXLParser, FailsAtEveryCutOfAGoodStream)
{
    const std::string whole = PclXlBytes()
                                  .ubyte(2, 143)
                                  .op(0x41)
                                  .text("A4", mediaSize, 4)
                                  .op(0xD1)
                                  .raw("abcd")
                                  .wideId(1, 66)
                                  .op(0x43)
                                  .text("some text", textData)
                                  .op(0xA8)
                                  .text("!R!EXIT;", 129)
                                  .op(0x47)
                                  .embedded("0123456789")
                                  .shortEmbedded("x")
                                  .text("Courier", 168)
                                  .op(0x4F)
                                  .uint16(1, pageCopies)
                                  .op(0x44)
                                  .op(0x42)
                                  .str();

    EXPECT_EQ(walked(whole).substr(0, 5), "A 0-4");
    for (std::size_t size = 0; size + 1 < whole.size(); ++size) {
        const std::string failure = walked(whole.substr(0, size));
        EXPECT_NE(failure.substr(0, 2), "A ") << size;
    }
}

TEST(PclXLParserDeathTest, DiesOnAByteThatIsNoTag)
{
    for (const auto bytes : {" "sv, "\xC6"sv, "\xFA\0\0\0\0"sv, "\xFB\0"sv}) {
        OpenJob job(bytes);
        EXPECT_DEATH(walked(job.file), "count > 0, file JobFile, function advancePos");
    }
}

} // namespace
} // namespace JobParser
