#include "JobParser/languages/RotationSearch.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

#include "Torv/Regex.h"

namespace JobParser::PostScript
{
namespace
{

using namespace std::string_view_literals;

Rotation rotationIn(JobFile& file, std::int64_t offset, std::int64_t size)
{
    return findRotation(file, ChunkRawData(offset, size));
}

Rotation rotationOf(std::string_view text)
{
    OpenJob job(text);
    return rotationIn(job.file, 0, static_cast<std::int64_t>(text.size()));
}

/// The rule itself, by a pattern and a search over the whole text.
Rotation ruleOf(std::string_view text)
{
    static const Torv::Regex pattern(R"((?:^|\s)(180)\s+(?:neg\s+)?rotate\s)");
    if (pattern.matches(text))
        return Rotation::HalfTurn;
    return text.find(" -90 rotate") == text.npos ? Rotation::None : Rotation::MinusQuarterTurn;
}

struct Row {
    std::string_view text;
    Rotation rotation;
};

TEST(RotationSearch, FindsTheOperatorsOfDrivers)
{
    constexpr std::array<Row, 30> rows{{
        {"180 rotate ", Rotation::HalfTurn},
        {"180 rotate\n", Rotation::HalfTurn},
        {"\v180\f\r\n rotate\t", Rotation::HalfTurn},
        {"180 neg rotate ", Rotation::HalfTurn},
        {"x 180\tneg\nrotate x", Rotation::HalfTurn},
        {"180 180 rotate ", Rotation::HalfTurn},
        {" -90 rotate 180 rotate ", Rotation::HalfTurn},
        {"x180 rotate ", Rotation::None},
        {"180 rotate", Rotation::None},
        {"180rotate ", Rotation::None},
        {"180 negrotate ", Rotation::None},
        {"180 neg neg rotate ", Rotation::None},
        {"180 nrotate ", Rotation::None},
        {"180 nerotate ", Rotation::None},
        {"180 ne rotate ", Rotation::None},
        {"180 nrotate -90 rotate", Rotation::MinusQuarterTurn},
        {"180 rotates ", Rotation::None},
        {"1180 rotate ", Rotation::None},
        {"-180 rotate ", Rotation::None},
        {"180 Rotate ", Rotation::None},
        {" -90 rotate", Rotation::MinusQuarterTurn},
        {"180 -90 rotate", Rotation::MinusQuarterTurn},
        {" -90 rotatex", Rotation::MinusQuarterTurn},
        {"-90 rotate", Rotation::None},
        {"\n-90 rotate", Rotation::None},
        {" -90  rotate", Rotation::None},
        {" -90 rotat", Rotation::None},
        {" 90 rotate", Rotation::None},
        {"180 \0rotate "sv, Rotation::None},
        {"", Rotation::None},
    }};

    for (const Row& row : rows) {
        EXPECT_EQ(rotationOf(row.text), row.rotation) << row.text;
        EXPECT_EQ(ruleOf(row.text), row.rotation) << row.text;
    }
}

TEST(RotationSearch, LooksNeitherAheadOfItsStretchNorBehindIt)
{
    OpenJob job(" -90 rotate x180 rotate "sv);

    EXPECT_EQ(rotationIn(job.file, 0, 11), Rotation::MinusQuarterTurn);
    EXPECT_EQ(rotationIn(job.file, 0, 10), Rotation::None);
    EXPECT_EQ(rotationIn(job.file, 1, 10), Rotation::None);
    EXPECT_EQ(rotationIn(job.file, 13, 11), Rotation::HalfTurn);
    EXPECT_EQ(rotationIn(job.file, 13, 10), Rotation::None);
    EXPECT_EQ(rotationIn(job.file, 12, 12), Rotation::None);
    EXPECT_EQ(rotationIn(job.file, 24, 0), Rotation::None);
}

TEST(RotationSearch, ThrowsForAStretchBeyondTheFile)
{
    OpenJob job("abc"sv);

    EXPECT_THROW(rotationIn(job.file, 0, 4), UnexpectedEndOfFileException);
}

// Words and parts of words instead of single bytes, so that short texts come near the operators.
constexpr std::array<std::string_view, 12> words{"180", " ", "neg", "rotate", "-90",  "\n",
                                                 "x",   "1", "80 ", "rot",    "ate ", "ne"};

TEST(RotationSearch, FollowsThePatternForAllShortTexts)
{
    constexpr std::size_t longest = 5;
    std::size_t count = 1;
    for (std::size_t size = 0; size <= longest; ++size, count *= words.size()) {
        std::string all;
        std::vector<std::pair<std::size_t, std::size_t>> places;
        for (std::size_t number = 0; number < count; ++number) {
            const std::size_t start = all.size();
            for (std::size_t index = 0, rest = number; index < size; ++index, rest /= words.size())
                all += words[rest % words.size()];
            places.emplace_back(start, all.size() - start);
        }
        OpenJob job{std::string_view(all)};
        for (const auto& [start, length] : places) {
            const auto text = std::string_view(all).substr(start, length);
            ASSERT_EQ(
                rotationIn(job.file, static_cast<std::int64_t>(start), static_cast<std::int64_t>(length)),
                ruleOf(text))
                << text;
        }
    }
}

TEST(RotationSearch, FollowsThePatternForRandomTexts)
{
    std::mt19937 random(7);
    for (int repeat = 0; repeat < 2000; ++repeat) {
        std::string text;
        for (std::size_t count = random() % 40; count > 0; --count)
            text += words[random() % words.size()];
        ASSERT_EQ(rotationOf(text), ruleOf(text)) << text;
    }
}

TEST(RotationSearch, FollowsThePatternOverTheBordersOfViews)
{
    constexpr std::int64_t viewSize = 4194304;
    const std::array<std::string_view, 5> texts{" 180 neg rotate ", " -90 rotate ", " 180 rotate ",
                                                "x180 rotate ", " 180  neg   rotate "};
    SparseFile sparse;
    sparse.resize(2 * viewSize);
    for (const std::string_view text : texts) {
        for (std::int64_t shift = -20; shift <= 4; ++shift) {
            sparse.writeAt(viewSize - 64, std::string(128, '\0'));
            sparse.writeAt(viewSize + shift, text);
            JobFile file;
            file.open(sparse.path());

            EXPECT_EQ(rotationIn(file, 0, 2 * viewSize), ruleOf(text)) << text << shift;
        }
    }
}

TEST(RotationSearch, TakesWhiteSpaceOfManyViews)
{
    const std::string blanks(9000000, ' ');

    EXPECT_EQ(rotationOf("180" + blanks + "neg" + blanks + "rotate "), Rotation::HalfTurn);
    EXPECT_EQ(rotationOf("180" + blanks + "x -90 rotate"), Rotation::MinusQuarterTurn);
}

TEST(RotationSearch, EndsSoonForManyOperands)
{
    std::string text;
    for (int count = 0; count < 300000; ++count)
        text += "180   \n neg -9 ";

    EXPECT_EQ(rotationOf(text), Rotation::None);
}

} // namespace
} // namespace JobParser::PostScript
