#include "JobParser/paper/PclXlUtils.h"

#include <gtest/gtest.h>
#include <map>
#include <string_view>

#include "JobParser/paper/PaperSizeManager.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"

#include "Torv/GenericException.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"

namespace JobParser
{
namespace
{

using namespace std::string_view_literals;

int mediaOf(int type, std::string_view bytes)
{
    const JobChunkPclXLAttributeValue value(static_cast<tag_t>(type), {bytes.begin(), bytes.end()});
    return static_cast<int>(PclXlUtils::getMediaSize(value));
}

TEST(PclXlUtils, ReadsAMediumByNumberFromTheFirstByte)
{
    EXPECT_EQ(mediaOf(0xC0, "\x02"), 2);
    EXPECT_EQ(mediaOf(0xC0, "\xE7"), 231);
    EXPECT_EQ(mediaOf(0xC1, "\x05\x01"), 5);
    EXPECT_EQ(mediaOf(0xC0, ""), 0) << "no byte counts as 0";
}

TEST(PclXlUtils, ReadsAMediumByNameInAnyCase)
{
    EXPECT_EQ(mediaOf(0xC8, "a4"), 2);
    EXPECT_EQ(mediaOf(0xC8, "B4 (iso)"), 31);
    EXPECT_EQ(mediaOf(0xC8, "JIS B5"), 11);
    EXPECT_EQ(mediaOf(0xC9, "a\0003\0"sv), 5) << "of characters of 16 bits";
}

TEST(PclXlUtils, GivesOneNumberForAllNamesItDoesNotKnow)
{
    EXPECT_EQ(mediaOf(0xC8, "JISB5"), 231);
    EXPECT_EQ(mediaOf(0xC8, ""), 231);
    EXPECT_EQ(mediaOf(0xC8, " A4"), 231);
    for (const char* name : {"12x17.3", "12X17.3", "12x19.2", "12X19.2"})
        EXPECT_EQ(mediaOf(0xC8, name), 231) << name;
    EXPECT_EQ(PclXlUtils::convertPclXlPaper(EMediaSize{231}), PaperOther);
}

TEST(PclXlUtils, RefusesAnArrayThatIsNoText)
{
    EXPECT_THROW(mediaOf(0xCA, "A4A4"), Torv::GenericException);
    EXPECT_THROW(mediaOf(0xCB, ""), Torv::GenericException);
}

TEST(PclXlUtils, CountsEachMediumUnderItsPaper)
{
    const std::map<int, Paper> papers{
        {0, PaperLetter},     {1, PaperLegal},       {2, PaperA4},          {4, PaperLedger},
        {5, PaperA3},         {10, PaperB4},         {11, PaperB5},         {12, PaperB5},
        {13, PaperB5},        {15, PaperA5},         {16, PaperA5},         {19, PaperStatement},
        {22, PaperStatement}, {25, PaperFolio},      {106, PaperLetter},    {107, PaperLegal},
        {108, PaperA4},       {109, PaperB5},        {110, PaperA3},        {111, PaperB4},
        {112, PaperLedger},   {113, PaperA5},        {150, PaperStatement}, {151, PaperFolio},
        {226, PaperFolio},    {234, PaperStatement},
    };

    for (int media = 0; media < 256; ++media) {
        const auto row = papers.find(media);
        EXPECT_EQ(PclXlUtils::convertPclXlPaper(static_cast<EMediaSize>(media)),
                  row == papers.end() ? PaperOther : row->second)
            << media;
    }
}

TEST(PclXlUtils, ReadsAPaperFromATextOrANumber)
{
    const PaperSizeManager manager;
    const auto paperOf = [&](const Torv::Variant& size) {
        return PclXlUtils::paperFromPcl6PaperSize(size, manager);
    };

    EXPECT_EQ(paperOf("A4"), PaperA4);
    EXPECT_EQ(paperOf("2100x2970"), PaperA4) << "by its size";
    EXPECT_EQ(paperOf("nothing"), PaperOther);
    EXPECT_EQ(paperOf(2), PaperA4);
    EXPECT_EQ(paperOf(0x105), PaperA3) << "the low byte";
    EXPECT_EQ(paperOf(5U), PaperA3);
    EXPECT_EQ(paperOf(5LL), PaperA3);
    EXPECT_EQ(paperOf(5ULL), PaperA3);
    EXPECT_EQ(paperOf(-1), PaperOther);
    EXPECT_EQ(paperOf(231), PaperOther);
    EXPECT_EQ(paperOf({}), PaperOther);
    EXPECT_EQ(paperOf(true), PaperOther);
    EXPECT_EQ(paperOf(2.0), PaperOther);
    EXPECT_THROW(paperOf(18446744073709551615ULL), Torv::VariantInvalidOperationException);
}

TEST(PclXlUtils, ReportsTheLargestPaper)
{
    const PaperSizeManager manager;
    const auto largest = [&](std::set<int> numbers) {
        std::set<EMediaSize> media;
        for (const int number : numbers)
            media.insert(static_cast<EMediaSize>(number));
        return PclXlUtils::getLargestPaper(media, manager);
    };

    EXPECT_EQ(largest({}), PaperOther);
    EXPECT_EQ(largest({17}), PaperOther);
    EXPECT_EQ(largest({2, 5}), PaperA3);
    EXPECT_EQ(largest({5, 2}), PaperA3);
    EXPECT_EQ(largest({0, 25}), PaperLetter) << "of equal areas the lower number";
    EXPECT_EQ(largest({25, 106}), PaperFolio) << "of equal areas the lower number";
    EXPECT_EQ(largest({17, 22, 231}), PaperStatement);
    EXPECT_EQ(largest({4, 5}), PaperA3) << "297 x 420 is more than 279 x 432";
    EXPECT_EQ(largest({0, 1, 2, 4, 5, 10, 11, 16, 22, 25}), PaperA3);
}

} // namespace
} // namespace JobParser
