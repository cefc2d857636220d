#include "Torv/Json/Array.h"

#include <gtest/gtest.h>

namespace Torv::Json
{
namespace
{

TEST(JsonArray, BeginsEmpty)
{
    EXPECT_EQ(Array().str(), "[]");
}

TEST(JsonArray, KeepsTheOrderOfTheCallsAndIsWholeAtAnyTime)
{
    Array array;

    array.addJson("{\"a\":1}");
    EXPECT_EQ(array.str(), "[{\"a\":1}]");
    array.add("x\"\xFF");
    EXPECT_EQ(array.str(), "[{\"a\":1},\"x\\\"\xEE\xBF\xBF\"]");
    array.addJson("null");
    EXPECT_EQ(array.str(), "[{\"a\":1},\"x\\\"\xEE\xBF\xBF\",null]");
}

TEST(JsonArray, HandsItsTextOver)
{
    Array array;
    array.add("");

    EXPECT_EQ(array.take(), "[\"\"]");
}

} // namespace
} // namespace Torv::Json
