#include "JobParser/pclxl/PclXLTags.h"

#include <gtest/gtest.h>
#include <map>

namespace JobParser
{
namespace
{

// The rows of values. Bit 3, which marks an array, changes nothing.
const std::map<int, int> valueSizes{
    {0xC0, 1}, {0xC1, 2},  {0xC2, 4},  {0xC3, 2},  {0xC4, 4},  {0xC5, 4},  {0xC6, -1}, {0xC7, -1},
    {0xC8, 1}, {0xC9, 2},  {0xCA, 4},  {0xCB, 2},  {0xCC, 4},  {0xCD, 4},  {0xCE, -1}, {0xCF, -1},
    {0xD0, 2}, {0xD1, 4},  {0xD2, 8},  {0xD3, 4},  {0xD4, 8},  {0xD5, 8},  {0xD6, -2}, {0xD7, -2},
    {0xD8, 2}, {0xD9, 4},  {0xDA, 8},  {0xDB, 4},  {0xDC, 8},  {0xDD, 8},  {0xDE, -2}, {0xDF, -2},
    {0xE0, 4}, {0xE1, 8},  {0xE2, 16}, {0xE3, 8},  {0xE4, 16}, {0xE5, 16}, {0xE6, -4}, {0xE7, -4},
    {0xE8, 4}, {0xE9, 8},  {0xEA, 16}, {0xEB, 8},  {0xEC, 16}, {0xED, 16}, {0xEE, -4}, {0xEF, -4},
    {0xF0, 8}, {0xF1, 16}, {0xF2, 32}, {0xF3, 16}, {0xF4, 32}, {0xF5, 32}, {0xF6, -8}, {0xF7, -8},
};

// No values: identifiers, embedded data, and what is not in use.
const std::map<int, int> exceptions{{0xF8, -1}, {0xF9, -1}, {0xFA, 1}, {0xFB, 1},
                                    {0xFC, -1}, {0xFD, -1}, {0xFE, -1}};

TEST(PclXLTags, HaveSizesByTheirRowAndTheirLowBits)
{
    EXPECT_EQ(valueSizes.size(), 0xF8U - 0xC0U);
    for (const auto& [tag, size] : valueSizes)
        EXPECT_EQ(baseDataSize[static_cast<std::size_t>(tag)], size) << tag;
    for (const auto& [tag, size] : exceptions)
        EXPECT_EQ(baseDataSize[static_cast<std::size_t>(tag)], size) << tag;
}

TEST(PclXLTags, TellOperatorsByASizeOfNone)
{
    EXPECT_EQ(baseDataSize.size(), 255U);
    for (std::size_t tag = 0; tag <= 0x40; ++tag)
        EXPECT_EQ(baseDataSize[tag], -1) << tag;
    for (std::size_t tag = 0x41; tag <= 0xBF; ++tag)
        EXPECT_EQ(baseDataSize[tag], 0) << tag;
}

TEST(PclXLTags, CountTheLastByteAmongThoseThatAreRefused)
{
    EXPECT_EQ(baseSizeOf(static_cast<tag_t>(255)), -2);
    EXPECT_EQ(baseSizeOf(static_cast<tag_t>(254)), -1);
    EXPECT_EQ(baseSizeOf(tag_t::EndSession), 0);
    EXPECT_EQ(baseSizeOf(static_cast<tag_t>(0xF2)), 32);
}

TEST(PclXLTags, HaveTheirPublishedNumbers)
{
    EXPECT_EQ(static_cast<int>(tag_t::BeginSession), 65);
    EXPECT_EQ(static_cast<int>(tag_t::EndSession), 66);
    EXPECT_EQ(static_cast<int>(tag_t::BeginPage), 67);
    EXPECT_EQ(static_cast<int>(tag_t::EndPage), 68);
    EXPECT_EQ(static_cast<int>(tag_t::Comment), 71);
    EXPECT_EQ(static_cast<int>(tag_t::BeginFontHeader), 79);
    EXPECT_EQ(static_cast<int>(tag_t::UbyteArray), 200);
    EXPECT_EQ(static_cast<int>(tag_t::Uint16Array), 201);
    EXPECT_EQ(static_cast<int>(tag_t::AttributeId), 248);
    EXPECT_EQ(static_cast<int>(tag_t::AttributeIdWide), 249);
    EXPECT_EQ(static_cast<int>(tag_t::EmbeddedData), 250);
    EXPECT_EQ(static_cast<int>(tag_t::EmbeddedDataByte), 251);
    EXPECT_EQ(sizeof(tag_t), 1U);
}

TEST(PclXLTags, MarkArraysByTheirFourthBitAndLengthsByThreeTypes)
{
    for (int tag = 0; tag < 256; ++tag) {
        EXPECT_EQ(isArray(static_cast<tag_t>(tag)), (tag / 8) % 2 == 1) << tag;
        EXPECT_EQ(isLengthType(static_cast<tag_t>(tag)), tag == 192 || tag == 193 || tag == 194) << tag;
    }
}

} // namespace
} // namespace JobParser
