#include "pdf/HexString.h"

#include <gtest/gtest.h>

namespace Pdf
{
namespace
{

TEST(HexString, WritesItsCharactersAsTheyAre)
{
    EXPECT_EQ(HexString{"48 65"}.serialize(), "<48 65>");
    EXPECT_EQ(HexString{""}.serialize(), "<>");
    EXPECT_EQ(HexString{">(x)"}.serialize(), "<>(x)>");
}

} // namespace
} // namespace Pdf
