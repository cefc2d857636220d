#include "Torv/Encoding.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace Torv::Encoding
{
namespace
{

struct Base64Row {
    const char* bytes;
    const char* text;
};

constexpr std::array<Base64Row, 8> base64Rows = {{{"", ""},
                                                  {"f", "Zg=="},
                                                  {"fo", "Zm8="},
                                                  {"foo", "Zm9v"},
                                                  {"foob", "Zm9vYg=="},
                                                  {"fooba", "Zm9vYmE="},
                                                  {"foobar", "Zm9vYmFy"},
                                                  {"\xFB\xFF\xBF", "+/+/"}}};

TEST(Encoding, ConvertsToBase64AndBack)
{
    for (const Base64Row& row : base64Rows) {
        EXPECT_EQ(base64Encode(row.bytes), row.text);
        EXPECT_EQ(base64Decode(row.text), row.bytes);
    }
}

TEST(Encoding, WritesLongBase64InOneLine)
{
    const std::string text = base64Encode(std::string(300, '\0'));

    EXPECT_EQ(text, std::string(400, 'A'));
    EXPECT_EQ(base64Decode(text), std::string(300, '\0'));
}

TEST(Encoding, SkipsWhiteSpaceInBase64)
{
    EXPECT_EQ(base64Decode(" Z m\t9\r\nv\v\fYg = ="), "foob");
}

TEST(Encoding, EndsBase64AtThePaddingOrAForeignByte)
{
    EXPECT_EQ(base64Decode("Zm9v=Zm9v"), "foo");
    EXPECT_EQ(base64Decode("Zm9v-Zm9v"), "foo");
    EXPECT_EQ(base64Decode("Zm9v\xFFZm9v"), "foo");
    EXPECT_EQ(base64Decode(std::string_view("Zm9v\0Zm9v", 9)), "foo");
    EXPECT_EQ(base64Decode("===="), "");
    EXPECT_EQ(base64Decode("!"), "");
}

TEST(Encoding, KeepsTheWholeBytesOfUnpaddedBase64)
{
    EXPECT_EQ(base64Decode("Zm9vY"), "foo");
    EXPECT_EQ(base64Decode("Zm9vYg"), "foob");
    EXPECT_EQ(base64Decode("Zm9vYmE"), "fooba");
    EXPECT_EQ(base64Decode("Z"), "");
    EXPECT_EQ(base64Decode("Zh"), "f");
}

TEST(Encoding, KeepsAllBytesInBase64)
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
        EXPECT_EQ(base64Decode(base64Encode(bytes)), bytes);
    }
}

TEST(Encoding, WritesTwoHexadecimalDigitsForEachByte)
{
    const std::array<std::uint8_t, 5> bytes = {0x00, 0x0F, 0x9A, 0xF0, 0xFF};

    EXPECT_EQ(hexEncode(bytes), "000f9af0ff");
    EXPECT_EQ(hexEncode({}), "");
}

struct Utf8Row {
    const char* name;
    const char* bytes;
    bool isUtf8;
    const char* text; ///< As appendAsUtf8 gives it.
};

class Utf8Form : public testing::TestWithParam<Utf8Row>
{
};

TEST_P(Utf8Form, IsKeptOrReplacedByteByByte)
{
    std::string text;

    appendAsUtf8(text, GetParam().bytes);

    EXPECT_EQ(isUtf8(GetParam().bytes), GetParam().isUtf8);
    EXPECT_EQ(text, GetParam().text);
    EXPECT_EQ(bytesFromUtf8(text), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Encoding, Utf8Form,
    testing::Values(
        Utf8Row{"Ascii", "a\x7F", true, "a\x7F"}, Utf8Row{"FirstOfTwo", "\xC2\x80", true, "\xC2\x80"},
        Utf8Row{"LastOfTwo", "\xDF\xBF", true, "\xDF\xBF"},
        Utf8Row{"FirstOfThree", "\xE0\xA0\x80", true, "\xE0\xA0\x80"},
        Utf8Row{"BeforeSurrogates", "\xED\x9F\xBF", true, "\xED\x9F\xBF"},
        Utf8Row{"BehindSurrogates", "\xEE\x80\x80", true, "\xEE\x80\x80"},
        Utf8Row{"LastOfThree", "\xEF\xBF\xBF", true, "\xEF\xBF\xBF"},
        Utf8Row{"FirstOfFour", "\xF0\x90\x80\x80", true, "\xF0\x90\x80\x80"},
        Utf8Row{"LastOfFour", "\xF4\x8F\xBF\xBF", true, "\xF4\x8F\xBF\xBF"},
        Utf8Row{"BeforeStandIns", "\xEE\xBD\xBF", true, "\xEE\xBD\xBF"},
        Utf8Row{"BehindStandIns", "\xEF\x80\x80", true, "\xEF\x80\x80"},
        Utf8Row{"FirstStandIn", "\xEE\xBE\x80", true, "\xEE\xBF\xAE\xEE\xBE\xBE\xEE\xBE\x80"},
        Utf8Row{"LastStandIn", "\xEE\xBF\xBF", true, "\xEE\xBF\xAE\xEE\xBE\xBF\xEE\xBE\xBF"},
        Utf8Row{"LoneContinuation", "\x80z", false, "\xEE\xBE\x80z"},
        Utf8Row{"OverlongTwo", "\xC0\x80", false, "\xEE\xBF\x80\xEE\xBE\x80"},
        Utf8Row{"OverlongTwoHigher", "\xC1\xBF", false, "\xEE\xBF\x81\xEE\xBE\xBF"},
        Utf8Row{"OverlongThree", "\xE0\x9F\xBF", false, "\xEE\xBF\xA0\xEE\xBE\x9F\xEE\xBE\xBF"},
        Utf8Row{"OverlongFour", "\xF0\x8F\xBF\xBF", false,
                "\xEE\xBF\xB0\xEE\xBE\x8F\xEE\xBE\xBF\xEE\xBE\xBF"},
        Utf8Row{"Surrogate", "\xED\xA0\x80", false, "\xEE\xBF\xAD\xEE\xBE\xA0\xEE\xBE\x80"},
        Utf8Row{"AboveTheLast", "\xF4\x90\x80\x80", false,
                "\xEE\xBF\xB4\xEE\xBE\x90\xEE\xBE\x80\xEE\xBE\x80"},
        Utf8Row{"LeadF5", "\xF5\x80", false, "\xEE\xBF\xB5\xEE\xBE\x80"},
        Utf8Row{"CutTwo", "\xC3", false, "\xEE\xBF\x83"},
        Utf8Row{"CutThree", "\xE2\x82", false, "\xEE\xBF\xA2\xEE\xBE\x82"},
        Utf8Row{"CutFourThenAscii", "\xF0\x9F\x98z", false, "\xEE\xBF\xB0\xEE\xBE\x9F\xEE\xBE\x98z"},
        Utf8Row{"CutThreeThenWhole", "\xE2\x82\xC3\xA4", false, "\xEE\xBF\xA2\xEE\xBE\x82\xC3\xA4"}),
    [](const auto& row) { return row.param.name; });

TEST(Encoding, AppendsBehindWhatIsThere)
{
    std::string out = "x";

    appendAsUtf8(out, "y\xFF");

    EXPECT_EQ(out, "xy\xEE\xBF\xBF");
}

TEST(Encoding, TakesEmptyTexts)
{
    std::string out;
    appendAsUtf8(out, {});

    EXPECT_EQ(out, "");
    EXPECT_EQ(bytesFromUtf8({}), "");
    EXPECT_TRUE(isUtf8({}));
    EXPECT_EQ(base64Encode({}), "");
    EXPECT_EQ(base64Decode({}), "");
}

TEST(Encoding, ReadsTextsThatAreNoUtf8WithoutHarm)
{
    EXPECT_EQ(bytesFromUtf8("\xEE"), "\xEE");
    EXPECT_EQ(bytesFromUtf8("\xEE\xBE"), "\xEE\xBE");
    EXPECT_EQ(bytesFromUtf8("a\xEE\xEE\xBE\x80"), "a\xEE\x80");
}

TEST(Encoding, MakesAllBytesUtf8Losslessly)
{
    std::mt19937 random(7);
    for (int round = 0; round < 5000; ++round) {
        std::string bytes;
        for (auto size = random() % 40; size != 0; --size)
            bytes += static_cast<char>(random() % 2 == 0 ? 0xE0 + random() % 32 : random() % 256);
        std::string text;
        appendAsUtf8(text, bytes);

        ASSERT_TRUE(isUtf8(text));
        ASSERT_EQ(bytesFromUtf8(text), bytes);
    }
}

} // namespace
} // namespace Torv::Encoding
