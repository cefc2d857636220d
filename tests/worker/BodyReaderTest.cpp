#include "worker/BodyReader.h"

#include <gtest/gtest.h>

#include "tests/support/SparseFile.h"
#include "tests/worker/WalkerSupport.h"

namespace JobParser::Worker
{
namespace
{

std::string text(std::span<const std::uint8_t> bytes)
{
    return {bytes.begin(), bytes.end()};
}

TEST(BodyReader, ReadsRangesAsOneFile)
{
    OpenBody open("0123456789");
    open.body.ranges = {{1, 3}, {6, 2}};
    BodyReader reader(open.file, open.body);

    EXPECT_EQ(reader.size(), 5);
    EXPECT_EQ(text(reader.take(100)), "12367");
    EXPECT_TRUE(reader.atEnd());
    EXPECT_EQ(reader.get(), -1);
}

TEST(BodyReader, GivesByteByByteAcrossRanges)
{
    OpenBody open("abcd");
    open.body.ranges = {{0, 1}, {2, 1}};
    BodyReader reader(open.file, open.body);

    EXPECT_EQ(reader.peek(), 'a');
    EXPECT_EQ(reader.get(), 'a');
    EXPECT_EQ(reader.get(), 'c');
    EXPECT_EQ(reader.get(), -1);
    EXPECT_EQ(reader.peek(), -1);
}

TEST(BodyReader, TellsWhereStretchesStandInTheFile)
{
    OpenBody open("0123456789");
    open.body.ranges = {{1, 3}, {6, 2}};
    const BodyReader reader(open.file, open.body);
    const auto places = [&](std::int64_t offset, std::int64_t size) {
        std::string text;
        for (const Range& range : reader.placesOf({offset, size}))
            text += std::to_string(range.offset) + "+" + std::to_string(range.size) + " ";
        return text;
    };

    EXPECT_EQ(places(0, 3), "1+3 ");
    EXPECT_EQ(places(1, 3), "2+2 6+1 ");
    EXPECT_EQ(places(4, 1), "7+1 ");
    EXPECT_EQ(places(4, INT64_MAX), "7+1 ");
    EXPECT_EQ(places(5, 1), "");
    EXPECT_EQ(places(2, 0), "");
}

TEST(BodyReader, SeeksBackToAnEarlierRange)
{
    OpenBody open("abcdef");
    open.body.ranges = {{0, 2}, {4, 2}};
    BodyReader reader(open.file, open.body);

    reader.seek(3);
    EXPECT_EQ(reader.get(), 'f');
    reader.seek(1);

    EXPECT_EQ(text(reader.take(2)), "be");
    EXPECT_EQ(reader.position(), 3);
}

TEST(BodyReader, SkipsNoFurtherThanTheEnd)
{
    OpenBody open("abcdef");

    EXPECT_EQ(open.reader->skip(4), 4);
    EXPECT_EQ(open.reader->skip(100), 2);
    EXPECT_EQ(open.reader->skip(-5), 0);
    EXPECT_TRUE(open.reader->atEnd());
}

TEST(BodyReader, TakesBytesAcrossTheEndOfAView)
{
    SparseFile sparse;
    constexpr std::int64_t size = 12 << 20;
    sparse.resize(size);
    sparse.writeAt((4 << 20) - 1, "ab");
    JobFile file;
    file.open(sparse.path());
    const Body body{Pdl::Unknown, {{0, size}}};
    BodyReader reader(file, body);

    reader.skip((4 << 20) - 1);

    EXPECT_EQ(text(reader.take(2)), "ab");
    EXPECT_EQ(reader.position(), (4 << 20) + 1);
}

TEST(BodyReader, IsAtTheEndOfAnEmptyBody)
{
    OpenBody open("");

    EXPECT_TRUE(open.reader->atEnd());
    EXPECT_TRUE(open.reader->take(1).empty());
}

} // namespace
} // namespace JobParser::Worker
