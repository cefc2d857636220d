#include "pdf/FalseReference.h"

#include <gtest/gtest.h>
#include <utility>

namespace Pdf
{
namespace
{

TEST(FalseReference, HoldsTheTwoNumbers)
{
    const FalseReference reference(4294967295, 2.5);

    EXPECT_EQ(reference.number(), 4294967295U);
    EXPECT_EQ(reference.generation(), 2.5);
}

TEST(FalseReference, IsCopiedAndMoved)
{
    FalseReference original(1, 2);
    FalseReference copy(3, 4);

    copy = original;
    const FalseReference moved(std::move(original));

    EXPECT_EQ(copy.number(), 1U);
    EXPECT_EQ(moved.generation(), 2);
}

} // namespace
} // namespace Pdf
