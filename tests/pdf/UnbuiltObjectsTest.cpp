#include "pdf/UnbuiltObjects.h"

#include <gtest/gtest.h>
#include <string>

namespace Pdf::Parser
{
namespace
{

std::string found(UnbuiltObjects& objects, unsigned number)
{
    const Value* value = objects.find(number);
    return value != nullptr ? value->serialize() : "nothing";
}

TEST(UnbuiltObjects, AreBuiltWhenTheyAreFound)
{
    UnbuiltObjects objects;
    objects.add(7, "<< /A 5 0 R /B[(x) /Y] >>");
    objects.add(8, "5 0 R");

    EXPECT_EQ(found(objects, 7), "<</A 5 0 R/B[(x)/Y]>>");
    EXPECT_EQ(found(objects, 8), " 5 0 R");
    EXPECT_EQ(found(objects, 9), "nothing");
    EXPECT_EQ(found(objects, 6), "nothing");
}

TEST(UnbuiltObjects, AreBuiltOnce)
{
    UnbuiltObjects objects;
    objects.add(7, "[1]");
    const Value* first = objects.find(7);

    EXPECT_EQ(objects.find(7), first);
    EXPECT_EQ(found(objects, 7), "[ 1]");
}

TEST(UnbuiltObjects, CountByTheLastOfTheirNumber)
{
    UnbuiltObjects objects;
    objects.remove(7);
    objects.add(7, "[1]");
    objects.add(3, "[2]");
    objects.add(7, "[3]");
    objects.add(4, "[4]");
    objects.add(3, "[5]");
    objects.remove(4);
    objects.remove(9);

    EXPECT_EQ(found(objects, 7), "[ 3]");
    EXPECT_EQ(found(objects, 3), "[ 5]");
    EXPECT_EQ(found(objects, 4), "nothing");
    EXPECT_EQ(found(objects, 9), "nothing");
}

TEST(UnbuiltObjects, CountByTheLastOfTheirNumberAlsoAmongMany)
{
    UnbuiltObjects objects;
    for (unsigned round = 0; round < 20; ++round)
        for (unsigned number = 10; number > 0; --number)
            objects.add(number, "[" + std::to_string(round) + "]");

    for (const unsigned number : {3U, 4U, 10U, 9U, 1U, 2U})
        EXPECT_EQ(found(objects, number), "[ 19]") << number;
}

TEST(UnbuiltObjects, MayBeAddedBehindThoseThatWereFound)
{
    UnbuiltObjects objects;
    objects.add(7, "[1]");
    objects.find(7);
    objects.add(7, "[2]");
    objects.add(6, "[3]");
    objects.add(8, "[4]");
    objects.find(8);
    objects.remove(8);

    EXPECT_EQ(found(objects, 7), "[ 2]");
    EXPECT_EQ(found(objects, 6), "[ 3]");
    EXPECT_EQ(found(objects, 8), "nothing");
}

} // namespace
} // namespace Pdf::Parser
