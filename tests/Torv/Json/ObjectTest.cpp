#include "Torv/Json/Object.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <set>
#include <string>

#include "Torv/Json/Array.h"
#include "Torv/Json/Json.h"

namespace Torv::Json
{
namespace
{

enum Plain { PlainSeven = 7 };
enum class Small : std::uint8_t { Last = 255 };
enum class Negative : int { Minus = -1 };

TEST(JsonObject, BeginsEmpty)
{
    EXPECT_EQ(Object().str(), "{}");
}

TEST(JsonObject, KeepsTheOrderOfTheCallsAndIsWholeAtAnyTime)
{
    Object object;

    object.add("z", 1);
    EXPECT_EQ(object.str(), R"({"z":1})");
    object.add("a", "x");
    EXPECT_EQ(object.str(), R"({"z":1,"a":"x"})");
    object.add("z", nullptr);
    EXPECT_EQ(object.str(), R"({"z":1,"a":"x","z":null})");
}

TEST(JsonObject, WritesNumbersOfAllWidths)
{
    Object object;

    object.add("a", std::numeric_limits<long long>::min());
    object.add("b", std::numeric_limits<unsigned long long>::max());
    object.add("c", std::uint8_t{200});
    object.add("d", std::int16_t{-5});
    object.add("e", std::uint32_t{4294967295});

    EXPECT_EQ(object.str(),
              R"({"a":-9223372036854775808,"b":18446744073709551615,"c":200,"d":-5,"e":4294967295})");
}

TEST(JsonObject, WritesEnumerationsAsIntegers)
{
    Object object;

    object.add("plain", PlainSeven);
    object.add("small", Small::Last);
    object.add("negative", Negative::Minus);

    EXPECT_EQ(object.str(), R"({"plain":7,"small":255,"negative":-1})");
}

TEST(JsonObject, WritesTruthValuesAndTexts)
{
    Object object;

    object.add("t", true);
    object.add("f", false);
    object.add("s", std::string("a\"\xFF"));
    object.add("v", std::string_view("v"));
    object.add("c", "");

    EXPECT_EQ(object.str(), "{\"t\":true,\"f\":false,\"s\":\"a\\\"\xEE\xBF\xBF\",\"v\":\"v\",\"c\":\"\"}");
}

TEST(JsonObject, TakesObjectsArraysAndSets)
{
    Object inner;
    inner.add("x", 1);
    Array array;
    array.addJson("2");
    Object object;

    object.add("o", inner);
    object.add("a", array);
    object.add("s", std::set<std::string>{"b", "a"});
    object.add("e", std::set<std::string>{});
    object.addJson("j", "[null]");

    EXPECT_EQ(object.str(), R"({"o":{"x":1},"a":[2],"s":["a","b"],"e":[],"j":[null]})");
}

TEST(JsonObject, EscapesKeys)
{
    Object object;

    object.add("a\"\n", 1);

    EXPECT_EQ(object.str(), R"({"a\"\n":1})");
}

TEST(JsonObject, HandsItsTextOver)
{
    Object object;
    object.add("a", 1);

    EXPECT_EQ(object.take(), R"({"a":1})");
}

TEST(JsonObject, IsReadBack)
{
    Object object;
    object.add("a", -3);
    object.add("b", "\xE4");
    object.add("a", 4);

    const Variant value = parse(object.take());

    EXPECT_EQ(value["a"].toInt(), 4);
    EXPECT_EQ(value["b"].toString(), "\xE4");
}

} // namespace
} // namespace Torv::Json
