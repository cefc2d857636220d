#include "pdf/Containers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>

namespace Pdf
{
namespace
{

TEST(Containers, LiveAsLongAsTheirLastOwner)
{
    ContainerNode* const node = Containers::make(ContainerNode::Kind::Array, 1);
    Containers::append(node, Value(ByteString("long enough to be shared")));
    Array first = Containers::array(node);
    const Array second = first;

    EXPECT_EQ(node->owners.load(), 2U);
    first = Array();

    EXPECT_EQ(node->owners.load(), 1U);
    EXPECT_EQ(Value(second).serialize(), "[(long enough to be shared)]");
}

TEST(Containers, HoldNoMoreThanTheirSizeCounts)
{
    constexpr auto tooMany = static_cast<std::size_t>(
        std::min<std::uint64_t>(4294967296, std::numeric_limits<std::size_t>::max()));

    EXPECT_THROW(Containers::make(ContainerNode::Kind::Dictionary, tooMany), std::length_error);
}

TEST(Containers, AreCopiedWhereTheyMayBeChangedElsewhere)
{
    Dictionary dictionary;
    dictionary["A"] = 1.0;

    const Dictionary copy = dictionary;

    EXPECT_NE(copy.identity(), dictionary.identity());
}

} // namespace
} // namespace Pdf
