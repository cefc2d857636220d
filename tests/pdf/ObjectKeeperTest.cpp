#include "pdf/ObjectKeeper.h"

#include <gtest/gtest.h>
#include <string>

namespace Pdf::Parser
{
namespace
{

Object object(unsigned number, unsigned generation, double value = 0)
{
    return {{number, generation}, Value(value), {}};
}

std::string written(const ObjectKeeper::Objects& objects)
{
    std::string text;
    for (const auto& [reference, object] : objects)
        text += std::to_string(reference.number) + ',' + std::to_string(reference.generation) +
                object.value.serialize() + "; ";
    return text;
}

TEST(ObjectKeeper, KeepsTheLastOfEachNumberInTheOrderOfNumbers)
{
    ObjectKeeper::Objects objects;
    ObjectKeeper keeper;

    keeper.put(objects, object(3, 0, 1));
    keeper.put(objects, object(5, 0, 2));
    keeper.put(objects, object(4, 0, 3));
    keeper.put(objects, object(3, 0, 4));
    keeper.put(objects, object(5, 0, 5));

    EXPECT_EQ(written(objects), "3,0 4; 4,0 3; 5,0 5; ");
}

TEST(ObjectKeeper, PutsObjectsWithGenerationsInFrontAsTheyCame)
{
    ObjectKeeper::Objects objects;
    ObjectKeeper keeper;

    keeper.put(objects, object(5, 1, 1));
    keeper.put(objects, object(3, 0, 2));
    keeper.put(objects, object(2, 65535, 3));
    EXPECT_EQ(written(objects), "3,0 2; ");

    keeper.finish();
    EXPECT_EQ(written(objects), "5,1 1; 2,65535 3; 3,0 2; ");

    keeper.put(objects, object(2, 0, 4));
    keeper.put(objects, object(5, 1, 5));
    keeper.finish();
    EXPECT_EQ(written(objects), "5,1 1; 2,65535 3; 5,1 5; 2,0 4; 3,0 2; ");
}

TEST(ObjectKeeper, ForgetsWhatWasSetAside)
{
    ObjectKeeper::Objects objects;
    ObjectKeeper keeper;
    keeper.put(objects, object(5, 1));

    keeper.clear();
    keeper.finish();

    EXPECT_TRUE(objects.empty());
}

TEST(ObjectKeeper, LosesNothingBesideObjectsWithGenerations)
{
    constexpr unsigned count = 200;
    ObjectKeeper::Objects objects;
    ObjectKeeper keeper;

    for (unsigned index = 0; index < count; ++index) {
        const unsigned number = index * 37 % count;
        keeper.put(objects, object(number, 0));
        keeper.put(objects, object(count - number, index % 3 == 0 ? 65535 : 1 + index % 2));
        if (index % 10 == 0)
            keeper.finish();
    }
    keeper.finish();

    EXPECT_EQ(objects.size(), 2 * count);
    EXPECT_EQ(std::distance(objects.begin(), objects.end()), 2 * count);
    for (unsigned number = 0; number < count; ++number)
        EXPECT_NE(objects.find(Reference{number, 0}), objects.end()) << number;
    EXPECT_EQ(objects.find(Reference{7, 1}), objects.end());
}

} // namespace
} // namespace Pdf::Parser
