#include "Torv/Ascii.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

template <typename Predicate> std::string allOf(Predicate predicate)
{
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        if (predicate(static_cast<std::uint8_t>(byte)))
            bytes += static_cast<char>(byte);
    }
    return bytes;
}

template <typename Change> std::string changedBy(Change change)
{
    return allOf([change](std::uint8_t byte) { return change(byte) != byte; });
}

const std::string upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::string lower = "abcdefghijklmnopqrstuvwxyz";

} // namespace

TEST(Ascii, KnowsItsClassesAmongAllBytes)
{
    EXPECT_EQ(allOf(Torv::Ascii::isUpper), upper);
    EXPECT_EQ(allOf(Torv::Ascii::isLower), lower);
    EXPECT_EQ(allOf(Torv::Ascii::isLetter), upper + lower);
    EXPECT_EQ(allOf(Torv::Ascii::isDigit), "0123456789");
    EXPECT_EQ(allOf(Torv::Ascii::isSpace), "\t\n\v\f\r ");
}

TEST(Ascii, ChangesTheCaseOfLettersAndOfNothingElse)
{
    EXPECT_EQ(changedBy(Torv::Ascii::toUpper), lower);
    EXPECT_EQ(changedBy(Torv::Ascii::toLower), upper);
    for (std::size_t index = 0; index < 26; ++index) {
        EXPECT_EQ(Torv::Ascii::toUpper(static_cast<std::uint8_t>(lower[index])), upper[index]);
        EXPECT_EQ(Torv::Ascii::toLower(static_cast<std::uint8_t>(upper[index])), lower[index]);
    }
}

TEST(Ascii, WorksAtCompileTime)
{
    static_assert(Torv::Ascii::isSpace(9) && Torv::Ascii::isSpace(13) && !Torv::Ascii::isSpace(14));
    static_assert(Torv::Ascii::toUpper('z') == 'Z');
    EXPECT_FALSE(Torv::Ascii::isLetter(0xC4));
}
