#include "JobParser/paper/PaperUtils.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

using namespace JobParser;

namespace
{

using Sides = std::tuple<std::uint32_t, std::uint32_t>;

struct PaperRow {
    int number;
    Paper paper;
    const char* text;
    Sides sides;
};

class EveryPaper : public testing::TestWithParam<PaperRow>
{
};

} // namespace

TEST_P(EveryPaper, HasItsNumberTextAndSize)
{
    const PaperRow& row = GetParam();

    EXPECT_EQ(static_cast<int>(row.paper), row.number);
    EXPECT_EQ(PaperUtils::formatPaper(row.paper), row.text);
    EXPECT_EQ(PaperUtils::getPaperSizes(row.paper), row.sides);
}

INSTANTIATE_TEST_SUITE_P(
    PaperUtils, EveryPaper,
    testing::Values(PaperRow{0, PaperUnknown, "0?", {0, 0}}, PaperRow{5, PaperA4, "A4", {210, 297}},
                    PaperRow{6, PaperA3, "A3", {297, 420}}, PaperRow{7, PaperOther, "PaperOther", {0, 0}},
                    PaperRow{14, PaperA5, "A5", {148, 210}}, PaperRow{15, PaperB4, "B4", {250, 353}},
                    PaperRow{16, PaperB5, "B5", {176, 250}}, PaperRow{17, PaperFolio, "Folio", {216, 279}},
                    PaperRow{18, PaperLedger, "Ledger", {279, 432}},
                    PaperRow{19, PaperLegal, "Legal", {216, 356}},
                    PaperRow{20, PaperLetter, "Letter", {216, 279}},
                    PaperRow{21, PaperStatement, "Statement", {140, 216}}),
    [](const auto& row) { return "Number" + std::to_string(row.param.number); });

TEST(PaperUtils, FormatsANumberThatIsNoPaperWithAQuestionMark)
{
    EXPECT_EQ(PaperUtils::formatPaper(static_cast<Paper>(1)), "1?");
    EXPECT_EQ(PaperUtils::formatPaper(static_cast<Paper>(13)), "13?");
    EXPECT_EQ(PaperUtils::formatPaper(static_cast<Paper>(22)), "22?");
    EXPECT_EQ(PaperUtils::formatPaper(static_cast<Paper>(-1)), "-1?");
    EXPECT_EQ(PaperUtils::formatPaper(static_cast<Paper>(std::numeric_limits<std::int32_t>::min())),
              "-2147483648?");
    EXPECT_EQ(PaperUtils::formatPaper(static_cast<Paper>(std::numeric_limits<std::int32_t>::max())),
              "2147483647?");
}

TEST(PaperUtils, GivesANumberThatIsNoPaperNoSizeHoweverOftenItIsAsked)
{
    EXPECT_EQ(PaperUtils::getPaperSizes(static_cast<Paper>(4)), Sides(0, 0));
    EXPECT_EQ(PaperUtils::getPaperSizes(static_cast<Paper>(4)), Sides(0, 0));
    EXPECT_EQ(PaperUtils::getPaperSizes(static_cast<Paper>(-7)), Sides(0, 0));
    EXPECT_EQ(PaperUtils::formatPaper(static_cast<Paper>(4)), "4?");
}

TEST(PaperUtils, MayBeInitialisedAgainAtAnyTime)
{
    PaperUtils::init();
    PaperUtils::init();

    EXPECT_EQ(PaperUtils::formatPaper(PaperLegal), "Legal");
}

TEST(PaperUtils, AnswersThreadsThatAskForTheFirstTimeTogether)
{
    std::array<std::string, 8> texts;
    std::array<Sides, 8> sizes;

    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        threads.emplace_back([&texts, &sizes, i] {
            sizes[i] = PaperUtils::getPaperSizes(PaperLedger);
            texts[i] = PaperUtils::formatPaper(PaperLedger);
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(texts[i], "Ledger");
        EXPECT_EQ(sizes[i], Sides(279, 432));
    }
}
