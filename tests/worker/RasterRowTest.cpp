#include "worker/RasterRow.h"

#include <gtest/gtest.h>

namespace JobParser::Worker
{
namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const RasterRow& row)
{
    return {row.bytes().begin(), row.bytes().end()};
}

Bytes decoded(RasterMode mode, const Bytes& data, const Bytes& seed = {})
{
    RasterRow row;
    row.decode(RasterMode::Plain, seed);
    row.decode(mode, data);
    return bytesOf(row);
}

TEST(RasterRow, TakesPlainBytesAsTheyAre)
{
    EXPECT_EQ(decoded(RasterMode::Plain, {1, 2, 3}, {9, 9, 9, 9}), (Bytes{1, 2, 3}));
}

TEST(RasterRow, RepeatsEachByteOfRunLength)
{
    EXPECT_EQ(decoded(RasterMode::RunLength, {2, 0xAA, 0, 0xBB}), (Bytes{0xAA, 0xAA, 0xAA, 0xBB}));
}

TEST(RasterRow, ReadsRunsAndLiteralsOfPackBits)
{
    EXPECT_EQ(decoded(RasterMode::PackBits, {2, 1, 2, 3, 128, 0xFE, 7}), (Bytes{1, 2, 3, 7, 7, 7}));
}

TEST(RasterRow, ReplacesBytesOfTheRowBeforeInDeltaRow)
{
    // One byte at 1, and two bytes one further on.
    EXPECT_EQ(decoded(RasterMode::DeltaRow, {0x01, 0xAA, 0x21, 0xBB, 0xCC}, {1, 2, 3, 4, 5, 6}),
              (Bytes{1, 0xAA, 3, 0xBB, 0xCC, 6}));
}

TEST(RasterRow, KeepsTheRowBeforeForAnEmptyDeltaRow)
{
    EXPECT_EQ(decoded(RasterMode::DeltaRow, {}, {1, 2}), (Bytes{1, 2}));
}

TEST(RasterRow, AddsFurtherBytesToALongOffsetOfDeltaRow)
{
    const Bytes row = decoded(RasterMode::DeltaRow, {0x1F, 255, 3, 0xAA});

    ASSERT_EQ(row.size(), 290U);
    EXPECT_EQ(row[289], 0xAA);
    EXPECT_EQ(row[288], 0);
}

TEST(RasterRow, ReplacesLiteralsAndRunsInReplacementDelta)
{
    // Offset 1, two literal bytes; offset 1, a run of two.
    EXPECT_EQ(decoded(RasterMode::ReplacementDelta, {0x09, 0xAA, 0xBB, 0xA0, 0xCC}, {1, 2, 3, 4, 5, 6, 7}),
              (Bytes{1, 0xAA, 0xBB, 4, 0xCC, 0xCC, 7}));
}

TEST(RasterRow, AddsFurtherBytesToCountsOfReplacementDelta)
{
    // A run of 31 + 2 + 4 bytes, and a literal of 7 + 1 + 1.
    Bytes data{0x9F, 4, 0xAA, 0x07, 1};
    data.insert(data.end(), 9, 0xBB);

    const Bytes row = decoded(RasterMode::ReplacementDelta, data);

    EXPECT_EQ(row, [] {
        Bytes expected(37, 0xAA);
        expected.insert(expected.end(), 9, 0xBB);
        return expected;
    }());
}

TEST(RasterRow, StopsWhereTheDataIsCutOff)
{
    EXPECT_EQ(decoded(RasterMode::RunLength, {5}), Bytes{});
    EXPECT_EQ(decoded(RasterMode::PackBits, {5, 1, 2}), (Bytes{1, 2}));
    EXPECT_EQ(decoded(RasterMode::DeltaRow, {0xE0, 1}), (Bytes{1}));
    EXPECT_EQ(decoded(RasterMode::ReplacementDelta, {0x80}), Bytes{});
}

TEST(RasterRow, LosesWhatIsBeyondTheLongestRow)
{
    Bytes data;
    for (int i = 0; i < 3000; ++i)
        data.insert(data.end(), {255, 1});

    EXPECT_EQ(decoded(RasterMode::RunLength, data).size(), RasterRow::longest);
    EXPECT_LE(decoded(RasterMode::DeltaRow, Bytes(5000, 255)).size(), RasterRow::longest);
    EXPECT_LE(decoded(RasterMode::ReplacementDelta, Bytes(5000, 255)).size(), RasterRow::longest);
}

TEST(RasterRow, IsEmptyWhenCleared)
{
    RasterRow row;
    row.decode(RasterMode::Plain, Bytes{1, 2});

    row.clear();

    EXPECT_TRUE(row.bytes().empty());
}

} // namespace
} // namespace JobParser::Worker
