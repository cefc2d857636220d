#include "pdf/ByteString.h"

#include <gtest/gtest.h>
#include <utility>

namespace Pdf
{
namespace
{

TEST(ByteString, HoldsBytesOfAnyLength)
{
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string bytes(length, '\0');

        EXPECT_EQ(ByteString(bytes).view(), bytes);
    }
    EXPECT_EQ(sizeof(ByteString), 8U);
}

TEST(ByteString, IsEmptyFromTheStart)
{
    EXPECT_TRUE(ByteString().empty());
    EXPECT_EQ(ByteString(), "");
}

TEST(ByteString, IsCopiedMovedAndAssigned)
{
    for (const char* bytes : {"seven b", "eight by", "many more bytes than that"}) {
        ByteString original(bytes);
        ByteString copy(original);
        ByteString assigned("something else that is long");

        assigned = copy;
        copy = copy.view().substr(1);
        const ByteString moved(std::move(original));

        EXPECT_EQ(moved, bytes);
        EXPECT_EQ(assigned, bytes);
        EXPECT_EQ(copy, bytes + 1);
        EXPECT_TRUE(original.empty()); // NOLINT(bugprone-use-after-move)
    }
}

TEST(ByteString, IsEqualByItsBytes)
{
    EXPECT_TRUE(ByteString("Contents") == ByteString("Contents"));
    EXPECT_FALSE(ByteString("Contents") == ByteString("contents"));
    EXPECT_FALSE(ByteString("A") == "AB");
}

} // namespace
} // namespace Pdf
