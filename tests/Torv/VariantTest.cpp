#include "Torv/Variant.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "Torv/Json/Json.h"
#include "Torv/VariantInvalidOperationException.h"
#include "Torv/VariantIterator.h"

namespace Torv
{
namespace
{

using Kind = Variant::Kind;

std::string messageOf(const Variant& value, std::string_view key)
{
    try {
        value[key];
    } catch (const VariantInvalidOperationException& exception) {
        return exception.what();
    }
    return "nothing was thrown";
}

struct KindRow {
    const char* text;
    Kind kind;
    const char* json;
};

class ParsedKind : public testing::TestWithParam<KindRow>
{
};

TEST_P(ParsedKind, FollowsTheTextAndIsWrittenBack)
{
    const Variant value = Json::parse(GetParam().text);

    EXPECT_EQ(value.kind(), GetParam().kind);
    EXPECT_EQ(value.toJson(), GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(
    Variant, ParsedKind,
    testing::Values(KindRow{"null", Kind::Null, "null"}, KindRow{"true", Kind::Boolean, "true"},
                    KindRow{"false", Kind::Boolean, "false"}, KindRow{"0", Kind::Int32, "0"},
                    KindRow{"-2147483648", Kind::Int32, "-2147483648"},
                    KindRow{"2147483647", Kind::Int32, "2147483647"},
                    KindRow{"2147483648", Kind::Int64, "2147483648"},
                    KindRow{"-2147483649", Kind::Int64, "-2147483649"},
                    KindRow{"9223372036854775807", Kind::Int64, "9223372036854775807"},
                    KindRow{"-9223372036854775808", Kind::Int64, "-9223372036854775808"},
                    KindRow{"9223372036854775808", Kind::UInt64, "9223372036854775808"},
                    KindRow{"18446744073709551615", Kind::UInt64, "18446744073709551615"},
                    KindRow{"1.50", Kind::Real, "1.5"}, KindRow{"0.1", Kind::Real, "0.1"},
                    KindRow{"1e2", Kind::Real, "100.0"}, KindRow{"-0.0", Kind::Real, "-0.0"},
                    KindRow{"123456789012345680000.0", Kind::Real, "123456789012345683968.0"},
                    KindRow{"1e300", Kind::Real, "1e+300"}, KindRow{R"("a")", Kind::String, R"("a")"},
                    KindRow{" [ 1 , [ ] ] ", Kind::Array, "[1,[]]"},
                    KindRow{R"({ "a" : { } , "b" : [ { } ] })", Kind::Object, R"({"a":{},"b":[{}]})"}));

TEST(Variant, IsNullUnlessToldOtherwise)
{
    const Variant value;

    EXPECT_EQ(value.kind(), Kind::Null);
    EXPECT_TRUE(value.isNull());
    EXPECT_EQ(value.toJson(), "null");
}

TEST(Variant, TakesTheKindOfWhatItIsMadeFrom)
{
    EXPECT_EQ(Variant(true).kind(), Kind::Boolean);
    EXPECT_EQ(Variant(std::int32_t{-1}).kind(), Kind::Int32);
    EXPECT_EQ(Variant(std::int16_t{-1}).kind(), Kind::Int32);
    EXPECT_EQ(Variant(std::uint32_t{1}).kind(), Kind::UInt32);
    EXPECT_EQ(Variant(1L).kind(), Kind::Int64);
    EXPECT_EQ(Variant(1LL).kind(), Kind::Int64);
    EXPECT_EQ(Variant(1UL).kind(), Kind::UInt64);
    EXPECT_EQ(Variant(1ULL).kind(), Kind::UInt64);
    EXPECT_EQ(Variant(1.0F).kind(), Kind::Real);
    EXPECT_EQ(Variant("text").kind(), Kind::String);
    EXPECT_EQ(Variant(std::string("text")).kind(), Kind::String);
    EXPECT_EQ(Variant(std::vector<Variant>{}).kind(), Kind::Array);
}

TEST(Variant, CountsFourKindsAsIntegers)
{
    EXPECT_TRUE(Variant(std::int32_t{1}).isInteger());
    EXPECT_TRUE(Variant(std::uint32_t{1}).isInteger());
    EXPECT_TRUE(Variant(1LL).isInteger());
    EXPECT_TRUE(Variant(1ULL).isInteger());
    EXPECT_FALSE(Variant(1.0).isInteger());
    EXPECT_FALSE(Variant(true).isInteger());
    EXPECT_FALSE(Variant("1").isInteger());
    EXPECT_FALSE(Variant().isInteger());
}

TEST(Variant, ConvertsNumbersThatFit)
{
    EXPECT_EQ(Variant(7LL).toInt(), 7);
    EXPECT_EQ(Variant(std::uint32_t{2147483647}).toInt(), 2147483647);
    EXPECT_EQ(Variant(9223372036854775807ULL).toInt64(), 9223372036854775807LL);
    EXPECT_EQ(Variant(std::int32_t{-5}).toInt64(), -5);
    EXPECT_EQ(Variant(3).toReal(), 3.0);
    EXPECT_EQ(Variant(2.5).toReal(), 2.5);
}

TEST(Variant, CutsRealsTowardZero)
{
    EXPECT_EQ(Variant(2.9).toInt(), 2);
    EXPECT_EQ(Variant(-2.9).toInt(), -2);
    EXPECT_EQ(Variant(2147483647.5).toInt(), 2147483647);
    EXPECT_EQ(Variant(-2147483648.5).toInt(), -2147483647 - 1);
    EXPECT_EQ(Variant(-9223372036854775808.0).toInt64(), std::numeric_limits<long long>::min());
}

TEST(Variant, RefusesNumbersThatDoNotFit)
{
    EXPECT_THROW(Variant(2147483648LL).toInt(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(std::uint32_t{4294967295}).toInt(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(9223372036854775808ULL).toInt64(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(2147483648.0).toInt(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(9223372036854775808.0).toInt64(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(std::numeric_limits<double>::quiet_NaN()).toInt(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(std::numeric_limits<double>::infinity()).toInt64(),
                 VariantInvalidOperationException);
}

TEST(Variant, RefusesConversionsOfOtherKinds)
{
    const Variant parsed = Json::parse(R"({"s":"1","a":[],"o":{}})");

    EXPECT_THROW(Variant(true).toInt(), VariantInvalidOperationException);
    EXPECT_THROW(Variant("1").toInt(), VariantInvalidOperationException);
    EXPECT_THROW(parsed["s"].toInt64(), VariantInvalidOperationException);
    EXPECT_THROW(Variant().toInt(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(true).toReal(), VariantInvalidOperationException);
    EXPECT_THROW(Variant("1").toReal(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(1).toBool(), VariantInvalidOperationException);
    EXPECT_THROW(parsed["s"].toBool(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(1).toString(), VariantInvalidOperationException);
    EXPECT_THROW(parsed["a"].toString(), VariantInvalidOperationException);
    EXPECT_THROW(parsed["o"].toString(), VariantInvalidOperationException);
}

TEST(Variant, GivesTruthValuesAndStrings)
{
    EXPECT_TRUE(Json::parse("true").toBool());
    EXPECT_FALSE(Variant(false).toBool());
    EXPECT_EQ(Variant("text").toString(), "text");
    EXPECT_EQ(Json::parse(R"("a\u0000\u00e4\ud83d\ude00\/")").toString(),
              std::string("a\0\xC3\xA4\xF0\x9F\x98\x80/", 9));
}

TEST(Variant, FindsKeysOfAnObject)
{
    const Variant object = Json::parse(R"({"a":1,"b":{"c":[2]},"":null,"long key of many letters":"x"})");

    EXPECT_EQ(object["a"].toInt(), 1);
    EXPECT_EQ(object["b"]["c"].begin().value().toInt(), 2);
    EXPECT_TRUE(object[""].isNull());
    EXPECT_EQ(object["long key of many letters"].toString(), "x");
    EXPECT_TRUE(object.contains("a"));
    EXPECT_TRUE(object.contains(""));
    EXPECT_FALSE(object.contains("c"));
    EXPECT_FALSE(object.contains("A"));
    EXPECT_FALSE(object.contains("long key of many letter"));
}

TEST(Variant, GivesAValueOnlyIfItsKeyIsThere)
{
    const Variant object = Json::parse(R"({"a":1,"n":null})");
    Variant value("as it was");

    EXPECT_FALSE(object.contains("b", value));
    EXPECT_EQ(value.toString(), "as it was");
    EXPECT_TRUE(object.contains("a", value));
    EXPECT_EQ(value.toInt(), 1);
    EXPECT_TRUE(object.contains("n", value));
    EXPECT_TRUE(value.isNull());
}

TEST(Variant, MayBeReplacedByAValueOfItsOwn)
{
    Variant value = Json::parse(R"({"a":{"b":[1,2]}})");

    EXPECT_TRUE(value.contains("a", value));
    EXPECT_TRUE(value.contains("b", value));

    EXPECT_EQ(value.toJson(), "[1,2]");
}

TEST(Variant, TakesTheLastOfEqualKeys)
{
    const Variant object = Json::parse(R"({"a":1,"b":2,"a":[3],"\u0061":"last"})");
    Variant value;

    EXPECT_EQ(object["a"].toString(), "last");
    EXPECT_TRUE(object.contains("a", value));
    EXPECT_EQ(value.toString(), "last");
    EXPECT_EQ(object.size(), 4U);
    EXPECT_EQ(object.toJson(), R"({"a":1,"b":2,"a":[3],"a":"last"})");
}

TEST(Variant, FindsKeysOfAnyBytes)
{
    const std::string umlaut = "\xC3\xA4";
    const std::string lone = "\xE4";
    const Variant object =
        Json::parse("{" + Json::_encodeString(umlaut) + ":1," + Json::_encodeString(lone) + ":2}");

    EXPECT_EQ(object[umlaut].toInt(), 1);
    EXPECT_EQ(object[lone].toInt(), 2);
    EXPECT_FALSE(object.contains("\xE5"));
    EXPECT_FALSE(object.contains("\xEE\xBF\xA4"));
}

TEST(Variant, NamesTheKeyThatIsMissing)
{
    EXPECT_EQ(messageOf(Json::parse("{}"), "copies"),
              "Variant: The key is missing | key=copies | kind=Object");
    EXPECT_EQ(messageOf(Variant(), "copies"), "Variant: Only an object has keys | key=copies | kind=Null");
    EXPECT_EQ(messageOf(Json::parse("[1]"), "x"), "Variant: Only an object has keys | key=x | kind=Array");
    EXPECT_FALSE(Variant("text").contains("x"));
    EXPECT_FALSE(Json::parse("[{\"x\":1}]").contains("x"));
}

TEST(Variant, GivesTheStringsOfAnArray)
{
    const std::vector<std::string> strings = {"a", "", "c d"};

    EXPECT_EQ(Json::parse(R"(["a","","c d"])").toVector(), strings);
    EXPECT_EQ(Variant(std::vector<Variant>{"a", "", "c d"}).toVector(), strings);
    EXPECT_TRUE(Json::parse("[]").toVector().empty());
    EXPECT_TRUE(Variant().toVector().empty());
    EXPECT_TRUE(Json::parse("null").toVector().empty());
}

TEST(Variant, RefusesToGiveStringsOfAnythingElse)
{
    EXPECT_THROW(Json::parse(R"(["a",1])").toVector(), VariantInvalidOperationException);
    EXPECT_THROW(Json::parse(R"(["a",null])").toVector(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(std::vector<Variant>{1}).toVector(), VariantInvalidOperationException);
    EXPECT_THROW(Json::parse("{}").toVector(), VariantInvalidOperationException);
    EXPECT_THROW(Variant("a").toVector(), VariantInvalidOperationException);
    EXPECT_THROW(Variant(false).toVector(), VariantInvalidOperationException);
}

TEST(Variant, KnowsItsSize)
{
    EXPECT_EQ(Json::parse("[1,[2,3],{}]").size(), 3U);
    EXPECT_EQ(Json::parse(R"({"a":[1,2],"b":2})").size(), 2U);
    EXPECT_EQ(Variant(std::vector<Variant>{1, 2}).size(), 2U);
    EXPECT_EQ(Json::parse("[]").size(), 0U);
    EXPECT_EQ(Variant("text").size(), 0U);
    EXPECT_EQ(Variant().size(), 0U);
}

TEST(Variant, KnowsTheSizeOfArraysBeyondSixteenMillion)
{
    std::string text = "[";
    for (int count = 0; count < 0x1000001; ++count)
        text += "1,";
    text += "1]";

    EXPECT_EQ(Json::parse(std::move(text)).size(), 0x1000002U);
}

TEST(Variant, OutlivesTheValueItWasTakenFrom)
{
    Variant text;
    {
        const Variant object = Json::parse(R"({"a":["a text that is too long to be held in place"]})");
        text = object["a"].begin().value();
    }

    EXPECT_EQ(text.toString(), "a text that is too long to be held in place");
}

TEST(Variant, CopiesKeepTheirContent)
{
    Variant original = Json::parse(R"({"a":[1,"b"]})");

    const Variant copy = original.copyVariant();
    original = Variant(1);

    EXPECT_EQ(copy.toJson(), R"({"a":[1,"b"]})");
}

TEST(Variant, WritesValuesBuiltByCode)
{
    const std::vector<Variant> inner = {Variant(), true, "a\"\n\xFF"};
    const std::vector<Variant> outer = {1,
                                        std::uint32_t{4294967295},
                                        -1LL,
                                        2ULL,
                                        0.1,
                                        2.0,
                                        inner,
                                        std::vector<Variant>{},
                                        Json::parse("{\"k\":1}")};

    EXPECT_EQ(Variant(outer).toJson(),
              "[1,4294967295,-1,2,0.1,2.0,[null,true,\"a\\\"\\n\xEE\xBF\xBF\"],[],{\"k\":1}]");
}

TEST(Variant, WritesNullForNumbersThatJsonDoesNotHave)
{
    EXPECT_EQ(Variant(std::numeric_limits<double>::quiet_NaN()).toJson(), "null");
    EXPECT_EQ(Variant(-std::numeric_limits<double>::infinity()).toJson(), "null");
}

TEST(Variant, ReadsBackEveryRealItWrites)
{
    for (const double real : {0.1, 1.0 / 3.0, 5e-324, 1.7976931348623157e308, -2.2250738585072014e-308, 1e20,
                              18446744073709551616.0, -9223372036854775809.0}) {
        const Variant value = Json::parse(Variant(real).toJson());

        EXPECT_EQ(value.kind(), Kind::Real);
        EXPECT_EQ(value.toReal(), real);
    }
}

TEST(Variant, EscapesStringsAndKeysOfParsedValues)
{
    const std::string text = "{\"\\u0001\\\"k\":\"a\\\\\\/\\b\\f\\n\\r\\t\\u001F\x7F\xC3\xA4\"}";

    EXPECT_EQ(Json::parse(text).toJson(), "{\"\\u0001\\\"k\":\"a\\\\/\\b\\f\\n\\r\\t\\u001f\x7F\xC3\xA4\"}");
}

} // namespace
} // namespace Torv
