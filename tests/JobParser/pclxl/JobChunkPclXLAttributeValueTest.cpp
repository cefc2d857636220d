#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"

#include <cmath>
#include <gtest/gtest.h>

#include "JobParser/JobParserException.h"
#include "tests/support/ChunkForms.h"
#include "tests/support/ThrowingAssertions.h"

#include "Torv/GenericException.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace ChunkForms;
using namespace std::string_view_literals;
using Kind = Torv::Variant::Kind;

JobChunkPclXLAttributeValue value(int type, std::string_view bytes, int lengthType = 255)
{
    return {static_cast<tag_t>(type), {bytes.begin(), bytes.end()}, static_cast<tag_t>(lengthType)};
}

int lengthTypeFor(std::size_t size)
{
    return static_cast<int>(value(0xC8, std::string(size, 'x')).array_length_type);
}

TEST(JobChunkPclXLAttributeValue, IsEmptyAsNone)
{
    EXPECT_TRUE(none.data.empty());
    EXPECT_EQ(none.array_length_type, noLengthType);
    EXPECT_EQ(none.firstByte(), 0);
    EXPECT_EQ(value(0xC0, "\xFE\x01").firstByte(), 254);
}

TEST(JobChunkPclXLAttributeValue, WritesItsTypeAndItsBytes)
{
    EXPECT_EQ(saved(value(0xC0, "\x02")), "\xC0\x02");
    EXPECT_EQ(value(0xC0, "\x02").size(), 2);
    EXPECT_EQ(saved(value(0xD1, "abcd")), "\xD1"
                                          "abcd");
    EXPECT_EQ(value(0xD1, "abcd").size(), 5);
}

TEST(JobChunkPclXLAttributeValue, WritesAnArrayWithTheNumberOfItsElements)
{
    EXPECT_EQ(saved(value(0xC8, "abc", 192)), "\xC8\xC0\x03"
                                              "abc");
    EXPECT_EQ(value(0xC8, "abc", 192).size(), 6);
    EXPECT_EQ(saved(value(0xC9, "abcd", 193)), "\xC9\xC1\x02\0abcd"sv);
    EXPECT_EQ(value(0xC9, "abcd", 193).size(), 8);
    EXPECT_EQ(saved(value(0xC8, "abc", 194)), "\xC8\xC2\x03\0\0\0abc"sv);
    EXPECT_EQ(value(0xC8, "abc", 194).size(), 9);
    EXPECT_EQ(saved(value(0xDA, "12345678", 192)), "\xDA\xC0\x01"
                                                   "12345678");
    EXPECT_EQ(saved(value(0xC8, std::string(0x1234, 'x'), 193)).substr(0, 4), "\xC8\xC1\x34\x12");
}

TEST(JobChunkPclXLAttributeValue, ChoosesALengthTypeByTheNumberOfItsBytes)
{
    EXPECT_EQ(lengthTypeFor(0), 192);
    EXPECT_EQ(lengthTypeFor(255), 192);
    EXPECT_EQ(lengthTypeFor(256), 193);
    EXPECT_EQ(lengthTypeFor(65535), 193);
    EXPECT_EQ(lengthTypeFor(65536), 194);
    EXPECT_EQ(static_cast<int>(value(0xC9, std::string(256, 'x')).array_length_type), 193)
        << "of bytes, not of elements";
    EXPECT_EQ(static_cast<int>(value(0xC0, "x").array_length_type), 255) << "no array has none";
}

TEST(JobChunkPclXLAttributeValue, ReadsAsTextIfItIsATextOfOneOrTwoByteCharacters)
{
    EXPECT_EQ(value(0xC8, "a\0\xFF"sv).ValueAsString(), "a\0\xFF"sv);
    EXPECT_EQ(value(0xC8, "").ValueAsString(), "");
    EXPECT_EQ(value(0xC9, "a\0\xFC\0\xAC\x20"sv).ValueAsString(), "a\xC3\xBC\xE2\x82\xAC");
    EXPECT_EQ(value(0xC9, "\x3D\xD8\x00\xDE"sv).ValueAsString(), "\xF0\x9F\x98\x80")
        << "a pair of surrogates";
    EXPECT_EQ(value(0xC9, "\x3D\xD8"sv).ValueAsString(), "\xEF\xBF\xBD") << "a surrogate alone";
    EXPECT_EQ(value(0xC9, "a\0b"sv).ValueAsString(), "a") << "an odd byte is none";
}

TEST(JobChunkPclXLAttributeValue, RefusesToReadOtherTypesAsText)
{
    for (const int type : {0xC0, 0xC1, 0xCA, 0xCB, 0xD8, 0xE8, 0x08}) {
        try {
            value(type, "ab").ValueAsString();
            FAIL() << type;
        } catch (const Torv::GenericException& error) {
            EXPECT_STREQ(error.what(), "The value of attribute is not a string!");
        }
    }
}

TEST(JobChunkPclXLAttributeValue, ReadsAsTheNumberOfItsType)
{
    EXPECT_EQ(value(0xC0, "\xFE").toVariant().toInt(), 254);
    EXPECT_EQ(value(0xC1, "\xFE\xFF").toVariant().toInt(), 65534);
    EXPECT_EQ(value(0xC2, "\xFE\xFF\xFF\xFF").toVariant().toInt64(), 4294967294);
    EXPECT_EQ(value(0xC3, "\xFE\xFF").toVariant().toInt(), -2);
    EXPECT_EQ(value(0xC4, "\xFE\xFF\xFF\xFF").toVariant().toInt(), -2);
    EXPECT_EQ(value(0xC5, "\0\0\x20\xC0"sv).toVariant().toReal(), -2.5);
    EXPECT_TRUE(std::isnan(value(0xC5, "\0\0\xC0\x7F"sv).toVariant().toReal()));
    EXPECT_EQ(value(0xC8, "\x07").toVariant().toInt(), 7) << "an array of one";
}

TEST(JobChunkPclXLAttributeValue, ReadsAsAnArrayUnlessItHasOneElement)
{
    EXPECT_EQ(value(0xD1, "\x01\0\x02\0"sv).toVariant().toJson(), "[1,2]");
    EXPECT_EQ(value(0xE3, "\xFF\xFF\x01\0\x02\0\x03\0"sv).toVariant().toJson(), "[-1,1,2,3]");
    EXPECT_EQ(value(0xC9, "").toVariant().toJson(), "[]");
    EXPECT_EQ(value(0xCA, "\x01\0\0\0\x02\0\0\0\x03"sv).toVariant().toJson(), "[1,2]") << "the rest is none";
    EXPECT_EQ(value(0xC1, "\x01\x02\x03").toVariant().toJson(), "513");
    EXPECT_EQ(value(0xCD, "\0\0\x80\x3F\0\0\0\x40"sv).toVariant().toJson(), "[1.0,2.0]");
}

TEST(JobChunkPclXLAttributeValue, ReadsBytesAsAStringUnlessThereIsOne)
{
    for (const int type : {0xC0, 0xC8, 0xD0, 0xC6, 0xC7, 0x08}) {
        EXPECT_EQ(value(type, "ab").toVariant().toString(), "ab") << type;
        EXPECT_EQ(value(type, "").toVariant().toString(), "") << type;
        EXPECT_EQ(value(type, "\x80").toVariant().toInt(), 128) << type;
    }
}

TEST(JobChunkPclXLAttributeValue, ReadsAsElementsOfAGivenType)
{
    const auto bytes = value(0xC8, "\xFF\xFF\x01\0"sv);

    EXPECT_EQ(bytes.read<std::uint16_t>().toJson(), "[65535,1]");
    EXPECT_EQ(bytes.read<std::int16_t>().toJson(), "[-1,1]");
    EXPECT_EQ(bytes.read<std::uint32_t>().toJson(), "131071");
    EXPECT_EQ(bytes.read<std::int32_t>().toJson(), "131071");
    EXPECT_EQ(bytes.read<float>().kind(), Kind::Real);
}

TEST(JobChunkPclXLAttributeValue, DumpsItsName)
{
    auto chunk = value(0xC0, "a");

    EXPECT_EQ(dumped(chunk), "AttributeValue\n");
}

TEST(JobChunkPclXLAttributeValue, ComesBackFromItsData)
{
    const std::string number = R"({"value":[0,255,16],"data_type":193})";
    const std::string array = R"({"value":[97,98],"data_type":201,"array_length_type":194})";

    EXPECT_EQ(json(value(0xC1, "\0\xFF\x10"sv)), number);
    EXPECT_EQ(json(value(0xC9, "ab", 194)), array);
    EXPECT_EQ(json(*made<JobChunkPclXLAttributeValue>(number)), number);
    EXPECT_EQ(json(*made<JobChunkPclXLAttributeValue>(array)), array);
    EXPECT_EQ(json(none), R"({"value":[],"data_type":0})");
}

TEST(JobChunkPclXLAttributeValue, CutsTheNumbersOfItsDataToBytes)
{
    EXPECT_EQ(json(*made<JobChunkPclXLAttributeValue>(R"({"value":[256,-1,511.5],"data_type":448})")),
              R"({"value":[0,255,255],"data_type":192})");
}

std::string bytesOfData(std::size_t count)
{
    std::string list;
    for (std::size_t index = 0; index < count; ++index)
        list += index == 0 ? "7" : ",7";
    return list;
}

int lengthTypeOfData(std::size_t count, const std::string& lengthType)
{
    const auto chunk = made<JobChunkPclXLAttributeValue>("{\"value\":[" + bytesOfData(count) +
                                                         "],\"data_type\":200" + lengthType + "}");
    return static_cast<int>(chunk->array_length_type);
}

TEST(JobChunkPclXLAttributeValue, ChoosesALengthTypeForDataWithoutOne)
{
    for (const std::string absent : {"", ",\"array_length_type\":0", ",\"array_length_type\":255"}) {
        EXPECT_EQ(lengthTypeOfData(200, absent), 192) << absent;
        EXPECT_EQ(lengthTypeOfData(300, absent), 193) << absent;
        EXPECT_EQ(lengthTypeOfData(70000, absent), 194) << absent;
    }
    EXPECT_EQ(lengthTypeOfData(2, ",\"array_length_type\":194"), 194);
}

TEST(JobChunkPclXLAttributeValue, RefusesDataOfAnArrayThatCannotBeWritten)
{
    for (const char* end : {R"(200,"array_length_type":195})", R"(200,"array_length_type":191})",
                            R"(200,"array_length_type":1})", R"(200,"array_length_type":448})",
                            R"(200,"array_length_type":256})", R"(200,"array_length_type":-1})", "8}", "72}",
                            "206}", "207}", "222}", "248}", "255}"}) {
        try {
            made<JobChunkPclXLAttributeValue>(std::string(R"({"value":[1],"data_type":)") + end);
            FAIL() << end;
        } catch (const JobParserException& error) {
            EXPECT_STREQ(error.what(), "Invalid attribute value in metadata");
        }
    }
    EXPECT_NO_THROW(
        made<JobChunkPclXLAttributeValue>(R"({"value":[1],"data_type":192,"array_length_type":1})"))
        << "no array has a length";
}

TEST(JobChunkPclXLAttributeValue, RefusesDataWithoutItsKeys)
{
    for (const char* dto :
         {"{}", R"({"value":[1]})", R"({"data_type":192})", R"({"value":1,"data_type":192})",
          R"({"value":"ab","data_type":192})", R"({"value":["1"],"data_type":192})",
          R"({"value":[4294967296],"data_type":192})", R"({"value":[],"data_type":"C0"})",
          R"({"value":[],"data_type":200,"array_length_type":null})", "[]"})
        EXPECT_THROW(made<JobChunkPclXLAttributeValue>(dto), Torv::VariantInvalidOperationException) << dto;
}

TEST(JobChunkPclXLAttributeValue, AssertsThatAnArrayCanBeWritten)
{
    const ThrowingAssertions throwing;

    EXPECT_THROW(saved(value(0x08, "")), Torv::GenericException);
    EXPECT_THROW(saved(value(0x48, "")), Torv::GenericException);
    EXPECT_THROW(saved(value(0xC8, "", 195)), Torv::GenericException);
}

TEST(JobChunkPclXLAttributeValueDeathTest, DiesOnAnArrayOfATypeWithoutASize)
{
    EXPECT_DEATH(saved(value(0x48, "")), "baseSizeOf\\(data_type\\) > 0");
}

} // namespace
} // namespace JobParser
