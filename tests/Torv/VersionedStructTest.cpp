#include "Torv/VersionedStruct.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace
{

struct First {
    std::size_t structSize;
    std::int64_t pages;
};

struct Second {
    std::size_t structSize;
    std::int64_t pages;
    std::int64_t copies;
};

struct Third {
    std::size_t structSize;
    std::int64_t pages;
    std::int64_t copies;
    std::int64_t sheets;
};

constexpr std::array sizes{sizeof(First), sizeof(Second)};
constexpr Second defaults{sizeof(Second), 1, 2};

} // namespace

TEST(VersionedStruct, TakesThePresentVersionWhole)
{
    const Second given{sizeof(Second), 10, 20};
    Second taken = defaults;

    EXPECT_TRUE(Torv::takeVersioned(&given, sizes, taken));

    EXPECT_EQ(taken.pages, 10);
    EXPECT_EQ(taken.copies, 20);
}

TEST(VersionedStruct, KeepsDefaultsForWhatAnOlderCallerDoesNotKnow)
{
    const First given{sizeof(First), 10};
    Second taken = defaults;

    EXPECT_TRUE(Torv::takeVersioned(&given, sizes, taken));

    EXPECT_EQ(taken.pages, 10);
    EXPECT_EQ(taken.copies, 2);
}

TEST(VersionedStruct, RefusesSizesThatNoVersionHad)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, sizeof(First) - 1, sizeof(First) + 1,
                                   sizeof(Second) + 1, sizeof(Third), SIZE_MAX}) {
        SCOPED_TRACE(size);
        const Third given{size, 10, 20, 30};
        Second taken = defaults;

        EXPECT_FALSE(Torv::takeVersioned(&given, sizes, taken));

        EXPECT_EQ(taken.pages, 1);
    }
}

TEST(VersionedStruct, ReadsNoByteMoreThanTheCallerHas)
{
    std::vector<unsigned char> given(sizeof(First));
    const First content{sizeof(First), 10};
    std::memcpy(given.data(), &content, sizeof content);
    given.shrink_to_fit();
    Second taken = defaults;

    EXPECT_TRUE(Torv::takeVersioned(given.data(), sizes, taken));

    EXPECT_EQ(taken.pages, 10);
}
