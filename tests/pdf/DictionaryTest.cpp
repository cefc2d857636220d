#include "pdf/Dictionary.h"

#include <gtest/gtest.h>

#include "pdf/Value.h"

namespace Pdf
{
namespace
{

std::string text(const Dictionary& dictionary)
{
    return Value(dictionary).serialize();
}

TEST(Dictionary, IsInOrderOfTheBytesOfItsKeys)
{
    Dictionary dictionary;

    for (const char* key : {"b", "\xFF", "a", "Longer than most", "ab", "B", ""})
        dictionary[key] = true;

    EXPECT_EQ(text(dictionary),
              "<</ true/B true/Longer#20than#20most true/a true/ab true/b true/\xFF true>>");
}

TEST(Dictionary, FindsItsKeys)
{
    Dictionary dictionary;
    dictionary.set("A", 1.0);

    EXPECT_NE(dictionary.find("A"), nullptr);
    EXPECT_EQ(dictionary.find("B"), nullptr);
    EXPECT_EQ(dictionary.find(""), nullptr);
    EXPECT_EQ(Dictionary().find("A"), nullptr);

    dictionary.set("", 2.0);

    EXPECT_NE(dictionary.find(""), nullptr);
}

TEST(Dictionary, ReplacesTheValueOfAKey)
{
    Dictionary dictionary;
    dictionary.set("A", 1.0);

    dictionary.set("A", 2.0);

    EXPECT_EQ(text(dictionary), "<</A 2>>");
}

TEST(Dictionary, SharesItsEntriesWithCopiesUntilOneChanges)
{
    Dictionary dictionary;
    dictionary.set("A", 1.0);
    Dictionary copy = dictionary;

    EXPECT_TRUE(dictionary.isShared());
    EXPECT_EQ(dictionary.identity(), copy.identity());

    copy.set("B", 2.0);

    EXPECT_FALSE(dictionary.isShared());
    EXPECT_NE(dictionary.identity(), copy.identity());
    EXPECT_EQ(text(dictionary), "<</A 1>>");
    EXPECT_EQ(text(copy), "<</A 1/B 2>>");
}

TEST(Dictionary, HoldsManyEntries)
{
    Dictionary dictionary;
    for (int key = 999; key >= 0; --key)
        dictionary[std::to_string(key)] = static_cast<double>(key);

    EXPECT_EQ(dictionary.entries().size(), 1000U);
    EXPECT_EQ(dictionary.find("500")->serialize(), " 500");
}

} // namespace
} // namespace Pdf
