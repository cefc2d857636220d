#include "JobParser/pclxl/PclXLParser.h"

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "JobParser/pclxl/JobChunkPclXLAttribute.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/pclxl/Operator.h"
#include "tests/support/ChunkForms.h"
#include "tests/support/OpenJob.h"
#include "tests/support/PclXlBytes.h"
#include "tests/support/SparseFile.h"
#include "tests/support/ThrowingAssertions.h"

#include "Torv/GenericException.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

constexpr int mediaSize = 37;
constexpr int pageCopies = 49;
constexpr int textData = 171;
constexpr std::int64_t viewSize = 4194304;

void ignoreBlock(const std::string&) {}

/// The chunks of a stream in words, as in "raw 0-3, C 4-8": a range, or an operator with the range of it. The
/// stream begins at `base`.
std::string inWords(const PclXLParser::Chunks& chunks, std::int64_t base = 0)
{
    std::string words;
    for (const auto& chunk : chunks) {
        const auto& range = dynamic_cast<const JobChunkPclXLRaw&>(*chunk);
        const auto* op = dynamic_cast<const JobChunkPclXLOperator*>(chunk.get());
        words += words.empty() ? "" : ", ";
        words += op == nullptr ? "raw" : std::string(1, static_cast<char>(op->m_operator));
        words += " " + std::to_string(range.start - base) + "-" + std::to_string(range.end - base);
    }
    return words;
}

/// The chunks, or what was thrown: the message and, if it is not 0, the number.
std::string walked(JobFile& file)
{
    const std::int64_t base = file.m_offset;
    PclXLParser parser(file, ignoreBlock);
    try {
        parser.parse();
        return inWords(parser.m_chunks, base);
    } catch (const Torv::GenericException& error) {
        return error.what() + (error.code() == 0 ? std::string() : " / " + std::to_string(error.code()));
    }
}

std::string walked(std::string_view bytes)
{
    const ThrowingAssertions throwing;
    // As behind a header line: an operator at the very start of a file would be counted to the range before
    // it.
    OpenJob job("\n" + std::string(bytes));
    job.file.setPos(1);
    return walked(job.file);
}

std::string walked(const PclXlBytes& bytes)
{
    return walked(std::string_view(bytes.str()));
}

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

constexpr auto endOfFile = "Unexpected end of file";
constexpr auto assertion = "count > 0, JobFile, advancePos";

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

// --- The readers

/// A parser whose file stands at its end.
struct AtEnd {
    explicit AtEnd(const PclXlBytes& bytes) : job(bytes.str()), parser(job.file, ignoreBlock)
    {
        job.file.setPos(job.file.m_realDataSize);
    }

    JobChunkPclXLAttributeValue value(std::int64_t pos)
    {
        return parser.parseValue<JobChunkPclXLAttributeValue>(pos);
    }
    std::string text(std::int64_t pos) { return parser.parseValue<std::string>(pos); }
    bool isBack() const { return job.file.m_offset == job.file.m_realDataSize; }

    OpenJob job;
    PclXLParser parser;
};

std::string textOf(const JobChunkPclXLAttributeValue& value)
{
    return std::string(value.data.begin(), value.data.end());
}

TEST(PclXLParser, ReadsTheNextValueBehindOperatorsAndEmbeddedData)
{
    AtEnd reading(
        PclXlBytes().op(0x50).embedded("abc").op(0x41).shortEmbedded("d").array(0xC9, 2, 2).raw("wxyz!"));

    const JobChunkPclXLAttributeValue value = reading.value(0);

    EXPECT_EQ(value.data_type, tag_t::Uint16Array);
    EXPECT_EQ(value.array_length_type, tag_t::Uint16);
    EXPECT_EQ(textOf(value), "wxyz");
    EXPECT_TRUE(reading.isBack());
}

TEST(PclXLParser, ReadsAValueThatIsNoArrayWithoutALengthType)
{
    AtEnd reading(PclXlBytes().value(0xD3, "1234", 9));

    EXPECT_EQ(textOf(reading.value(0)), "1234");
    EXPECT_EQ(reading.value(0).array_length_type, noLengthType);
    EXPECT_EQ(static_cast<int>(reading.value(0).data_type), 0xD3);
}

TEST(PclXLParser, ReadsEmbeddedDataAsAStringToo)
{
    EXPECT_EQ(AtEnd(PclXlBytes().op(0x50).embedded("abc")).text(0), "abc");
    EXPECT_EQ(AtEnd(PclXlBytes().shortEmbedded("ab")).text(0), "ab");
    EXPECT_EQ(AtEnd(PclXlBytes().shortEmbedded("")).text(0), "");
    EXPECT_EQ(AtEnd(PclXlBytes().op(0xA8).text("a\0b"sv, 9)).text(1), "a\0b"sv);
    EXPECT_EQ(AtEnd(PclXlBytes().value(0xC1, "xy", 9)).text(0), "xy");
}

TEST(PclXLParser, StaysBehindWhatItReadWithoutAPlace)
{
    OpenJob job(PclXlBytes().text("ab", 9).text("cd", 9).str());
    PclXLParser parser(job.file, ignoreBlock);

    EXPECT_EQ(textOf(parser.parseValue<JobChunkPclXLAttributeValue>(-1)), "ab");
    EXPECT_EQ(job.file.m_offset, 5);
    job.file.setPos(7);
    EXPECT_EQ(parser.parseValue<std::string>(-1), "cd");
    EXPECT_EQ(job.file.m_offset, 12);
}

TEST(PclXLParser, BringsTheFileBackWhenAReadingFails)
{
    const ThrowingAssertions throwing;
    for (const auto& bytes : {PclXlBytes().op(0x50).op(0x42), PclXlBytes().op(0xD6), PclXlBytes().op(0xFF),
                              PclXlBytes().array(0xC8, 9, 1), PclXlBytes().op(0xC8).op(0x05),
                              PclXlBytes().op(0x50), PclXlBytes().op(0x20)}) {
        AtEnd reading(bytes);
        EXPECT_THROW(reading.value(0), Torv::GenericException);
        EXPECT_TRUE(reading.isBack());
        EXPECT_THROW(reading.text(0), Torv::GenericException);
        EXPECT_TRUE(reading.isBack());
        if (bytes.str() == "\x50"
                           "B")
            continue; // The one that is a whole stream.
        EXPECT_THROW(reading.parser.parseValue<void>(0), Torv::GenericException);
        EXPECT_TRUE(reading.isBack());
    }
}

template <typename T> std::string failureOf(const PclXlBytes& bytes)
{
    AtEnd reading(bytes);
    try {
        reading.parser.parseValue<T>(0);
    } catch (const Torv::GenericException& error) {
        return error.what();
    }
    return "none";
}

TEST(PclXLParser, MeetsTheEndOfASessionInNoReadingButTheWalk)
{
    constexpr auto premature = "Premature end of PCLXL document";
    using Page = Operator<tag_t::BeginPage, None>;

    EXPECT_EQ(failureOf<JobChunkPclXLAttributeValue>(PclXlBytes().op(0x50).op(0x42)), premature);
    EXPECT_EQ(failureOf<std::string>(PclXlBytes().op(0x50).op(0x42)), premature);
    EXPECT_EQ(failureOf<Page>(PclXlBytes().ubyte(2, mediaSize).op(0x42)), premature);
    EXPECT_EQ(failureOf<void>(PclXlBytes().ubyte(2, mediaSize).op(0x42)), "none");
}

TEST(PclXLParser, WalksFromAPlaceAndBringsTheFileBack)
{
    AtEnd reading(PclXlBytes().op(0x50).op(0x43).op(0x42).raw("xyz"));

    reading.parser.parseValue<void>(1);

    EXPECT_TRUE(reading.isBack());
    EXPECT_EQ(inWords(reading.parser.m_chunks), "raw 0-0, C 1-1, raw 2-2");
}

TEST(PclXLParser, ReadsTheAttributesOfAnOperator)
{
    // Where the walk has just read the operator's byte.
    OpenJob job(PclXlBytes().shortEmbedded("abc").ubyte(2, mediaSize).ubyte(1, 38).op(0x43).op(0x42).str());
    PclXLParser parser(job.file, ignoreBlock);
    job.file.setPos(14);

    const auto page = parser.parseValue<Operator<tag_t::BeginPage, None>>(0);

    EXPECT_EQ(job.file.m_offset, 14);
    EXPECT_EQ(page.chunk->start, 0);
    EXPECT_EQ(page.chunk->end, 13);
    ASSERT_EQ(page.chunk->attributes.size(), 2U);
    EXPECT_EQ(page.chunk->attributes[0]->attribute, attribute_t::MediaSize);
    const auto* range = dynamic_cast<JobChunkPclXLRaw*>(page.chunk->attributes[1]->chunk.get());
    ASSERT_NE(range, nullptr);
    EXPECT_EQ(range->start, 9);
    EXPECT_EQ(range->end, 10);
}

TEST(PclXLParser, ReadsAsManyBytesAsAreWanted)
{
    OpenJob job("abcdef"sv);
    PclXLParser parser(job.file, ignoreBlock);

    EXPECT_EQ(parser.readBytes<std::string>(0), "");
    EXPECT_EQ(parser.readBytes<std::string>(2), "ab");
    EXPECT_EQ(parser.readBytes<std::vector<std::uint8_t>>(3), (std::vector<std::uint8_t>{'c', 'd', 'e'}));
    EXPECT_EQ(job.file.m_offset, 5);
    EXPECT_THROW(parser.readBytes<std::string>(2), UnexpectedEndOfFileException);
    job.file.setPos(0);
    EXPECT_THROW(parser.readBytes<std::string>(0xFFFFFFFFFFFFFFFFULL), UnexpectedEndOfFileException);
}

TEST(PclXLParser, ReadsBytesAcrossViews)
{
    SparseFile sparse;
    sparse.resize(2 * viewSize);
    sparse.writeAt(viewSize - 2, "abcd");
    JobFile file;
    file.open(sparse.path());
    PclXLParser parser(file, ignoreBlock);

    const auto bytes = parser.readBytes<std::string>(static_cast<std::uint64_t>(viewSize) + 2);

    EXPECT_EQ(bytes.substr(bytes.size() - 5), "\0abcd"sv);
    EXPECT_EQ(file.m_offset, viewSize + 2);
}

TEST(PclXLParser, FillsInARangeUpToAPlaceBehindTheLastChunk)
{
    OpenJob job("0123456789"sv);
    PclXLParser parser(job.file, ignoreBlock);

    EXPECT_FALSE(parser.fillInRawChunk(0)) << "the file stands at its start";
    EXPECT_TRUE(parser.fillInRawChunk(3));
    EXPECT_FALSE(parser.fillInRawChunk(3));
    EXPECT_FALSE(parser.fillInRawChunk(2));
    job.file.setPos(7);
    EXPECT_TRUE(parser.fillInRawChunk(0)) << "0 is the position";
    parser.addOperatorChunk(std::make_shared<JobChunkPclXLOperator>(tag_t::EndPage, 8, 8));

    EXPECT_EQ(inWords(parser.m_chunks), "raw 0-2, raw 3-6, raw 7-7, D 8-8");
}

// --- In bulk and byte by byte

/// What the rules make of a stream, a byte at a time; data of values are not looked at.
class ByteRules
{
public:
    explicit ByteRules(std::string_view bytes) : m_bytes(bytes) {}

    std::string walk()
    {
        std::size_t operatorStart = 0;
        for (;;) {
            const int tag = next();
            if (m_failure.empty() && tag == 0x42) {
                flush(m_at);
                return m_words;
            }
            if (m_failure.empty() && tag >= 0x41 && tag < 0xC0) {
                if (tag == 0x41 || tag == 0x43 || tag == 0x44)
                    take(tag, operatorStart);
                operatorStart = m_at;
            } else if (m_failure.empty()) {
                stepOver(tag);
            }
            if (!m_failure.empty())
                return m_failure;
        }
    }

private:
    int next()
    {
        if (m_at >= m_bytes.size()) {
            fail(endOfFile);
            return 0;
        }
        return static_cast<std::uint8_t>(m_bytes[m_at++]);
    }

    std::int64_t number(int bytes)
    {
        std::int64_t value = 0;
        for (int index = 0; index < bytes; ++index)
            value += std::int64_t{next()} << (8 * index);
        return value;
    }

    void fail(const std::string& message)
    {
        if (m_failure.empty())
            m_failure = message;
    }

    void advance(std::int64_t count)
    {
        if (!m_failure.empty())
            return;
        if (count <= 0)
            fail(assertion);
        else if (count <= static_cast<std::int64_t>(m_bytes.size() - m_at))
            m_at += static_cast<std::size_t>(count);
    }

    void stepOver(int tag)
    {
        constexpr std::array<int, 8> sizes{1, 2, 4, 2, 4, 4, -1, -1};
        if (tag == 0xFA || tag == 0xFB) {
            advance(number(tag == 0xFA ? 4 : 1));
            return;
        }
        std::int64_t size = -1;
        if (tag >= 0xC0 && tag < 0xF8)
            size = std::int64_t{sizes[static_cast<std::size_t>(tag % 8)]} << (tag / 16 % 4);
        if (tag == 0xFF || size < -1) {
            fail("Invalid control byte %02X / " + std::to_string(tag));
            return;
        }
        if (tag / 8 % 2 == 1)
            size *= length();
        if (size != 0)
            advance(size);
        const int id = next();
        if (id != 0xF8 && id != 0xF9)
            fail("Attribute expected instead %02X" + (id == 0 ? std::string() : " / " + std::to_string(id)));
        number(id == 0xF9 ? 2 : 1);
    }

    std::int64_t length()
    {
        const int type = next();
        if (type >= 0xC0 && type <= 0xC2)
            return number(type == 0xC0 ? 1 : type == 0xC1 ? 2 : 4);
        constexpr auto digits = "0123456789ABCDEF"sv;
        fail(std::string("Invalid array length type ") + digits[static_cast<std::size_t>(type / 16)] +
             digits[static_cast<std::size_t>(type % 16)]);
        return 0;
    }

    void flush(std::size_t end)
    {
        if (end > m_rawStart)
            add("raw", m_rawStart, end - 1);
        m_rawStart = end;
    }

    void take(int tag, std::size_t start)
    {
        flush(start);
        add(std::string(1, static_cast<char>(tag)), start, m_at - 1);
        m_rawStart = m_at;
    }

    void add(const std::string& word, std::size_t start, std::size_t end)
    {
        m_words += m_words.empty() ? "" : ", ";
        m_words += word + " " + std::to_string(start) + "-" + std::to_string(end);
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
    std::size_t m_rawStart = 0;
    std::string m_words;
    std::string m_failure;
};

/// An item of a stream: now and then one that is malformed or reaches far.
PclXlBytes randomItem(std::mt19937& random)
{
    constexpr std::array tags{0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xD0, 0xD1, 0xD2, 0xD3, 0xD5,
                              0xE0, 0xE1, 0xE2, 0xE3, 0xF1, 0xF2, 0xC0, 0xD3, 0xC1, 0xD1};
    const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
    // Taken for a tag, each byte of the data ends the stream or the value.
    const char filling = below(2) == 0 ? 'B' : '\xF8';
    const auto data = [&](std::int64_t size) { return std::string(static_cast<std::size_t>(size), filling); };
    const int tag = tags[random() % tags.size()];
    const int base = baseDataSize[static_cast<std::size_t>(tag)];
    PclXlBytes bytes;
    switch (below(40)) {
    case 0: return bytes.op(0x41 + 2 * below(2));
    case 1: return bytes.op(0x44);
    case 2: return bytes.embedded(data(below(64) != 0 ? 1 + below(300) : 0));
    case 3: return bytes.shortEmbedded(data(below(64) != 0 ? 1 + below(255) : 0));
    case 4: return bytes.op(tag).raw(data(base)).wideId(below(256), 2);
    case 5: return below(8) != 0 ? bytes.op(0x50) : bytes.op(below(256));
    case 6: return below(8) != 0 ? bytes.op(0x50) : bytes.array(tag | 8, below(100000), 4);
    case 7: {
        const int count = below(20);
        const int lengthBytes = 1 << below(3);
        return bytes.array(tag | 8, count, lengthBytes).raw(data(std::int64_t{base} * count)).id(2);
    }
    case 8:
    case 9:
    case 10:
    case 11: {
        const int count = below(256);
        return bytes.array(0xC8, count, 1).raw(data(count)).id(textData);
    }
    case 12:
    case 13:
    case 14:
    case 15: return bytes.op(0x48 + below(7));
    case 16:
    case 17:
    case 18: return bytes.op(0x50 + below(0x70));
    default: return bytes.value(tag, data(base), 2);
    }
}

std::string randomStream(std::mt19937& random, std::size_t size)
{
    PclXlBytes bytes;
    while (bytes.str().size() < size)
        bytes.raw(randomItem(random).str());
    return bytes.op(0x42).str();
}

TEST(PclXLParser, WalksInBulkAsTheRulesDoByteByByte)
{
    std::mt19937 random(1);

    for (int round = 0; round < 3000; ++round) {
        const std::string bytes = randomStream(random, random() % 1500);
        EXPECT_EQ(walked(bytes), ByteRules(bytes).walk()) << round;
    }
}

TEST(PclXLParser, WalksAnyBytesAsTheRulesDo)
{
    std::mt19937 random(2);

    for (int round = 0; round < 3000; ++round) {
        std::string bytes = randomStream(random, 400);
        bytes[random() % bytes.size()] = static_cast<char>(random());
        bytes.resize(random() % bytes.size());
        EXPECT_EQ(walked(bytes), ByteRules(bytes).walk()) << round;
    }
}

TEST(PclXLParser, WalksAcrossViewsWhereverTheyEnd)
{
    // The first view ends within each of these bytes once.
    const std::string tail = PclXlBytes()
                                 .text("some text", textData)
                                 .op(0xA8)
                                 .value(0xD3, "abcd", 76)
                                 .op(0x6B)
                                 .embedded(std::string(200, 'x'))
                                 .ubyte(2, 9)
                                 .op(0x43)
                                 .op(0x42)
                                 .str();
    SparseFile sparse;

    for (std::int64_t before = 0; before <= std::ssize(tail); ++before) {
        const std::int64_t start = viewSize - before;
        const std::string begin = PclXlBytes().op(0xFA).number(start - 5, 4).str();
        sparse.resize(start);
        sparse.writeAt(0, begin);
        sparse.writeAt(start, tail);
        JobFile file;
        file.open(sparse.path());

        const std::int64_t last = start + std::ssize(tail) - 1;
        // The operator 0x6B stands 22 bytes into the tail.
        const std::string page = std::to_string(start + 23) + "-" + std::to_string(last - 1);
        EXPECT_EQ(walked(file), "raw 0-" + std::to_string(start + 22) + ", C " + page + ", raw " +
                                    std::to_string(last) + "-" + std::to_string(last))
            << before;
        sparse.resize(0);
    }
}

TEST(PclXLParser, StepsOverDataOfGigabytesWithoutReadingThem)
{
    constexpr std::int64_t length = 0xFFFFFFFF;
    SparseFile sparse(PclXlBytes().op(0xB0).op(0xFA).number(length, 4).str());
    sparse.resize(6 + length);
    sparse.writeAt(6 + length, "CB");
    JobFile file;
    file.open(sparse.path());

    EXPECT_EQ(walked(file), "raw 0-0, C 1-4294967301, raw 4294967302-4294967302");
}

} // namespace
} // namespace JobParser
