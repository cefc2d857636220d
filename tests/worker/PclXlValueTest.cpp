#include "worker/PclXlValue.h"

#include <gtest/gtest.h>

#include "tests/worker/WalkerSupport.h"

namespace JobParser::Worker
{
namespace
{

using namespace std::string_view_literals;

struct Read {
    bool isRead;
    PclXlValue value;
    std::int64_t position;
};

Read read(int tag, std::string_view bytes, bool isBigEndian = false)
{
    OpenBody open(bytes);
    Read result{};
    result.isRead = result.value.read(*open.reader, static_cast<std::uint8_t>(tag), isBigEndian);
    result.position = open.reader->position();
    return result;
}

TEST(PclXlValue, ReadsEachType)
{
    EXPECT_EQ(read(0xC0, "\xFF"sv).value.number(), 255);
    EXPECT_EQ(read(0xC1, "\x01\x02"sv).value.number(), 0x0201);
    EXPECT_EQ(read(0xC2, "\x01\x00\x00\x80"sv).value.number(), 2147483649.0);
    EXPECT_EQ(read(0xC3, "\xFE\xFF"sv).value.number(), -2);
    EXPECT_EQ(read(0xC4, "\xFD\xFF\xFF\xFF"sv).value.number(), -3);
    EXPECT_EQ(read(0xC5, "\x00\x00\xC0\x3F"sv).value.number(), 1.5);
}

TEST(PclXlValue, ReadsTheOtherByteOrder)
{
    EXPECT_EQ(read(0xC1, "\x01\x02"sv, true).value.number(), 0x0102);
}

TEST(PclXlValue, ReadsTwoFourAndManyNumbers)
{
    EXPECT_EQ(read(0xD1, "\x01\x00\x02\x00"sv).value.number(1), 2);
    EXPECT_EQ(read(0xE0, "\x01\x02\x03\x04"sv).value.number(3), 4);
    const Read array = read(0xC8, "\xC1\x03\x00"
                                  "abcd"sv);
    EXPECT_EQ(array.value.text(), "abc");
    EXPECT_EQ(array.value.count(), 3U);
    EXPECT_EQ(array.position, 6);
}

TEST(PclXlValue, TellsPartsOfTheMost)
{
    EXPECT_EQ(read(0xC0, "\xFF"sv).value.part(0), 1);
    EXPECT_EQ(read(0xC1, "\xFF\xFF"sv).value.part(0), 1);
    EXPECT_EQ(read(0xC5, "\x00\x00\x00\x3F"sv).value.part(0), 0.5);
}

TEST(PclXlValue, HasNoNumberWhereThereIsNone)
{
    EXPECT_EQ(read(0xC0, "\x05"sv).value.number(1), 0);
    EXPECT_EQ(PclXlValue().integer(), 0);
    EXPECT_EQ(read(0xC5, "\x00\x00\xC0\x7F"sv).value.number(), 0);
}

TEST(PclXlValue, RejectsOtherTagsAndLengths)
{
    EXPECT_FALSE(read(0xC6, "\x01\x02\x03\x04"sv).isRead);
    EXPECT_FALSE(read(0xD8, "\x01\x02\x03\x04"sv).isRead);
    EXPECT_FALSE(read(0xC8, "\xC3\x01\x00"sv).isRead);
    EXPECT_FALSE(read(0xC8, ""sv).isRead);
}

TEST(PclXlValue, StepsOverTheRestOfALongArray)
{
    const std::string bytes = std::string("\xC1\x88\x13", 3) + std::string(5000, 'x') + "y";
    const Read array = read(0xC8, bytes);

    EXPECT_TRUE(array.isRead);
    EXPECT_EQ(array.value.count(), 4096U);
    EXPECT_EQ(array.position, 5003);
}

TEST(PclXlValue, RejectsALongArrayThatIsCutOff)
{
    EXPECT_FALSE(read(0xC8, "\xC2\xFF\xFF\xFF\x7F"
                            "abc"sv)
                     .isRead);
}

} // namespace
} // namespace JobParser::Worker
