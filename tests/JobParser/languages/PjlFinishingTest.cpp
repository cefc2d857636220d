#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <vector>

#include "JobParser/languages/PjlParser.h"
#include "tests/support/OpenJob.h"

using JobParser::JobInfo;
using JobParser::Orientation;
using JobParser::Punch;
using JobParser::Staple;
using Zem::Printer::OriginalBrand;

namespace
{

class PjlFinishing : public testing::Test
{
protected:
    OpenJob job{""};
    JobParser::Pjl::Parser parser{job.parent};
};

/// What comes of one staple or punch for the orientations 0 to 3.
struct TurnedRow {
    int value;
    int turned[4];
};

constexpr int smallest = std::numeric_limits<std::int32_t>::min();
constexpr int greatest = std::numeric_limits<std::int32_t>::max();

} // namespace

TEST_F(PjlFinishing, TakesTheStaplingWordsOfHp)
{
    const struct {
        const char* word;
        int staple;
        std::optional<std::int32_t> rotation;
    } rows[] = {
        {"NONE", 0, {}},
        {"ONE_STAPLE", 1, {}},
        {"ANGLED_STAPLE", 1, {}},
        {"LEFT_1PT", 1, 0},
        {"LEFT_1PT_ANGLED", 1, 0},
        {"RIGHT_1PT", 2, 0},
        {"RIGHT_1PT_ANGLED", 2, 0},
        {"TWO_STAPLES", 3, {}},
        {"LEFT_2PT", 3, 0},
        {"RIGHT_2PT", 3, 2},
        {"TOP_2PT", 3, 1},
        {"BT_2T", 3, 3},
        {"BT_2PT", 100, {}},
        {"LEFT_2", 100, {}},
        {"", 100, {}},
        {"right_2pt", 3, 2},
    };
    for (const auto& row : rows) {
        parser.jobInfo.reset(JobInfo::AllFlags);
        parser.stapleRotation.reset();
        parser.jobInfo.setStapling(Staple::RightTop, true);

        parser.parseHpStapling(row.word);

        EXPECT_EQ(static_cast<int>(parser.jobInfo.stapling), row.staple) << row.word;
        EXPECT_EQ(parser.stapleRotation, row.rotation) << row.word;
        EXPECT_EQ(parser.jobInfo.originalBrand, OriginalBrand::Hp) << row.word;
        EXPECT_EQ(parser.jobInfo.flags(JobInfo::AllFlags), 256 | 8192) << row.word;
    }
}

TEST_F(PjlFinishing, KeepsTheStapleRotationAtAWordWithoutASide)
{
    parser.parseHpStapling("BT_2T");
    for (const char* word : {"NONE", "ONE_STAPLE", "ANGLED_STAPLE", "TWO_STAPLES", "other"}) {
        parser.parseHpStapling(word);

        EXPECT_EQ(parser.stapleRotation, std::optional(3)) << word;
    }
}

TEST_F(PjlFinishing, TakesThePunchingWordsOfHp)
{
    const struct {
        const char* word;
        int punch;
        std::optional<std::int32_t> rotation;
    } rows[] = {
        {"NONE", 0, {}},       {"none", 100, {}},  {"2PT", 1, {}},         {"3PT", 2, {}},
        {"4PT", 3, {}},        {"2HOLE", 1, {}},   {"3HOLE", 2, {}},       {"4HOLES", 3, {}},
        {"1PT", 100, {}},      {"5PT", 100, {}},   {"2pt", 100, {}},       {"PT2", 100, {}},
        {"", 100, {}},         {"LEFT_2PT", 1, 0}, {"RIGHT_4PT", 3, 2},    {"TOP_2HOLE", 1, 1},
        {"BT_3PT", 2, 3},      {"LEFT_", 100, 0},  {"LEFT", 100, {}},      {"left_2PT", 1, {}},
        {"X_LEFT_2PT", 1, {}}, {"BT_12PT", 1, 3},  {"LEFT_3PT_2PT", 2, 0},
    };
    for (const auto& row : rows) {
        parser.jobInfo.reset(JobInfo::AllFlags);
        parser.punchRotation.reset();
        parser.jobInfo.setPunching(Punch::ThreeHoles, true);

        parser.parseHpPunching(row.word);

        EXPECT_EQ(static_cast<int>(parser.jobInfo.punching), row.punch) << row.word;
        EXPECT_EQ(parser.punchRotation, row.rotation) << row.word;
        EXPECT_EQ(parser.jobInfo.originalBrand, OriginalBrand::Hp) << row.word;
        EXPECT_EQ(parser.jobInfo.flags(JobInfo::AllFlags), 512 | 8192) << row.word;
    }
}

TEST_F(PjlFinishing, KeepsThePunchRotationAtAWordWithoutASide)
{
    parser.parseHpPunching("BT_3PT");
    parser.parseHpPunching("4HOLE");

    EXPECT_EQ(parser.punchRotation, std::optional(3));
}

TEST_F(PjlFinishing, TurnsStaplesOfHp)
{
    const struct {
        std::optional<std::int32_t> rotation;
        std::vector<TurnedRow> rows;
    } tables[] = {
        {{},
         {{0, {0, 0, 0, 0}},
          {1, {1, 2, 100, 100}},
          {2, {2, 100, 100, 100}},
          {3, {3, 3, 100, 100}},
          {100, {100, 100, 100, 100}},
          {101, {1, 2, 100, 100}},
          {7, {7, 100, 100, 100}}}},
        {0,
         {{0, {0, 0, 0, 0}},
          {1, {1, 1, 100, 100}},
          {2, {2, 2, 100, 100}},
          {3, {3, 100, 100, 100}},
          {100, {100, 100, 100, 100}},
          {101, {1, 1, 100, 100}},
          {7, {7, 7, 100, 100}}}},
        {1, {{0, {0, 0, 0, 0}}, {1, {100, 1, 1, 100}}, {3, {100, 3, 100, 100}}, {100, {100, 100, 100, 100}}}},
        {2, {{2, {100, 100, 2, 2}}, {3, {100, 100, 3, 100}}, {101, {100, 100, 1, 1}}}},
        {3, {{1, {1, 100, 100, 1}}, {3, {100, 100, 100, 3}}}},
    };
    for (const auto& table : tables) {
        parser.stapleRotation = table.rotation;
        for (const TurnedRow& row : table.rows) {
            parser.jobInfo.stapling = static_cast<Staple>(row.value);
            for (int o = 0; o < 4; ++o)
                EXPECT_EQ(static_cast<int>(parser.hpStapleByOrientation(static_cast<Orientation>(o))),
                          row.turned[o])
                    << "rotation " << table.rotation.value_or(-1) << " staple " << row.value
                    << " orientation " << o;
        }
    }
}

TEST_F(PjlFinishing, TurnsPunchesOfHp)
{
    const struct {
        std::optional<std::int32_t> rotation;
        std::vector<TurnedRow> rows;
    } tables[] = {
        {{},
         {{0, {0, 0, 0, 0}},
          {1, {1, 1, 100, 100}},
          {2, {2, 2, 100, 100}},
          {3, {3, 3, 100, 100}},
          {100, {100, 100, 100, 100}},
          {101, {1, 1, 100, 100}}}},
        {0,
         {{0, {0, 0, 0, 0}},
          {1, {1, 100, 100, 100}},
          {101, {1, 100, 100, 100}},
          {100, {100, 100, 100, 100}}}},
        {1, {{2, {100, 2, 100, 100}}}},
        {2, {{3, {100, 100, 3, 100}}}},
        {3, {{1, {100, 100, 100, 1}}, {101, {100, 100, 100, 1}}}},
    };
    for (const auto& table : tables) {
        parser.punchRotation = table.rotation;
        for (const TurnedRow& row : table.rows) {
            parser.jobInfo.punching = static_cast<Punch>(row.value);
            for (int o = 0; o < 4; ++o)
                EXPECT_EQ(static_cast<int>(parser.hpPunchByOrientation(static_cast<Orientation>(o))),
                          row.turned[o])
                    << "rotation " << table.rotation.value_or(-1) << " punch " << row.value << " orientation "
                    << o;
        }
    }
}

TEST_F(PjlFinishing, TurnsStaplesOfTheKxDriver)
{
    const struct {
        bool shortEdge;
        std::vector<TurnedRow> rows;
    } tables[] = {
        {false,
         {{0, {0, 0, 0, 0}},
          {1, {1, 2, 100, 100}},
          {2, {100, 1, 2, 100}},
          {3, {3, 3, 100, 100}},
          {100, {100, 100, 100, 100}},
          {101, {1, 2, 100, 100}},
          {4, {100, 100, 100, 100}},
          {-1, {100, 100, 100, 100}},
          {102, {100, 100, 100, 100}}}},
        {true,
         {{0, {0, 0, 0, 0}},
          {1, {2, 100, 100, 1}},
          {2, {1, 2, 100, 100}},
          {3, {100, 100, 100, 100}},
          {100, {100, 100, 100, 100}},
          {101, {2, 100, 100, 1}},
          {4, {100, 100, 100, 100}}}},
    };
    for (const auto& table : tables) {
        parser.jobInfo.kfeedShortEdge = table.shortEdge;
        for (const TurnedRow& row : table.rows) {
            for (int o = 0; o < 4; ++o)
                EXPECT_EQ(static_cast<int>(parser.kxTransformStapleByOrientation(
                              static_cast<Staple>(row.value), static_cast<Orientation>(o))),
                          row.turned[o])
                    << table.shortEdge << " staple " << row.value << " orientation " << o;
        }
    }
}

TEST_F(PjlFinishing, TurnsPunchesOfTheKxDriver)
{
    const struct {
        bool shortEdge;
        std::vector<TurnedRow> rows;
    } tables[] = {
        {false,
         {{0, {0, 0, 0, 0}},
          {1, {100, 100, 100, 100}},
          {2, {100, 100, 100, 100}},
          {3, {100, 100, 100, 100}},
          {100, {100, 100, 100, 100}},
          {101, {101, 101, 100, 100}}}},
        {true, {{0, {0, 0, 0, 0}}, {1, {100, 100, 100, 100}}, {101, {100, 100, 100, 100}}}},
    };
    for (const auto& table : tables) {
        parser.jobInfo.kfeedShortEdge = table.shortEdge;
        for (const TurnedRow& row : table.rows) {
            for (int o = 0; o < 4; ++o)
                EXPECT_EQ(static_cast<int>(parser.kxTransformPunchByOrientation(static_cast<Punch>(row.value),
                                                                                static_cast<Orientation>(o))),
                          row.turned[o])
                    << table.shortEdge << " punch " << row.value << " orientation " << o;
        }
    }
}

TEST_F(PjlFinishing, KnowsNoPlaceForNumbersThatAreNoOrientation)
{
    for (const int number : {4, 5, -1, smallest, greatest}) {
        const auto orientation = static_cast<Orientation>(number);
        parser.jobInfo.stapling = Staple::LeftTop;
        parser.jobInfo.punching = Punch::TwoHoles;

        EXPECT_EQ(parser.hpStapleByOrientation(orientation), Staple::UnknownPosition) << number;
        EXPECT_EQ(parser.hpPunchByOrientation(orientation), Punch::UnknownKind) << number;
        EXPECT_EQ(parser.kxTransformStapleByOrientation(Staple::LeftTop, orientation),
                  Staple::UnknownPosition);
        EXPECT_EQ(parser.kxTransformPunchByOrientation(Punch::DriverDefault, orientation),
                  Punch::UnknownKind);
    }
}

TEST_F(PjlFinishing, CountsTurnsModuloFour)
{
    parser.jobInfo.stapling = Staple::Two;
    parser.jobInfo.punching = Punch::TwoHoles;
    for (const int turns : {4, -4, 400, smallest}) {
        parser.stapleRotation = turns;
        parser.punchRotation = turns;

        EXPECT_EQ(parser.hpStapleByOrientation(Orientation::Portrait), Staple::Two) << turns;
        EXPECT_EQ(parser.hpStapleByOrientation(static_cast<Orientation>(4)), Staple::Two) << turns;
        EXPECT_EQ(parser.hpPunchByOrientation(static_cast<Orientation>(8)), Punch::TwoHoles) << turns;
        EXPECT_EQ(parser.hpPunchByOrientation(Orientation::Landscape), Punch::UnknownKind) << turns;
    }
}
