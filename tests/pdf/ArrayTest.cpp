#include "pdf/Array.h"

#include <gtest/gtest.h>

#include "pdf/Value.h"

namespace Pdf
{
namespace
{

std::string text(const Array& array)
{
    return Value(array).serialize();
}

TEST(Array, GrowsByWhatIsAppended)
{
    Array array;

    for (int number = 0; number < 12; ++number)
        array.append(static_cast<double>(number));

    EXPECT_EQ(text(array), "[ 0 1 2 3 4 5 6 7 8 9 10 11]");
    EXPECT_EQ(array.items().size(), 12U);
}

TEST(Array, KeepsItsValuesWhenACopyIsChanged)
{
    Array array({Value(1.0), Value(2.0)});
    Array copy = array;
    Array longer = array;

    copy.edit()[0] = 9.0;
    longer.append(3.0);

    EXPECT_EQ(text(array), "[ 1 2]");
    EXPECT_EQ(text(copy), "[ 9 2]");
    EXPECT_EQ(text(longer), "[ 1 2 3]");
}

// What was given out stands below the array, and is not moved with its values.
TEST(Array, KeepsCopiesApartFromWhatWasGivenOutBeforeItGrew)
{
    Array array({Value(Dictionary())});
    Value& givenOut = array.edit()[0]["Key"];
    for (int number = 0; number < 12; ++number)
        array.append(Value(Null()));
    const Array copy = array;

    givenOut = 5.0;

    EXPECT_EQ(text(copy).substr(0, 5), "[<<>>");
    EXPECT_EQ(text(array).substr(0, 12), "[<</Key 5>> ");
}

TEST(Array, IsEmptyOnceMovedFrom)
{
    Array array({Value(1.0)});

    const Array taken = std::move(array);

    EXPECT_EQ(text(taken), "[ 1]");
    EXPECT_TRUE(array.items().empty()); // NOLINT(bugprone-use-after-move)
}

} // namespace
} // namespace Pdf
