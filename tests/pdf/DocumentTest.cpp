#include "pdf/Document.h"

#include <gtest/gtest.h>

namespace Pdf
{
namespace
{

TEST(Document, IsEmptyAndCountsFromOne)
{
    const Document document;

    EXPECT_TRUE(document.order.empty());
    EXPECT_TRUE(document.slots.empty());
    EXPECT_EQ(document.nextNumber, 1);
    EXPECT_TRUE(document.objects.empty());
}

} // namespace
} // namespace Pdf
