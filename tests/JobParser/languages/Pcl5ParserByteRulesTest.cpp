#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "JobParser/JobParserException.h"
#include "JobParser/languages/ChunkPclEsc.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/Pcl5Parser.h"
#include "JobParser/languages/PrescribeParser.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "tests/JobParser/languages/Pcl5Reading.h"
#include "tests/support/SparseFile.h"

namespace JobParser::Pcl5
{
namespace
{

using namespace std::string_view_literals;

// What bodies may be made of: all states of a sequence, each with what is passed in bulk and what is not,
// what has a payload and what has none, and pieces that fit no rule.
constexpr std::array<std::string_view, 30> fragments{"abcd",
                                                     "!R!",
                                                     "!",
                                                     "R",
                                                     "EXIT;",
                                                     "EXIt ",
                                                     "\f",
                                                     "\x1B",
                                                     "\x1B"
                                                     "E",
                                                     "\x1B"
                                                     "9",
                                                     "\x1B%0B",
                                                     "\x1B%",
                                                     "\x1B&l1X",
                                                     "\x1B&l26a1O",
                                                     "\x1B&l1o2s3h",
                                                     "\x1B&l",
                                                     "1h2J",
                                                     "4O",
                                                     "\x1B&a10c5R",
                                                     "\x1B*b2W!\f",
                                                     "\x1B*b3m2W\x1B\f",
                                                     "\x1B*b0w1Wx",
                                                     "\x1B*b0V",
                                                     "\x1B*b1w",
                                                     "\x1B*b-1W",
                                                     "\x1B*b9W",
                                                     "\x1B(s+1.5V",
                                                     "\x1B(s000000002W\x1B\x1B",
                                                     "\x1B*b12345678901234M",
                                                     "\x1B&l`~@"};

std::string randomBody(std::mt19937& random, std::size_t size)
{
    std::string body;
    while (body.size() < size)
        body += fragments[random() % fragments.size()];
    return body;
}

void appendWord(std::string& words, const std::string& word)
{
    // Sequences that follow each other are told as one.
    if (word != "Kept " || !words.ends_with(word))
        words += word;
}

std::string rawWord(std::int64_t start, std::int64_t end)
{
    return start == end ? "" : "Raw " + std::to_string(start) + "+" + std::to_string(end - start) + " ";
}

// The chunks of a body that begins at `start`, one token after the other, without any search in bulk.
std::string byteRule(Reading& reading, std::int64_t start)
{
    std::string words;
    for (;;) {
        const std::int64_t begin = reading.job.file.m_offset;
        const Pcl5Token token = reading.parser.getToken();
        if (token == Pcl5Token::Text || (token == Pcl5Token::Escape && !reading.parser.isKept))
            continue;
        appendWord(words, rawWord(start, begin));
        if (token == Pcl5Token::Uel || token == Pcl5Token::EndOfFile)
            return words;
        if (token == Pcl5Token::Prescribe)
            reading.prescribe.parse();
        appendWord(words, token == Pcl5Token::FormFeed ? "FF "
                          : token == Pcl5Token::Escape ? "Kept "
                                                       : "Block ");
        start = reading.job.file.m_offset;
    }
}

// The same of a body that was parsed.
std::string wordsOfChunks(const Job& job)
{
    std::string words;
    for (const auto& chunk : job.chunks) {
        if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get()))
            appendWord(words, rawWord(raw->offset, raw->offset + raw->size()));
        else if (dynamic_cast<const ChunkFormFeed*>(chunk.get()) != nullptr)
            appendWord(words, "FF ");
        else
            appendWord(words, dynamic_cast<const ChunkPclEsc*>(chunk.get()) != nullptr ? "Kept " : "Block ");
    }
    return words;
}

// What `read` gives or fails with, and where the file stands then.
template <typename Read> std::string outcome(Reading& reading, Read read)
{
    std::string words;
    try {
        words = read();
    } catch (const JobParserException& error) {
        words = error.what();
    }
    return words + " at " + std::to_string(reading.job.file.m_offset);
}

TEST(Pcl5Parser, CutsAsTheByteRuleDoesForRandomBodies)
{
    std::mt19937 random(8);
    int whole = 0;
    for (int repeat = 0; repeat < 4000; ++repeat) {
        const std::string body = randomBody(random, static_cast<std::size_t>(repeat) % 200);
        Reading byToken(body);
        Reading inBulk(body);

        const std::string expected = outcome(byToken, [&] { return byteRule(byToken, 0); });
        const std::string cut = outcome(inBulk, [&] {
            inBulk.parse();
            return wordsOfChunks(inBulk.job.job);
        });

        ASSERT_EQ(cut, expected) << testing::PrintToString(body);
        whole += inBulk.job.file.atEnd() ? 1 : 0;
    }
    EXPECT_GT(whole, 400);
    EXPECT_LT(whole, 3600);
}

// What a body comes to that stands at the end of a file, with places counted from its start.
std::string readAt(SparseFile& bytes, std::int64_t start, std::string_view body)
{
    bytes.resize(start);
    bytes.writeAt(start, body);
    Reading reading(""sv);
    reading.job.file.open(bytes.path());
    reading.job.file.setPos(start);
    std::string words = "ok";
    try {
        reading.parse();
    } catch (const JobParserException& error) {
        words = error.what();
    }
    for (const auto& chunk : reading.job.job.chunks) {
        if (auto* raw = dynamic_cast<ChunkRawData*>(chunk.get()))
            raw->offset -= start;
        else if (auto* block = dynamic_cast<ChunkPrescribe*>(chunk.get()))
            block->ofs -= start;
    }
    const JobInfo& info = reading.info;
    return words + " at " + std::to_string(reading.job.file.m_offset - start) + ": " + reading.chunks() +
           " | " + std::to_string(reading.parser.firstPageChunk) + " " + std::to_string(info.m_flags) + " " +
           std::to_string(info.copies) + " " + std::to_string(static_cast<int>(info.orientation));
}

// Near the end of a view sequences are read byte by byte, elsewhere in the view.
TEST(Pcl5Parser, ReadsABodyTheSameWhereverAViewEndsInIt)
{
    constexpr std::int64_t viewEnd = 4194304;
    std::mt19937 random(9);
    std::vector<std::string> bodies(fragments.begin(), fragments.end());
    bodies.push_back("\x1B&l1o26a3X\x1B*t300R\x1B*b3m4W\f\x1B\f\f\x1B*b5M\x1B*b20W" +
                     std::string(20, '\x1B') + "\f");
    for (int repeat = 0; repeat < 40; ++repeat)
        bodies.push_back(randomBody(random, 60));
    SparseFile bytes;
    for (const std::string& body : bodies) {
        const std::string expected = readAt(bytes, 0, body);
        for (std::size_t before = 0; before <= body.size(); ++before)
            ASSERT_EQ(readAt(bytes, viewEnd - static_cast<std::int64_t>(before), body), expected)
                << before << testing::PrintToString(body);
    }
}

TEST(Pcl5Parser, PassesPayloadsAndTextOverTheEndOfAView)
{
    constexpr std::int64_t viewEnd = 4194304;
    SparseFile bytes;
    bytes.resize(viewEnd + 1000);
    for (std::int64_t offset = viewEnd - 12; offset <= viewEnd + 2; ++offset) {
        bytes.writeAt(offset, "\x1B*b5W\f\f\f\f\f\x1B"
                              "E");
        Reading reading(""sv);
        reading.job.file.open(bytes.path());

        reading.parse();

        EXPECT_EQ(reading.chunks(), "Raw 0+" + std::to_string(offset + 10) + ", E, Raw " +
                                        std::to_string(offset + 12) + "+" +
                                        std::to_string(viewEnd + 1000 - offset - 12));
        bytes.writeAt(offset, std::string(12, '\0'));
    }
}

TEST(Pcl5Parser, StepsOverFarPayloads)
{
    for (const int size : {191, 192, 193, 5000}) {
        const std::string body =
            "\x1B*b" + std::to_string(size) + "W" + std::string(static_cast<std::size_t>(size), '\f');
        EXPECT_EQ(parsed(body + "\f"), "Raw 0+" + std::to_string(body.size()) + ", FF | 0");
        EXPECT_EQ(parsed(body), "Raw 0+" + std::to_string(body.size()) + " | 0");
    }
}

} // namespace
} // namespace JobParser::Pcl5
