#include "pdf/Name.h"

#include <gtest/gtest.h>

namespace Pdf
{
namespace
{

using namespace std::string_literals;

TEST(Name, EndsAtSixteenBytesAlone)
{
    const std::string delimiters = "\0\x09\x0A\x0C\x0D\x20%()/<>[]{}"s;

    EXPECT_EQ(delimiters.size(), 16U);
    for (unsigned byte = 0; byte < 256; ++byte)
        EXPECT_EQ(isNameCharacter[byte], delimiters.find(static_cast<char>(byte)) == std::string::npos)
            << byte;
}

TEST(Name, WritesWhatIsNoNameCharacterAsTwoDigits)
{
    EXPECT_EQ(Name{"Type"}.serialize(), "/Type");
    EXPECT_EQ(Name{""}.serialize(), "/");
    EXPECT_EQ(Name{"A B#C"}.serialize(), "/A#20B#C");
    EXPECT_EQ(Name{"\0/\r{}"s}.serialize(), "/#00#2f#0d#7b#7d");
    EXPECT_EQ(Name{"\xC3\xBC\x7F\x0B"}.serialize(), "/\xC3\xBC\x7F\x0B");
}

TEST(Name, IsEqualByItsBytes)
{
    EXPECT_TRUE(Name{"A"} == Name{"A"});
    EXPECT_FALSE(Name{"A"} == Name{"a"});
    EXPECT_TRUE(Name{"FlateDecode"} == "FlateDecode");
}

} // namespace
} // namespace Pdf
