#include "Torv/Factory.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "tests/support/MessageOf.h"

namespace
{

using Doubler = std::function<int(int)>;

} // namespace

TEST(Factory, GivesBackWhatWasAdded)
{
    Torv::Factory factory;

    EXPECT_TRUE(factory.add("Double", Doubler([](int number) { return 2 * number; })));

    EXPECT_TRUE(factory.contains("Double"));
    EXPECT_EQ(factory.get<int(int)>("Double")(21), 42);
}

TEST(Factory, KeepsTheFirstOfTwoWithTheSameReference)
{
    Torv::Factory factory;
    factory.add("Double", Doubler([](int number) { return 2 * number; }));

    EXPECT_FALSE(factory.add("Double", Doubler([](int) { return 0; })));

    EXPECT_EQ(factory.get<int(int)>("Double")(21), 42);
}

TEST(Factory, HoldsFactoriesOfDifferentTypes)
{
    Torv::Factory factory;
    factory.add("Double", Doubler([](int number) { return 2 * number; }));
    factory.add("Name", std::function<std::string()>([] { return "name"; }));

    EXPECT_EQ(factory.get<std::string()>("Name")(), "name");
    EXPECT_EQ(factory.get<int(int)>("Double")(1), 2);
}

TEST(Factory, ThrowsNoFactoryExceptionForAnUnknownReference)
{
    const Torv::Factory factory;

    EXPECT_FALSE(factory.contains("Double"));
    EXPECT_THROW(factory.get<int(int)>("Double"), Torv::NoFactoryException);
    EXPECT_EQ(messageOf([&] { factory.get<int(int)>("Double"); }),
              "Factory: no factory for the reference Double");
}

TEST(Factory, ThrowsGenericExceptionForAFactoryOfAnotherType)
{
    Torv::Factory factory;
    factory.add("Double", Doubler([](int number) { return 2 * number; }));

    EXPECT_EQ(messageOf([&] { factory.get<std::string()>("Double"); }),
              "Factory: invalid factory type for the reference Double");
    EXPECT_EQ(messageOf([&] { factory.get<int()>("Double"); }),
              "Factory: invalid factory type for the reference Double");
}
