#include "pdf/Reference.h"

#include <gtest/gtest.h>
#include <map>

namespace Pdf
{
namespace
{

TEST(Reference, IsWrittenWithABlankInFront)
{
    EXPECT_EQ((Reference{3, 0}.serialize()), " 3 0 R");
    EXPECT_EQ((Reference{4294967295, 4294967295}.serialize()), " 4294967295 4294967295 R");
    EXPECT_EQ(Reference().serialize(), " 0 0 R");
}

TEST(Reference, IsEqualByBothNumbers)
{
    EXPECT_EQ((Reference{3, 1}), (Reference{3, 1}));
    EXPECT_NE((Reference{3, 1}), (Reference{3, 0}));
    EXPECT_NE((Reference{3, 1}), (Reference{4, 1}));
}

TEST(Reference, IsOrderedByNumberWhereGenerationsAreZero)
{
    EXPECT_TRUE((Reference{3, 0} < Reference{5, 0}));
    EXPECT_FALSE((Reference{5, 0} < Reference{3, 0}));
    EXPECT_FALSE((Reference{5, 0} < Reference{5, 0}));
}

TEST(Reference, IsLessThanAnythingWithAGeneration)
{
    EXPECT_TRUE((Reference{5, 1} < Reference{3, 0}));
    EXPECT_TRUE((Reference{3, 0} < Reference{5, 1}));
    EXPECT_TRUE((Reference{5, 1} < Reference{5, 1}));
}

TEST(Reference, ShiftsItsGenerationByTheLowFiveBitsOfTheOther)
{
    EXPECT_FALSE((Reference{5, 0x80000000} < Reference{3, 1}));
    EXPECT_TRUE((Reference{5, 0x80000000} < Reference{3, 32}));
    EXPECT_FALSE((Reference{5, 2} < Reference{3, 31}));
}

TEST(Reference, IsNotFoundInAnOrderedMapWithAGeneration)
{
    std::map<Reference, int> map;
    map[{5, 1}] = 1;

    EXPECT_EQ(map.find({5, 1}), map.end());
    EXPECT_EQ(map.size(), 1U);
}

TEST(Reference, IsHashedByItsNumber)
{
    EXPECT_EQ(std::hash<Reference>()({7, 1}), 7U);
    EXPECT_EQ(std::hash<Reference>()({7, 2}), 7U);
}

} // namespace
} // namespace Pdf
