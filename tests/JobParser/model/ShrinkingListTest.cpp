#include "JobParser/model/ShrinkingList.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace JobParser
{
namespace
{

using Indices = std::vector<std::size_t>;

TEST(ShrinkingList, ReachesUpToItsLastElement)
{
    ShrinkingList list(2);

    EXPECT_TRUE(list.holds(list.place(0)));
    EXPECT_TRUE(list.holds(list.place(1)));
    EXPECT_FALSE(list.holds(list.place(2)));
    EXPECT_FALSE(list.holds(list.place(5)));
}

TEST(ShrinkingList, MovesTheNextElementIntoAPlaceThatIsEmptied)
{
    ShrinkingList list(4);
    const auto before = list.place(0);
    const auto emptied = list.place(1);
    const auto behind = list.place(2);

    EXPECT_TRUE(list.remove(emptied));

    EXPECT_EQ(list.element(before), 0U);
    EXPECT_EQ(list.element(emptied), 2U);
    EXPECT_EQ(list.element(behind), 3U);
}

TEST(ShrinkingList, RemovesNothingBehindItsEnd)
{
    ShrinkingList list(2);
    const auto last = list.place(1);
    const auto behind = list.place(2);

    EXPECT_FALSE(list.remove(behind));
    EXPECT_TRUE(list.remove(last));
    EXPECT_FALSE(list.remove(last));

    EXPECT_EQ(list.removed(), Indices{1});
}

TEST(ShrinkingList, TellsWhatIsGoneInAscendingOrder)
{
    ShrinkingList list(6);
    const auto fourth = list.place(3);
    const auto first = list.place(0);

    list.remove(fourth);
    list.remove(first);
    list.remove(fourth);

    EXPECT_EQ(list.removed(), (Indices{0, 3, 5}));
}

TEST(ShrinkingList, HasNothingGoneAtFirst)
{
    EXPECT_EQ(ShrinkingList(0).removed(), Indices{});
    EXPECT_EQ(ShrinkingList(3).removed(), Indices{});
}

TEST(ShrinkingList, AdvancesOverWhatIsLeft)
{
    ShrinkingList list(3);
    const auto walk = list.place(0);
    list.remove(list.place(1));

    list.advance(walk);

    EXPECT_EQ(list.position(walk), 1U);
    EXPECT_EQ(list.element(walk), 2U);
}

TEST(ShrinkingList, GoesBackNotBeforeItsStart)
{
    ShrinkingList list(5);
    const auto walk = list.place(3);

    list.goBack(walk, 2);
    EXPECT_EQ(list.element(walk), 1U);

    list.goBack(walk, 2);
    EXPECT_EQ(list.position(walk), 0U);
    EXPECT_EQ(list.element(walk), 0U);
}

TEST(ShrinkingList, GoesBackIntoTheListFromBehindItsEnd)
{
    ShrinkingList list(3);
    const auto walk = list.place(2);
    const auto first = list.place(0);
    list.remove(walk);
    list.remove(first);

    list.goBack(walk, 1);
    EXPECT_EQ(list.position(walk), 1U);
    EXPECT_FALSE(list.holds(walk));

    list.goBack(walk, 1);
    EXPECT_EQ(list.element(walk), 1U);
}

/// The same by erasing from a vector.
struct PlainList {
    Indices left;
    Indices positions;

    explicit PlainList(std::size_t size)
    {
        for (std::size_t element = 0; element < size; ++element)
            left.push_back(element);
    }
    bool remove(std::size_t place)
    {
        if (positions[place] >= left.size())
            return false;
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(positions[place]));
        return true;
    }
    void goBack(std::size_t place, std::size_t count)
    {
        positions[place] -= std::min(positions[place], count);
    }
};

TEST(ShrinkingList, DoesWhatErasingFromAVectorDoes)
{
    std::mt19937 random(1);
    for (std::size_t round = 0; round < 2000; ++round) {
        const std::size_t size = random() % 12;
        ShrinkingList list(size);
        PlainList plain(size);
        for (std::size_t place = 0; place < 4; ++place) {
            plain.positions.push_back(random() % 12);
            ASSERT_EQ(list.place(plain.positions.back()), place);
        }
        for (int step = 0; step < 20; ++step) {
            const std::size_t place = random() % 4;
            const std::size_t count = random() % 4;
            if (random() % 2 == 0) {
                ASSERT_EQ(list.remove(place), plain.remove(place));
            } else if (random() % 2 == 0) {
                list.goBack(place, count);
                plain.goBack(place, count);
            } else if (list.holds(place)) {
                list.advance(place);
                ++plain.positions[place];
            }
            for (std::size_t other = 0; other < 4; ++other) {
                ASSERT_EQ(list.position(other), plain.positions[other]);
                ASSERT_EQ(list.holds(other), plain.positions[other] < plain.left.size());
                if (list.holds(other)) {
                    ASSERT_EQ(list.element(other), plain.left[plain.positions[other]]);
                }
            }
        }
        ASSERT_EQ(list.removed().size(), size - plain.left.size());
    }
}

} // namespace
} // namespace JobParser
