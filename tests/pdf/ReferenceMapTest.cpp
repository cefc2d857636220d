#include "pdf/ReferenceMap.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>

namespace Pdf
{
namespace
{

TEST(ReferenceMap, FindsByBothNumbers)
{
    ReferenceMap<int> map{{{3, 0}, 1}, {{3, 1}, 2}, {{4, 0}, 3}};

    EXPECT_EQ(map.at({3, 0}), 1);
    EXPECT_EQ(map.at({3, 1}), 2);
    EXPECT_FALSE(map.contains({4, 1}));
    EXPECT_EQ(map.max_load_factor(), 1);
}

// Of 10000 in as many places, eight or more stand together in few.
TEST(ReferenceMap, SpreadsNumbersThatAFileChoseToCollide)
{
    ReferenceMap<int> generations;
    ReferenceMap<int> multiples;
    for (std::uint32_t index = 0; index < 10000; ++index) {
        generations[{2, index}] = 0;
        multiples[{index * 10273, 0}] = 0; // As many places as a map of this size has.
    }

    for (const auto* map : {&generations, &multiples}) {
        std::size_t longest = 0;
        for (std::size_t place = 0; place < map->bucket_count(); ++place)
            longest = std::max(longest, map->bucket_size(place));
        EXPECT_LT(longest, 40U);
    }
}

} // namespace
} // namespace Pdf
