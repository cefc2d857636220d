#include "JobParser/languages/ChunkPclEsc.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "JobParser/JobParserException.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "JobParser/model/UnserializationContext.h"
#include "tests/support/OpenJob.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

ChunkPclEsc sequence(std::int32_t opGroupParam, std::string_view value = {}, std::int64_t binOffset = 0,
                     std::int64_t binSize = 0)
{
    ChunkPclEsc chunk;
    chunk.opGroupParam = opGroupParam;
    std::ranges::copy(value, chunk.value.begin());
    chunk.binOffset = binOffset;
    chunk.binSize = binSize;
    return chunk;
}

ChunkPclEsc parsed(const std::string& dto)
{
    UnserializationContext context;
    return {context, Torv::Json::parse(dto)};
}

std::string dumped(ChunkPclEsc chunk)
{
    Torv::Log::LogString log;
    chunk.dump(log);
    return log.getAndClear();
}

struct Written {
    ChunkPclEsc chunk;
    std::string_view bytes;
};

TEST(ChunkPclEsc, WritesAsManyBytesAsItSays)
{
    OpenJob job("0123456789"sv);
    const std::array<Written, 6> rows{{
        {sequence(0x450000), "\x1B"
                             "E"},
        {sequence(0x266C41, "26"), "\x1B&l26A"},
        {sequence(0x266C41), "\x1B&lA"},
        {sequence(0x2A6257, "3", 2, 3), "\x1B*b3W234"},
        {sequence(0x266C60, "-1.5"), "\x1B&l-1.5`"},
        {sequence(0x396C00, "1"), "\x1B"
                                  "9l1\0"sv},
    }};

    for (const Written& row : rows) {
        Torv::IO::StringStream stream;
        row.chunk.save(job.file, stream);

        EXPECT_EQ(stream.str(), row.bytes);
        EXPECT_EQ(row.chunk.size(), static_cast<std::int64_t>(row.bytes.size()));
    }
}

TEST(ChunkPclEsc, HasAPayloadOnlyWhereItsSequenceHasOne)
{
    constexpr std::array<std::int32_t, 12> withPayload{0x297357, 0x287357, 0x286657, 0x266E57,
                                                       0x2A6257, 0x2A6757, 0x2A6256, 0x2A7657,
                                                       0x2A6C57, 0x2A6F57, 0x2A6D57, 0x267058};
    constexpr std::array<std::int32_t, 7> without{0x266C41, 0x450000, 0,       0x2A6277,
                                                  0x287358, 0x2A7257, 0x266C57};

    for (const std::int32_t code : withPayload) {
        ChunkPclEsc chunk = sequence(code, "17");
        chunk.process();
        EXPECT_EQ(chunk.binSize, 17) << code;
    }
    for (const std::int32_t code : without) {
        ChunkPclEsc chunk = sequence(code, "17");
        chunk.process();
        EXPECT_EQ(chunk.binSize, 0) << code;
    }
    EXPECT_EQ(ChunkPclEsc::binDataCmd.size(), 13U);
    EXPECT_EQ(ChunkPclEsc::binDataCmd.back(), 0);
}

TEST(ChunkPclEsc, RefusesAPayloadOfNegativeSize)
{
    for (const char* value : {"-1", "2147483648", "4294967295", "99999999999999"}) {
        ChunkPclEsc chunk = sequence(0x2A6257, value);
        try {
            chunk.process();
            if (value == "99999999999999"sv)
                EXPECT_EQ(chunk.binSize, 276447231) << "the low half of the number";
            else
                ADD_FAILURE() << value;
        } catch (const JobParserException& error) {
            EXPECT_STREQ(error.what(), "PCL: Negative binary data size");
        }
    }
}

TEST(ChunkPclEsc, TakesANewValue)
{
    ChunkPclEsc chunk = sequence(0x266C58, "12345678901234");

    chunk.setValue(7);
    EXPECT_STREQ(chunk.value.data(), "7");
    EXPECT_EQ(chunk.size(), 5);
    chunk.setValue(std::numeric_limits<int>::min());
    EXPECT_STREQ(chunk.value.data(), "-2147483648");
}

TEST(ChunkPclEsc, KeepsItsFieldsAsData)
{
    SerializationContext context;

    EXPECT_EQ(sequence(0x2A6257, "3", 5000000000, 3).toJson(context),
              R"({"opGroupParam":2777687,"binOffset":5000000000,"binSize":3,"value":"3"})");
    EXPECT_EQ(sequence(0x450000).toJson(context),
              R"({"opGroupParam":4521984,"binOffset":0,"binSize":0,"value":""})");
}

TEST(ChunkPclEsc, IsReadBackFromItsData)
{
    SerializationContext context;
    const std::string dto = R"({"opGroupParam":2777687,"binOffset":5000000000,"binSize":3,"value":"3"})";

    EXPECT_EQ(parsed(dto).toJson(context), dto);
}

std::string valueReadBack(const std::string& value)
{
    return parsed(R"({"opGroupParam":1,"binOffset":0,"binSize":0,"value":")" + value + "\"}").value.data();
}

TEST(ChunkPclEsc, ReadsAValueOfSixteenAndMoreCharactersAsNone)
{
    EXPECT_EQ(valueReadBack("12345678901234"), "12345678901234");
    EXPECT_EQ(valueReadBack("123456789012345"), "123456789012345");
    EXPECT_EQ(valueReadBack("1234567890123456"), "");
    EXPECT_EQ(valueReadBack("12345678901234567"), "");
    EXPECT_EQ(valueReadBack(std::string(100000, '1')), "");
    EXPECT_EQ(valueReadBack("12\\u00003456789012345678"), "12") << "a zero byte ends it";
}

TEST(ChunkPclEsc, RejectsDataThatMakeNoSenseWhenItIsRead)
{
    EXPECT_THROW(parsed(R"({"opGroupParam":1,"binOffset":0,"binSize":-1,"value":""})"), JobParserException);
    for (const char* dto : {"{}", R"({"opGroupParam":1,"binOffset":0,"binSize":0})",
                            R"({"opGroupParam":"1","binOffset":0,"binSize":0,"value":""})",
                            R"({"binOffset":0,"binSize":0,"value":""})", "[]"})
        EXPECT_THROW(parsed(dto), Torv::VariantInvalidOperationException) << dto;
}

TEST(ChunkPclEsc, CountsThePayloadOfAnySizeWithoutOverflow)
{
    EXPECT_NO_FATAL_FAILURE(sequence(0x2A6257, "3", 0, std::numeric_limits<std::int64_t>::max()).size());
}

TEST(ChunkPclEsc, ThrowsForAPayloadThatRunsPastTheEndOfTheFile)
{
    OpenJob job("abc"sv);
    Torv::IO::StringStream stream;

    EXPECT_THROW(sequence(0x2A6257, "9", 1, 9).save(job.file, stream), UnexpectedEndOfFileException);
}

TEST(ChunkPclEsc, DumpsALineOfItsParts)
{
    EXPECT_EQ(dumped(sequence(0x450000)), "ESC E\n");
    EXPECT_EQ(dumped(sequence(0x266C41, "26")), "ESC & l 26 A\n");
    EXPECT_EQ(dumped(sequence(0x2A6257, "3", 0x1234ABCD, 3)),
              "ESC * b 3 W - binary at 0x1234ABCD, size 0x3\n");
}

TEST(ChunkPclEscDeathTest, AssertsThatAPayloadHasAGroup)
{
    EXPECT_DEATH(dumped(sequence(0x450000, "", 0, 3)), "m_group");
}

} // namespace
} // namespace JobParser
