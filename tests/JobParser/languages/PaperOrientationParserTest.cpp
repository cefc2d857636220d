#include "JobParser/languages/PaperOrientationParser.h"

#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "JobParser/languages/ChunkPsComment.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/support/OpenJob.h"

namespace JobParser::PostScript
{
namespace
{

using namespace std::string_view_literals;

/// A job of comments and raw stretches: a line that begins `%%` is a comment, other lines in a row are one
/// raw chunk. The line `UEL` is a UEL.
class OrientedJob
{
public:
    explicit OrientedJob(std::string_view text) : job(text), parser(job.parent) { append(0, text); }

    void append(std::size_t offset, std::string_view text)
    {
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t size = std::min(text.find('\n', at), text.size() - 1) + 1 - at;
            const std::string_view line = text.substr(at, size);
            if (line.starts_with("%%"))
                job.job.appendChunk(std::make_shared<ChunkPsComment>(std::string(line)));
            else if (line == "UEL\n")
                job.job.appendChunk(std::make_shared<ChunkUel>());
            else
                appendRaw(offset + at, size);
            at += size;
        }
    }

    int orientation() { return static_cast<int>(parser.findPaperOrientation()); }

    OpenJob job;
    PaperOrientationParser parser;

private:
    void appendRaw(std::size_t offset, std::size_t size)
    {
        const auto start = static_cast<std::int64_t>(offset);
        auto* const last =
            job.job.chunks.empty() ? nullptr : dynamic_cast<ChunkRawData*>(job.job.chunks.back().get());
        if (last != nullptr && last->offset + last->m_size == start)
            last->m_size += static_cast<std::int64_t>(size);
        else
            job.job.appendChunk(std::make_shared<ChunkRawData>(start, static_cast<std::int64_t>(size)));
    }
};

int orientationOf(std::string_view text)
{
    return OrientedJob(text).orientation();
}

struct Row {
    const char* text;
    int orientation;
};

TEST(PaperOrientationParser, TakesPortraitIfNothingSaysOtherwise)
{
    EXPECT_EQ(orientationOf(""), 0);
    EXPECT_EQ(orientationOf("%%Pages: 1\nx\n%%EOF\n"), 0);
    EXPECT_EQ(orientationOf("%%Page: 1 1\n%%BeginPageSetup\nx\n%%EndPageSetup\n"), 0);
}

TEST(PaperOrientationParser, ReadsTheMatrixOfAComment)
{
    constexpr std::array<Row, 17> rows{{
        {"%%ViewingOrientation: 1 0 0 1\n", 0},
        {"%%ViewingOrientation: 0 1 -1 0\n", 1},
        {"%%ViewingOrientation: -1 0 0 -1\n", 2},
        {"%%ViewingOrientation: 0 -1 1 0\n", 3},
        {"%%ViewingOrientation:0 1 -1 0\n", 1},
        {"%%ViewingOrientation:   0   1 -1 0\n", 1},
        {"%%ViewingOrientation: 0.0 1.0 -1 0\n", 1},
        {"%%ViewingOrientation: -\n", 2},
        {"%%ViewingOrientation: 0 1\n", 1},
        {"%%ViewingOrientation: 0\n", 0},
        {"%%ViewingOrientation: 0 2\n", 0},
        {"%%ViewingOrientation: 0\t1\n", 0},
        {"%%ViewingOrientation: +0 1\n", 0},
        {"%%ViewingOrientation:\n", 0},
        {"%%ViewingOrientation:", 0},
        {"%%viewingOrientation: 0 1 -1 0\n", 0},
        {"%%ViewingOrientation 0 1 -1 0\n", 0},
    }};

    for (const Row& row : rows)
        EXPECT_EQ(orientationOf(row.text), row.orientation) << row.text;
}

TEST(PaperOrientationParser, TakesTheLastCommentThatSaysSomething)
{
    EXPECT_EQ(orientationOf("%%ViewingOrientation: 0 1 -1 0\n%%ViewingOrientation: 0 -1 1 0\n"), 3);
    EXPECT_EQ(orientationOf("%%ViewingOrientation: 0 1 -1 0\n%%ViewingOrientation: 1 0 0 1\n"), 1);
    EXPECT_EQ(orientationOf("%%ViewingOrientation: 0 1 -1 0\nx\n%%EndPageSetup\n"
                            "%%ViewingOrientation: 0 -1 1 0\n"),
              1);
}

TEST(PaperOrientationParser, TurnsByARotationBeforeTheFirstPage)
{
    constexpr std::array<Row, 10> rows{{
        {"%%ViewingOrientation: 0 1 -1 0\n180 rotate \n%%EndPageSetup\n", 3},
        {"%%ViewingOrientation: 0 1 -1 0\n180 neg rotate \n%%EndPageSetup\n", 3},
        {"%%ViewingOrientation: -1 0 0 -1\n180 rotate\n%%EndPageSetup\n", 0},
        {"180 rotate\n%%EndPageSetup\n", 2},
        {"x180 rotate \n%%EndPageSetup\n", 0},
        {"x -90 rotate\n%%EndPageSetup\n", 3},
        {"%%ViewingOrientation: -1 0 0 -1\nx -90 rotate\n%%EndPageSetup\n", 3},
        {"%%ViewingOrientation: 0 1 -1 0\nx -90 rotate 180 rotate\n%%EndPageSetup\n", 3},
        {"x -90 rotate\n%%Pages: 1\ny\n%%EndPageSetup\n", 0},
        {"x\n%%EndPageSetup\nx -90 rotate\n%%EndPageSetup\n", 0},
    }};

    for (const Row& row : rows)
        EXPECT_EQ(orientationOf(row.text), row.orientation) << row.text;
}

TEST(PaperOrientationParser, EndsAtAPageSetupWithoutRawDataBeforeIt)
{
    EXPECT_EQ(orientationOf("%%EndPageSetup\nx -90 rotate\n%%EndPageSetup\n"), 0);
    EXPECT_EQ(orientationOf("%%ViewingOrientation: 0 1 -1 0\n%%EndPageSetup\n"), 1);
    EXPECT_EQ(orientationOf("x -90 rotate\nUEL\n%%EndPageSetup\n"), 0);
}

constexpr std::string_view filler = "................................................\n";

int orientationOfMatrices(std::string_view setup, std::string_view page)
{
    return orientationOf(std::string(setup) + std::string(filler) + "%%EndPageSetup\n" + std::string(page) +
                         std::string(filler) + std::string(filler) + "%%Page: 2 2\nx\n");
}

TEST(PaperOrientationParser, ComposesTheMatricesOfSetupAndPage)
{
    constexpr std::array<Row, 9> rows{{
        {"q[0 1 -1 0 0 0]cm ", 3},
        {"q[0 -1 1 0 0 0]cm ", 1},
        {"q[1 0 0 1 0 0]cm ", 0},
        {"q[-1 0 0 -1 0 0]cm ", 2},
        {"[0 -1 1 0 0 0]msf ", 1},
        {"x[0 -1 1 0 0 0]cm ", 0},
        {"q[1 1 0 0 0 0]cm ", 0},
        {"q[0 0 0 0 0 0]cm ", 3},
        {"q[0.0001 -1 1 0 0 0]cm ", 1},
    }};

    for (const Row& row : rows)
        EXPECT_EQ(orientationOfMatrices("[1 0 0 -1 0 0] + G ", row.text), row.orientation) << row.text;
}

TEST(PaperOrientationParser, ComposesWithTheFirstMatrixOfTheSetup)
{
    EXPECT_EQ(orientationOfMatrices("[0 1 -1 0 0 0] + G ", "q[0 1 -1 0 0 0]cm "), 2);
    EXPECT_EQ(orientationOfMatrices("[0 1 -1 0 0 0] + G [1 0 0 -1 0 0] + G ", "q[0 1 -1 0 0 0]cm "), 2);
    EXPECT_EQ(orientationOfMatrices("[0 1 1 0 0 0] + G ", "q[1 0 0 1 0 0]cm "), 1);
    EXPECT_EQ(orientationOfMatrices("[1 1 1 1 0 0] + G ", "q[1 1 0 0 0 0]cm "), 0) << "2 is no -1";
    EXPECT_EQ(orientationOfMatrices("[-1 1 -1 1 0 0] + G ", "q[1 1 0 0 0 0]cm "), 0) << "nor is -2";
}

TEST(PaperOrientationParser, TakesTheUprightMatrixWhereOneIsMissing)
{
    EXPECT_EQ(orientationOfMatrices("[-1 0 0 1 0 0] + G ", "x "), 2);
    EXPECT_EQ(orientationOfMatrices("x ", "q[0 -1 1 0 0 0]cm "), 1);
    EXPECT_EQ(orientationOfMatrices("x ", "[-1 0 0 1 0 0] + G "), 0) << "that is not in the setup";
    EXPECT_EQ(orientationOfMatrices("x ", "x "), 0);
}

TEST(PaperOrientationParser, KeepsWhatCommentsSayWithoutMatrices)
{
    EXPECT_EQ(orientationOf("%%ViewingOrientation: 0 1 -1 0\nxxxxxxxxxx\n%%EndPageSetup\nx\n"), 1);
    EXPECT_EQ(
        orientationOfMatrices("%%ViewingOrientation: 0 1 -1 0\n[1 0 0 -1 0 0] + G ", "q[1 0 0 1 0 0]cm "), 0);
}

TEST(PaperOrientationParser, TakesTheMostFrequentMatrixOfThePage)
{
    EXPECT_EQ(orientationOfMatrices("x ", "q[1 0 0 1 0 0]cm q[0 -1 1 0 0 0]cm [0 -1 1 0 0 0]msf "), 1);
    EXPECT_EQ(orientationOfMatrices("q[0 -1 1 0 0 0]cm ", "q[1 0 0 1 0 0]cm q[0 -1 1 0 0 0]cm "), 1)
        << "the setup is part of the page";
}

TEST(PaperOrientationParser, TakesTheFirstInOrderOfMatricesThatAreEquallyFrequent)
{
    EXPECT_EQ(orientationOfMatrices("x ", "q[1 0 0 1 0 0]cm q[0 -1 1 0 0 0]cm "), 1);
    EXPECT_EQ(orientationOfMatrices("x ", "q[0 -1 1 0 0 0]cm q[1 0 0 1 0 0]cm "), 1);
    EXPECT_EQ(orientationOfMatrices("x ", "q[0 -1 1 0 0 0]cm q[-1 0 0 1 0 0]cm "), 2);
}

TEST(PaperOrientationParser, LooksAtTheFirstPageOnly)
{
    const std::string start = "x\n" + std::string(filler) + "%%EndPageSetup\n";
    const std::string matrix = "q[0 -1 1 0 0 0]cm " + std::string(filler);

    EXPECT_EQ(orientationOf(start + matrix + "%%Page: 2 2\nx\n"), 1);
    EXPECT_EQ(orientationOf(start + "%%Page: 2 2\n" + matrix), 0);
    EXPECT_EQ(orientationOf(start + "%%PageTrailer\n" + matrix), 0);
    EXPECT_EQ(orientationOf(start + "%%page: 2 2\n" + matrix), 1);
    EXPECT_EQ(orientationOf(start + "x\n%%BeginObject\n" + matrix + "%%EndObject\n"), 1);
    EXPECT_EQ(orientationOf(start + "x\nUEL\n" + matrix), 1);
    EXPECT_EQ(orientationOf(start + "%%q[0 -1 1 0 0 0]cm\n" + matrix), 1) << "comments lie in the range";
}

TEST(PaperOrientationParser, GivesTheOrientationByTheMatricesOfAChunk)
{
    const std::string setup = "[-1 0 0 1 0 0] + G " + std::string(filler);
    OrientedJob none(std::string(filler) + "%%EndPageSetup\nx\n");
    OrientedJob turned(setup + "%%EndPageSetup\nx\n");
    OrientedJob page(std::string(filler) + "%%Page: 1 1\nq[0 -1 1 0 0 0]cm " + std::string(filler));

    EXPECT_EQ(none.parser.orientationByKXdriver(0), -1);
    EXPECT_EQ(turned.parser.orientationByKXdriver(0), 2);
    EXPECT_EQ(page.parser.orientationByKXdriver(0), 1) << "the comment behind the chunk ends no page";
    EXPECT_EQ(turned.parser.orientationByKXdriver(1), -1) << "no raw data";
}

TEST(PaperOrientationParser, SetsTheOrientationAndKeepsThePosition)
{
    OrientedJob job("%%ViewingOrientation: 0 1 -1 0\nx -90 rotate\n%%EndPageSetup\n");
    job.job.file.setPos(7);
    JobInfo info;

    job.parser.parse(info);

    EXPECT_EQ(info.orientation, Orientation::ReverseLandscape);
    EXPECT_NE(info.flags(JobInfo::FlagOrientation), 0);
    EXPECT_EQ(job.job.file.m_offset, 7);
}

TEST(PaperOrientationParser, SetsPortraitForAJobThatSaysNothing)
{
    OrientedJob job("x\n");
    JobInfo info;

    job.parser.parse(info);

    EXPECT_EQ(info.orientation, Orientation::Portrait);
    EXPECT_NE(info.flags(JobInfo::FlagOrientation), 0);
}

TEST(PaperOrientationParser, GivesTheSameForAJobThatGrows)
{
    const std::string text =
        "x\n%%ViewingOrientation: 0 1 -1 0\n%%Pages: 3\n" + std::string(filler) +
        "%%EndPageSetup\nq[1 0 0 1 0 0]cm " + std::string(filler) +
        "%%a\nq[0 -1 1 0 0 0]cm q[0 -1 1 0 0 0]cm [\n%%b\n" +
        "q[-1 0 0 1 0 0]cm q[-1 0 0 1 0 0]cm q[-1 0 0 1 0 0]cm [1 0 0\n%%c\n1 0 0]msf[\n" +
        "%%Page: 2 2\nq[0 -1 1 0 0 0]cm q[0 -1 1 0 0 0]cm q[0 -1 1 0 0 0]cm \n%%EOF\n......";
    OrientedJob whole{std::string_view(text)};
    OrientedJob growing{std::string_view(text)};
    const auto chunks = growing.job.job.chunks;
    growing.job.job.chunks.clear();
    whole.job.job.chunks.clear();

    std::string answers;
    for (const auto& chunk : chunks) {
        growing.job.job.appendChunk(chunk);
        whole.job.job.appendChunk(chunk);
        JobInfo info;
        growing.parser.parse(info);
        EXPECT_EQ(static_cast<int>(info.orientation), whole.orientation());
        answers += std::to_string(whole.orientation());
    }

    EXPECT_EQ(answers, "0111100111122222");
}

TEST(PaperOrientationParser, PassesOnWhatMatricesFailWith)
{
    const std::string start = "x\n" + std::string(filler) + "%%EndPageSetup\n";

    EXPECT_THROW(orientationOf(start + "[a b c d e f]msf\n" + std::string(filler)), std::invalid_argument);
    EXPECT_THROW(orientationOf(start + "[1e999 b c d e f]msf\n" + std::string(filler)), std::out_of_range);
    EXPECT_THROW(orientationOf(start + "[\n%%a]"), UnexpectedEndOfFileException);
}

TEST(PaperOrientationParser, PassesNullChunks)
{
    OrientedJob job("x\n%%EndPageSetup\nx\n");
    job.job.job.insertChunkAt(0, nullptr);
    job.job.job.insertChunkAt(3, nullptr);

    EXPECT_EQ(job.orientation(), 0);
}

// A body for each of many UELs asks for the orientation again, of a first page that grows with each of them.
TEST(PaperOrientationParser, EndsSoonForManyBodies)
{
    const std::string page =
        "x\n" + std::string(filler) + "%%EndPageSetup\n" + std::string(1000000, '.') + "\n";
    OrientedJob job(page + std::string(600000, '.'));
    job.job.job.chunks.pop_back();
    JobInfo info;
    for (std::int64_t body = 0; body < 20000; ++body) {
        job.job.job.appendChunk(std::make_shared<ChunkUel>());
        job.job.job.appendChunk(
            std::make_shared<ChunkRawData>(static_cast<std::int64_t>(page.size()) + 20 * body, 10));
        job.parser.parse(info);
    }

    EXPECT_EQ(info.orientation, Orientation::Portrait);
}

} // namespace
} // namespace JobParser::PostScript
