#include "Torv/VariantIterator.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "Torv/Json/Json.h"
#include "Torv/VariantInvalidOperationException.h"

namespace Torv
{
namespace
{

std::string walk(const Variant& array)
{
    std::string result;
    for (VariantIterator element = array.begin(); !(element == array.end()); ++element)
        result += element.value().toJson() + ";";
    return result;
}

TEST(VariantIterator, WalksAParsedArrayInOrder)
{
    EXPECT_EQ(walk(Json::parse(R"([1,[2,[3]],{"a":[4]},"x",5000000000,1.5,null,true])")),
              R"(1;[2,[3]];{"a":[4]};"x";5000000000;1.5;null;true;)");
}

TEST(VariantIterator, WalksAnArrayBuiltByCode)
{
    EXPECT_EQ(walk(Variant(std::vector<Variant>{1, "x", std::vector<Variant>{}})), "1;\"x\";[];");
}

TEST(VariantIterator, FindsNothingInAnEmptyArrayOrAnyOtherKind)
{
    EXPECT_EQ(walk(Json::parse("[]")), "");
    EXPECT_EQ(walk(Variant(std::vector<Variant>{})), "");
    EXPECT_EQ(walk(Json::parse(R"({"a":1})")), "");
    EXPECT_EQ(walk(Json::parse(R"("text")")), "");
    EXPECT_EQ(walk(Variant("text")), "");
    EXPECT_EQ(walk(Variant(1)), "");
    EXPECT_EQ(walk(Variant()), "");
}

TEST(VariantIterator, StopsAtTheEndOfANestedArray)
{
    const Variant object = Json::parse(R"({"a":[1,2],"b":[3]})");

    EXPECT_EQ(walk(object["a"]), "1;2;");
    EXPECT_EQ(walk(object["b"]), "3;");
}

TEST(VariantIterator, WorksInARangeLoop)
{
    int sum = 0;
    for (const Variant& element : Json::parse("[1,2,3]"))
        sum += element.toInt();

    EXPECT_EQ(sum, 6);
}

TEST(VariantIterator, KeepsTheArrayAlive)
{
    VariantIterator parsed = Json::parse(R"(["first of the two texts","second of the two texts"])").begin();
    VariantIterator built = Variant(std::vector<Variant>{"first of the two texts", "second"}).begin();

    EXPECT_EQ(parsed.value().toString(), "first of the two texts");
    EXPECT_EQ((*++parsed).toString(), "second of the two texts");
    EXPECT_EQ(built.value().toString(), "first of the two texts");
}

TEST(VariantIterator, TellsPlacesAndArraysApart)
{
    const Variant array = Json::parse("[1,1]");
    VariantIterator second = array.begin();
    ++second;

    EXPECT_TRUE(array.begin() == array.begin());
    EXPECT_FALSE(array.begin() == second);
    EXPECT_FALSE(second == array.end());
    EXPECT_FALSE(array.begin() == Json::parse("[1,1]").begin());
}

TEST(VariantIterator, HasNoValueAtTheEndOfABuiltArray)
{
    EXPECT_THROW(Variant(std::vector<Variant>{1}).end().value(), VariantInvalidOperationException);
    EXPECT_THROW(Variant().begin().value(), VariantInvalidOperationException);
}

TEST(VariantIterator, WalksAMillionElements)
{
    constexpr int count = 1000000;
    std::string text = "[";
    for (int element = 0; element < count; ++element)
        text += "[1,{\"a\":[]}],";
    text += "7]";
    const Variant array = Json::parse(std::move(text));

    int seen = 0;
    Variant last;
    for (VariantIterator element = array.begin(), end = array.end(); !(element == end); ++element) {
        ++seen;
        last = element.value();
    }

    EXPECT_EQ(seen, 1000001);
    EXPECT_EQ(last.toInt(), 7);
}

} // namespace
} // namespace Torv
