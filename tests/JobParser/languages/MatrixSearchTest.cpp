#include "JobParser/languages/MatrixSearch.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

#include "Torv/Number.h"
#include "Torv/Text.h"

namespace JobParser::PostScript
{
namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;
using Words = std::vector<std::string>;

const Words pageBefore{"q", ""};
const Words pageAfter{"cm", "msf"};

std::string inWords(OrientationMatrix matrix)
{
    std::string words;
    for (const int sign : {matrix.a, matrix.b, matrix.c, matrix.d})
        words += sign < 0 ? "-" : sign > 0 ? "+" : "0";
    return words + " ";
}

/// Runs code that collects words, and appends what it fails with.
template <typename Code> void noteFailure(std::string& words, const Code& code)
{
    try {
        code();
    } catch (const UnexpectedEndOfFileException&) {
        words += "end of file";
    } catch (const std::invalid_argument&) {
        words += "no number";
    } catch (const std::out_of_range&) {
        words += "out of range";
    }
}

auto noteIn(std::string& words)
{
    return [&words](OrientationMatrix matrix) {
        words += inWords(matrix);
        return true;
    };
}

/// The matrices of a stretch, or what it fails with behind them.
std::string found(JobFile& file, std::int64_t offset, std::int64_t size, const Words& before,
                  const Words& after)
{
    std::string words;
    ChunkRawData raw(offset, size);
    noteFailure(words, [&] { searchOrientations(file, raw, noteIn(words), before, after); });
    return words;
}

std::string found(const std::string& text, const Words& before = pageBefore, const Words& after = pageAfter)
{
    // Room for what is charged twice, and for the look behind the last array.
    const std::string room(20, '.');
    OpenJob job(std::string_view(text + room + room));
    return found(job.file, 0, static_cast<std::int64_t>(text.size() + room.size()), before, after);
}

/// The same stretch read a byte at a time, step by step.
class ByteRule
{
public:
    ByteRule(std::string_view file, std::size_t start, std::int64_t size, const Words& before,
             const Words& after)
        : m_file(file), m_at(start), m_budget(size), m_before(before), m_after(after)
    {
    }

    std::string run()
    {
        try {
            while (m_budget > 0 && readOne()) {
            }
        } catch (const char* failure) {
            m_words += failure;
        }
        return m_words;
    }

private:
    char next()
    {
        if (m_at >= m_file.size())
            throw "end of file";
        return m_file[m_at++];
    }

    static std::size_t longest(const Words& words)
    {
        std::size_t size = 0;
        for (const auto& word : words)
            size = std::max(size, word.size());
        return size;
    }

    bool readOne()
    {
        for (;;) {
            const char byte = next();
            --m_budget;
            if (byte == '[')
                break;
            if (m_budget == 0)
                return false;
        }
        const std::size_t b = longest(m_before);
        const std::size_t a = longest(m_after);
        std::string prefix;
        if (b != 0) {
            const std::size_t have = std::min(b, m_at - 1);
            prefix = m_file.substr(m_at - 1 - have, have);
            m_budget -= static_cast<std::int64_t>(2 + 2 * b);
        }
        std::vector<std::size_t> indices;
        for (std::size_t index = 0; index < m_before.size(); ++index) {
            if (prefix.ends_with(m_before[index]))
                indices.push_back(index);
        }
        if (!m_before.empty() && indices.empty())
            return true;
        std::string text;
        for (char byte = next(); byte != ']'; byte = next()) {
            if (byte == '[') {
                --m_at;
                return true;
            }
            if (m_budget == 0)
                return false;
            --m_budget;
            text += byte;
        }
        std::string suffix;
        for (std::size_t index = 0; index < a; ++index)
            suffix += next();
        m_at -= a;
        m_budget -= static_cast<std::int64_t>(a);
        const auto fits = [&](std::size_t index) {
            return index < m_after.size() && suffix.starts_with(m_after[index]);
        };
        if (!m_after.empty() && std::ranges::none_of(indices, fits))
            return true;
        take(text);
        return true;
    }

    void take(const std::string& text)
    {
        const auto parts = Torv::explode(text, " \r\n\t", 7, true);
        if (parts.size() != 6)
            return;
        std::array<int, 6> signs{};
        for (std::size_t index = 0; index < 6; ++index) {
            try {
                const double value = Torv::stod(parts[index]);
                signs[index] = value > 0.001 ? 1 : value < -0.001 ? -1 : 0;
            } catch (const std::invalid_argument&) {
                throw "no number";
            } catch (const std::out_of_range&) {
                throw "out of range";
            }
        }
        for (std::size_t index = 0; index < 4; ++index)
            m_words += signs[index] < 0 ? "-" : signs[index] > 0 ? "+" : "0";
        m_words += " ";
    }

    std::string_view m_file;
    std::size_t m_at;
    std::int64_t m_budget;
    const Words& m_before;
    const Words& m_after;
    std::string m_words;
};

TEST(MatrixSearch, GivesTheSignsOfTheFirstFourNumbers)
{
    EXPECT_EQ(found("xxxxxx [1 0 0 -1 5 6]cm"), "");
    EXPECT_EQ(found("xxxxxxq[1 0 0 -1 5 6]cm"), "+00- ");
    EXPECT_EQ(found("xxxxxxx[.24 -.24 2e3 -7.5 x]msf q[0 1 -1 0 0 0]cm xxxxxxxx"), "0+-0 ");
    EXPECT_EQ(found("xxxxxxx[ \r\n\t1\t2\r3\n-4 0\n0 ]msf"), "+++- ");
}

TEST(MatrixSearch, TakesWhatLiesNearToZeroForIt)
{
    EXPECT_EQ(found("xxxxxxq[0.0001 0 0 1 0 0]cm"), "000+ ");
    EXPECT_EQ(found("xxxxxxq[0.001 -0.001 0.0011 -0.0011 0 0]cm"), "00+- ");
    EXPECT_EQ(found("xxxxxxq[0x1p3 -inf nan infinity 0 0]cm"), "+-0+ ");
    EXPECT_EQ(found("xxxxxxq[1x 2,5 -3) +.5e 0 0]cm"), "++-+ ");
}

TEST(MatrixSearch, PairsTheWordsAheadWithThoseBehind)
{
    EXPECT_EQ(found("xxxxxxq[1 0 0 1 0 0]cm"), "+00+ ");
    EXPECT_EQ(found("xxxxxxx[1 0 0 1 0 0]cm"), "");
    EXPECT_EQ(found("xxxxxxx[1 0 0 1 0 0]msf"), "+00+ ");
    EXPECT_EQ(found("xxxxxxq[1 0 0 1 0 0]msf"), "+00+ ");
    EXPECT_EQ(found("xxxxxxq[1 0 0 1 0 0] cm"), "");
    EXPECT_EQ(found("xxxxxxQ[1 0 0 1 0 0]cm"), "");
    EXPECT_EQ(found("xx[1 0 0 -1 0 0] + G", {""}, {" + G"}), "+00- ");
    EXPECT_EQ(found("xx[1 0 0 -1 0 0] + g", {""}, {" + G"}), "");
}

TEST(MatrixSearch, TakesAnyArrayWithoutWords)
{
    EXPECT_EQ(found("[1 0 0 1 0 0]", {}, {}), "+00+ ");
    EXPECT_EQ(found("[1 0 0 1 0 0]", {""}, {}), "+00+ ");
    EXPECT_EQ(found("xxxxq[1 0 0 1 0 0]", {"q"}, {}), "+00+ ");
}

TEST(MatrixSearch, FindsNothingByWordsBehindWithoutAnyAhead)
{
    EXPECT_EQ(found("xxxx[1 0 0 1 0 0]cm", {}, {"cm"}), "");
    EXPECT_EQ(found("xxxx[1 0 0 1 0 0]cm", {"", ""}, {"ms"}), "");
}

TEST(MatrixSearch, PassesArraysOfOtherLengths)
{
    EXPECT_EQ(found("xxxxxxxxxxxxxxxxxxxxxxxxxx[1 0 0 1 0]msf[]msf[1 0 0 1 0 0 0]msf[a b c d e f g h]msf"),
              "");
}

TEST(MatrixSearch, BeginsAnewAtABracketInsideAnArray)
{
    EXPECT_EQ(found("xxxxxxxxxxx[[1 0 0 1 0 0]msf"), "+00+ ");
    EXPECT_EQ(found("xxxxxxxxxxxxxx[1 0 [1 0 0 1 0 0]msf"), "+00+ ");
}

TEST(MatrixSearch, PassesWhatIsNoNumberOutsideAFrameOnly)
{
    EXPECT_EQ(found("xxxxxxx[a b c d e f]cm"), "");
    EXPECT_EQ(found("xxxxxxx[a b c d e f]msf"), "no number");
    EXPECT_EQ(found("xxxxxxx[1 0 0 1 0 f]msf"), "no number");
    EXPECT_EQ(found("xxxxxxx[1 0 0 1 0 -]msf"), "no number");
    EXPECT_EQ(found("xxxxxxx[1 0 0 1 0 1e999]msf"), "out of range");
    EXPECT_EQ(found("xxxxxxx[1 0 -1e999 1 0 0]msf"), "out of range");
    EXPECT_EQ(found("xxxxxxx[1e-999 0 0 1 0 0]msf"), "out of range");
}

TEST(MatrixSearch, EndsWhenTheFunctionSaysSo)
{
    OpenJob job("xx[1 0 0 1 0 0][0 1 1 0 0 0]..."sv);
    ChunkRawData raw(0, 31);
    std::string words;
    const auto first = [&](OrientationMatrix matrix) {
        words += inWords(matrix);
        return false;
    };

    searchOrientations(job.file, raw, first, {}, {});

    EXPECT_EQ(words, "+00+ ");
}

TEST(MatrixSearch, ReadsNothingForAnEmptyStretch)
{
    OpenJob job("[1 0 0 1 0 0]"sv);

    EXPECT_EQ(found(job.file, 0, 0, {}, {}), "");
    EXPECT_EQ(found(job.file, 13, 0, {}, {}), "");
    EXPECT_EQ(found(job.file, 0, -1, {}, {}), "");
}

TEST(MatrixSearch, ChargesWhatItLooksAtTwice)
{
    // Up to behind its bracket the first array costs 2 and, for what stands ahead, 4 more; its text costs 11
    // and what stands behind it 3. The second one costs 5, 4 and 11.
    const std::string arrays = "q[1 0 0 1 0 0]cm q[0 1 1 0 0 0]cm";
    OpenJob job(std::string_view(arrays + std::string(20, '.')));
    const auto within = [&](std::int64_t size) { return found(job.file, 0, size, pageBefore, pageAfter); };

    EXPECT_EQ(within(6), "");
    EXPECT_EQ(within(16), "");
    EXPECT_EQ(within(17), "+00+ ");
    EXPECT_EQ(within(24), "+00+ ");
    EXPECT_EQ(within(29), "+00+ ");
    EXPECT_EQ(within(39), "+00+ ");
    EXPECT_EQ(within(40), "+00+ 0++0 ");
}

TEST(MatrixSearch, ReadsAnArrayToItsEndOnceMoreIsChargedThanIsLeft)
{
    const std::string array = "xx[1 0 0 1 0 0]msf";
    OpenJob job(std::string_view(array + "[0 0 0 0 0 0]msf."));

    EXPECT_EQ(found(job.file, 0, 2, pageBefore, pageAfter), "");
    EXPECT_EQ(found(job.file, 0, 3, pageBefore, pageAfter), "+00+ ");
    EXPECT_EQ(found(job.file, 0, 6, pageBefore, pageAfter), "+00+ ");
    EXPECT_EQ(found(job.file, 0, 7, pageBefore, pageAfter), "");
    EXPECT_EQ(found(job.file, 0, 17, pageBefore, pageAfter), "");
    EXPECT_EQ(found(job.file, 0, 18, pageBefore, pageAfter), "+00+ ");
}

TEST(MatrixSearch, TakesWhatThereIsAheadOfABracketAtTheStartOfTheFile)
{
    EXPECT_EQ(found("[1 0 0 1 0 0]msf......"), "+00+ ");
    EXPECT_EQ(found("q[1 0 0 1 0 0]cm......", {"abcq"}, {"cm"}), "");
    EXPECT_EQ(found("q[1 0 0 1 0 0]cm............", {"abcq", "q"}, {"x", "cm"}), "+00+ ");
}

TEST(MatrixSearch, LooksAheadOfItsStretch)
{
    OpenJob job("q[1 0 0 1 0 0]cm......"sv);

    EXPECT_EQ(found(job.file, 1, 21, pageBefore, pageAfter), "+00+ ");
}

TEST(MatrixSearch, ThrowsWhereTheFileEndsJustBehindAnArray)
{
    OpenJob job("xxxxxxq[1 0 0 1 0 0]cm"sv);
    OpenJob setup("xx[1 0 0 1 0 0] + "sv);
    OpenJob open("xxxx[1 0 0 1 0 0"sv);

    EXPECT_EQ(found(job.file, 0, 22, pageBefore, pageAfter), "") << "more is charged than is left";
    EXPECT_EQ(found(job.file, 0, 8, pageBefore, pageAfter), "end of file");
    EXPECT_EQ(found(setup.file, 0, 18, {""}, {" + G"}), "end of file");
    EXPECT_EQ(found(open.file, 0, 16, {""}, {" + G"}), "end of file");
    EXPECT_EQ(found(open.file, 0, 5, pageBefore, pageAfter), "end of file");
}

TEST(MatrixSearch, ThrowsForAStretchBeyondTheFile)
{
    OpenJob job("abc"sv);

    EXPECT_EQ(found(job.file, 0, 4, {}, {}), "end of file");
}

TEST(MatrixSearch, ReadsNumbersOfAnyLength)
{
    const std::string zeros(100000, '0');

    EXPECT_EQ(found("xxxxxxx[" + zeros + " 1 1 1 1 1]msf" + zeros), "0+++ ");
    EXPECT_EQ(found("xxxxxxx[" + zeros + "1 1 1 1 1 1]msf" + zeros), "0+++ ") << "cut after 64 KiB";
    EXPECT_EQ(found("xxxxxxx[1" + zeros + " 1 1 1 1 1]msf" + zeros), "out of range");
    EXPECT_EQ(found("xxxxxxx[1" + std::string(100000, ' ') + "1 1 1 1 1]msf"), "++++ ");
}

TEST(MatrixSearch, EndsSoonForManyBrackets)
{
    EXPECT_EQ(found(std::string(1000000, '[')), "");
    EXPECT_EQ(found("xxx" + std::string(1000000, ']')), "");
    EXPECT_EQ(found("[" + std::string(1000000, 'x')), "");
}

/// Texts that come near to matrices.
std::string randomText(std::mt19937& random, std::size_t pieces)
{
    constexpr std::array<std::string_view, 16> words{"[",
                                                     "]",
                                                     "q",
                                                     "cm ",
                                                     "msf",
                                                     "1 0 0 -1 0 0",
                                                     "1 ",
                                                     " ",
                                                     "q[",
                                                     "]cm ",
                                                     "x",
                                                     "[0 1 -1 0 0 0]msf",
                                                     "q[1 0 0 1 0 0]cm",
                                                     "-1",
                                                     " + G",
                                                     "0\n"};
    std::string text;
    for (std::size_t count = 0; count < pieces; ++count)
        text += words[random() % words.size()];
    return text;
}

TEST(MatrixSearch, FollowsTheStepsForRandomTexts)
{
    const std::array<std::pair<Words, Words>, 5> frames{{
        {pageBefore, pageAfter},
        {{""}, {" + G"}},
        {{}, {}},
        {{"q"}, {"cm"}},
        {{"", "q", "xq"}, {"cm"}},
    }};
    std::mt19937 random(11);
    for (int repeat = 0; repeat < 3000; ++repeat) {
        const std::string text = randomText(random, 1 + random() % 40);
        const std::size_t start = random() % text.size();
        const auto size = static_cast<std::int64_t>(random() % (text.size() - start + 1));
        const auto& [before, after] = frames[random() % frames.size()];
        OpenJob job{std::string_view(text)};

        ASSERT_EQ(found(job.file, static_cast<std::int64_t>(start), size, before, after),
                  ByteRule(text, start, size, before, after).run())
            << testing::PrintToString(text) << start << "+" << size;
    }
}

TEST(MatrixSearch, FollowsTheStepsOverTheBordersOfViews)
{
    constexpr std::int64_t viewSize = 4194304;
    const std::string text = "xx q[1 0 0 -1 0 0]cm [0 1 1 0 0 0]msf x";
    SparseFile sparse;
    sparse.resize(viewSize + 200);
    for (std::int64_t shift = -45; shift <= 5; ++shift) {
        sparse.writeAt(viewSize - 100, std::string(200, '\0'));
        sparse.writeAt(viewSize + shift, text);
        JobFile file;
        file.open(sparse.path());

        EXPECT_EQ(found(file, 0, viewSize + 150, pageBefore, pageAfter), "+00- 0++0 ") << shift;
    }
}

/// A search in a stretch that grows.
class Growing
{
public:
    Growing(JobFile& file, const MatrixFrame& frame) : m_search(file, 0, frame) {}

    std::string found(std::int64_t size)
    {
        std::string words;
        noteFailure(words, [&] {
            m_search.run(size, MatrixSearch::Overdraft::Refused, noteIn(m_kept));
            MatrixSearch rest = m_search;
            words = m_kept;
            rest.run(size, MatrixSearch::Overdraft::Granted, noteIn(words));
        });
        return words;
    }

private:
    MatrixSearch m_search;
    std::string m_kept;
};

TEST(MatrixSearch, GoesOnInAStretchThatGrowsWithTheResultsOfTheWhole)
{
    const MatrixFrame frame{pageBefore, pageAfter};
    std::mt19937 random(12);
    int failed = 0;
    for (int repeat = 0; repeat < 3000; ++repeat) {
        const std::string text = randomText(random, 1 + random() % 40);
        OpenJob job(std::string_view(text + "[0 0 0 0 0 0]..."));
        Growing growing(job.file, frame);
        const auto step = [&] { return 1 + static_cast<std::int64_t>(random() % 8); };
        for (std::int64_t size = 0; size <= static_cast<std::int64_t>(text.size()); size += step()) {
            const std::string whole = found(job.file, 0, size, pageBefore, pageAfter);
            const std::string words = growing.found(size);
            if (whole.ends_with("no number")) {
                // The job has failed, and nothing asks again.
                EXPECT_TRUE(words.ends_with("no number"));
                ++failed;
                break;
            }
            ASSERT_EQ(words, whole) << testing::PrintToString(text) << size;
        }
    }
    EXPECT_LT(failed, 1500);
}

} // namespace
} // namespace JobParser::PostScript
