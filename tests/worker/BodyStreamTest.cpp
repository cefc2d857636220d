#include "worker/BodyStream.h"

#include <array>
#include <gtest/gtest.h>

#include "tests/worker/WalkerSupport.h"
#include "worker/FitzContext.h"

namespace JobParser::Worker
{
namespace
{

/// A stream of the bytes `bcd` and `hij` of the alphabet up to `k`.
class BodyStream : public testing::Test
{
protected:
    BodyStream()
    {
        m_open.body.ranges = {{1, 3}, {7, 3}};
        m_reader = std::make_unique<BodyReader>(m_open.file, m_open.body);
        m_stream = openBodyStream(context.get(), *m_reader);
    }
    ~BodyStream() override { fz_drop_stream(context.get(), m_stream); }

    std::string read(std::size_t count)
    {
        std::string bytes(count, '.');
        auto* data = reinterpret_cast<unsigned char*>(bytes.data());
        Fitz::protect(context.get(), [&] { bytes.resize(fz_read(context.get(), m_stream, data, count)); });
        return bytes;
    }

    std::string readAt(std::int64_t offset, int whence)
    {
        Fitz::protect(context.get(), [&] { fz_seek(context.get(), m_stream, offset, whence); });
        return read(100);
    }

    FitzContext context;

private:
    OpenBody m_open{"abcdefghijk"};
    std::unique_ptr<BodyReader> m_reader;

protected:
    fz_stream* m_stream = nullptr;
};

TEST_F(BodyStream, ReadsTheRangesAsOneFile)
{
    EXPECT_EQ(read(100), "bcdhij");
    EXPECT_EQ(read(100), "");
}

TEST_F(BodyStream, TellsItsPosition)
{
    read(4);

    EXPECT_EQ(fz_tell(context.get(), m_stream), 4);
}

TEST_F(BodyStream, Seeks)
{
    EXPECT_EQ(readAt(0, SEEK_SET), "bcdhij");
    EXPECT_EQ(readAt(2, SEEK_SET), "dhij");
    EXPECT_EQ(readAt(-3, SEEK_CUR), "hij");
    EXPECT_EQ(readAt(-1, SEEK_END), "j");
}

TEST_F(BodyStream, StaysWithinTheBody)
{
    EXPECT_EQ(readAt(99, SEEK_SET), "");
    EXPECT_EQ(readAt(-99, SEEK_END), "bcdhij");
    EXPECT_EQ(readAt(INT64_MAX, SEEK_END), "");
    EXPECT_EQ(readAt(INT64_MIN, SEEK_SET), "bcdhij");
}

TEST(EmptyBodyStream, IsAtItsEnd)
{
    const FitzContext context;
    OpenBody open("");
    fz_stream* stream = openBodyStream(context.get(), *open.reader);
    unsigned char byte = 'x';

    EXPECT_EQ(fz_read(context.get(), stream, &byte, 1), 0U);
    fz_drop_stream(context.get(), stream);
}

} // namespace
} // namespace JobParser::Worker
