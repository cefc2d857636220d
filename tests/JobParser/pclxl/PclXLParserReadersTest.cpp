#include <array>
#include <gtest/gtest.h>
#include <string>

#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "JobParser/pclxl/JobChunkPclXLAttribute.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/pclxl/Operator.h"
#include "JobParser/pclxl/PclXLParser.h"
#include "tests/JobParser/pclxl/PclXlWalk.h"
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

} // namespace
} // namespace JobParser
