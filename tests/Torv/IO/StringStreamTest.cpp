#include "Torv/IO/StringStream.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>

#include "Torv/GenericException.h"

using Torv::IO::IStream;
using Torv::IO::StringStream;

namespace
{

void put(StringStream& stream, std::string_view text)
{
    stream.write(text.data(), static_cast<std::uint32_t>(text.size()));
}

std::string take(StringStream& stream, std::uint32_t size)
{
    std::array<char, 64> buffer = {};
    return std::string(buffer.data(), stream.read(buffer.data(), size));
}

} // namespace

TEST(StringStream, CanReadWriteAndSeek)
{
    EXPECT_EQ(StringStream().capabilities(), 7U);
}

TEST(StringStream, ReadsItsTextFromTheStartAndThenNothing)
{
    StringStream stream("job data");

    EXPECT_EQ(take(stream, 3), "job");
    EXPECT_EQ(take(stream, 60), " data");
    EXPECT_EQ(take(stream, 60), "");
}

TEST(StringStream, ReadsNothingForASizeOfZero)
{
    StringStream stream("job");

    EXPECT_EQ(stream.read(nullptr, 0), 0U);
    EXPECT_EQ(take(stream, 3), "job");
}

TEST(StringStream, AppendsWritesAtItsEnd)
{
    StringStream stream;

    put(stream, "job");
    put(stream, std::string_view("\0data", 5));

    EXPECT_EQ(stream.str(), std::string("job\0data", 8));
}

TEST(StringStream, OverwritesFromThePositionAndLengthens)
{
    StringStream stream("job data");

    put(stream, "J");
    stream.seek(6, IStream::FromStart);
    put(stream, "TA.");

    EXPECT_EQ(stream.str(), "Job daTA.");
}

TEST(StringStream, TakesAWriteOfItsOwnText)
{
    StringStream stream("abcdef");

    stream.seek(6, IStream::FromStart);
    put(stream, stream.str());

    EXPECT_EQ(stream.str(), "abcdefabcdef");
}

TEST(StringStream, SeeksFromTheStartAndFromThePosition)
{
    StringStream stream("0123456789");

    EXPECT_EQ(stream.seek(4, IStream::FromStart), 4);
    EXPECT_EQ(stream.seek(3, IStream::FromCurrent), 7);
    EXPECT_EQ(stream.seek(-2, IStream::FromCurrent), 5);
    EXPECT_EQ(take(stream, 2), "56");
    EXPECT_EQ(stream.seek(0, IStream::FromCurrent), 7);
    EXPECT_EQ(stream.seek(-7, IStream::FromCurrent), 0);
}

TEST(StringStream, ReadsNothingBehindTheEnd)
{
    StringStream stream("job");

    EXPECT_EQ(stream.seek(5, IStream::FromStart), 5);

    EXPECT_EQ(take(stream, 1), "");
    EXPECT_EQ(stream.str(), "job");
}

TEST(StringStream, FillsTheGapBeforeAWriteBehindTheEndWithZeroBytes)
{
    StringStream stream("job");
    stream.seek(5, IStream::FromStart);

    put(stream, "");
    EXPECT_EQ(stream.str(), "job");
    put(stream, "x");

    EXPECT_EQ(stream.str(), std::string("job\0\0x", 6));
}

TEST(StringStream, RejectsAPlaceBeforeTheStartAndStaysWhereItIs)
{
    StringStream stream("job");
    stream.seek(2, IStream::FromStart);

    EXPECT_THROW(stream.seek(-1, IStream::FromStart), Torv::GenericException);
    EXPECT_THROW(stream.seek(-3, IStream::FromCurrent), Torv::GenericException);
    EXPECT_THROW(stream.seek(std::numeric_limits<std::int64_t>::min(), IStream::FromCurrent),
                 Torv::GenericException);

    EXPECT_EQ(stream.seek(0, IStream::FromCurrent), 2);
}

TEST(StringStream, RejectsAPlaceThatNoPositionCanHold)
{
    StringStream stream("job");
    stream.seek(1, IStream::FromStart);

    EXPECT_THROW(stream.seek(std::numeric_limits<std::int64_t>::max(), IStream::FromCurrent),
                 Torv::GenericException);

    EXPECT_EQ(stream.seek(0, IStream::FromCurrent), 1);
}

TEST(StringStream, RejectsAWriteWhereNoStringCanReach)
{
    StringStream stream("job");
    stream.seek(std::numeric_limits<std::int64_t>::max(), IStream::FromStart);

    EXPECT_THROW(put(stream, "x"), Torv::GenericException);
    EXPECT_EQ(stream.str(), "job");
}

TEST(StringStream, RejectsAnUnknownOrigin)
{
    StringStream stream("job");

    EXPECT_THROW(stream.seek(0, 2), Torv::GenericException);
    EXPECT_THROW(stream.seek(0, -1), Torv::GenericException);
}
