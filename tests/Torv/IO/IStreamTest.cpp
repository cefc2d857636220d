#include "Torv/IO/IStream.h"

#include <gtest/gtest.h>
#include <memory>

namespace
{

class CountedStream : public Torv::IO::IStream
{
public:
    explicit CountedStream(int& ended) : m_ended(ended) {}
    ~CountedStream() override { ++m_ended; }

    std::uint32_t read(void*, std::uint32_t) override { return 0; }
    void write(const void*, std::uint32_t) override {}
    std::int64_t seek(std::int64_t offset, int) override { return offset; }
    unsigned capabilities() const override { return CanRead | CanSeek; }

private:
    int& m_ended;
};

} // namespace

TEST(IStream, EndsTheWholeStreamThroughTheInterface)
{
    int ended = 0;
    std::unique_ptr<Torv::IO::IStream> stream = std::make_unique<CountedStream>(ended);

    stream.reset();

    EXPECT_EQ(ended, 1);
}

TEST(IStream, HasCapabilitiesThatAreToldApart)
{
    int ended = 0;
    const CountedStream stream(ended);

    EXPECT_NE(stream.capabilities() & Torv::IO::IStream::CanRead, 0U);
    EXPECT_EQ(stream.capabilities() & Torv::IO::IStream::CanWrite, 0U);
    EXPECT_NE(stream.capabilities() & Torv::IO::IStream::CanSeek, 0U);
}
