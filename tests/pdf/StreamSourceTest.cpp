#include "pdf/StreamSource.h"

#include <gtest/gtest.h>

#include "Torv/GenericException.h"
#include "Torv/IO/StringStream.h"

namespace Pdf::Parser
{
namespace
{

/// A stream that cannot seek.
class Pipe : public Torv::IO::IStream
{
public:
    explicit Pipe(std::string text) : m_stream(std::move(text)) {}

    std::uint32_t read(void* buffer, std::uint32_t size) override { return m_stream.read(buffer, size); }
    void write(const void*, std::uint32_t) override { throw Torv::GenericException("Cannot write"); }
    std::int64_t seek(std::int64_t, int) override { throw Torv::GenericException("Cannot seek"); }
    unsigned capabilities() const override { return CanRead; }

private:
    Torv::IO::StringStream m_stream;
};

std::int64_t positionOf(Torv::IO::IStream& stream)
{
    return stream.seek(0, Torv::IO::IStream::FromCurrent);
}

TEST(StreamSource, ReadsToTheEndWithTheStreamBehindEachByte)
{
    Torv::IO::StringStream stream("abc");
    StreamSource source(stream);

    EXPECT_EQ(source.next(), 'a');
    EXPECT_EQ(positionOf(stream), 1);
    EXPECT_EQ(source.next(), 'b');
    EXPECT_EQ(source.next(), 'c');
    EXPECT_EQ(positionOf(stream), 3);
    EXPECT_THROW(source.next(), ISource::EofException);
}

TEST(StreamSource, BeginsWhereTheStreamStandsAtTheFirstRead)
{
    Torv::IO::StringStream stream("abc");
    StreamSource source(stream);
    stream.seek(1, Torv::IO::IStream::FromStart);

    EXPECT_EQ(source.next(), 'b');
}

TEST(StreamSource, SkipsBeyondTheEndWithoutComplaint)
{
    Torv::IO::StringStream stream("abc");
    StreamSource source(stream);

    source.skip(2);
    EXPECT_EQ(source.next(), 'c');
    source.skip(5);
    EXPECT_EQ(positionOf(stream), 8);
    EXPECT_THROW(source.next(), ISource::EofException);
}

TEST(StreamSource, ShowsWhatItWouldHandOut)
{
    const std::string text(100000, 'x');
    Torv::IO::StringStream stream(text + "y");
    StreamSource source(stream);
    source.next();

    std::size_t seen = 1;
    while (!source.window().empty()) {
        seen += source.window().size();
        source.skip(source.window().size());
        EXPECT_EQ(positionOf(stream), static_cast<std::int64_t>(seen));
    }

    EXPECT_EQ(seen, 100001U);
}

TEST(StreamSource, ReadsStreamsThatCannotSeekByteByByte)
{
    Pipe pipe("ab");
    StreamSource source(pipe);

    EXPECT_EQ(source.next(), 'a');
    EXPECT_TRUE(source.window().empty());
    EXPECT_EQ(source.next(), 'b');
    EXPECT_THROW(source.next(), ISource::EofException);
    EXPECT_THROW(source.skip(1), Torv::GenericException);
}

} // namespace
} // namespace Pdf::Parser
