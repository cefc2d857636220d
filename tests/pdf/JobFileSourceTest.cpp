#include "pdf/JobFileSource.h"

#include <gtest/gtest.h>

#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"

namespace Pdf::Parser
{
namespace
{

TEST(JobFileSource, ReadsFromThePositionToTheEnd)
{
    OpenJob job("abc");
    job.file.setPos(1);
    JobFileSource source(job.file);

    EXPECT_EQ(source.next(), 'b');
    EXPECT_EQ(job.file.m_offset, 2);
    EXPECT_EQ(source.next(), 'c');
    EXPECT_THROW(source.next(), ISource::EofException);
    EXPECT_EQ(job.file.m_offset, 3);
    EXPECT_TRUE(source.window().empty());
}

TEST(JobFileSource, SkipsWhatThereIsOrNothing)
{
    OpenJob job("abcd");
    JobFileSource source(job.file);

    source.skip(0);
    EXPECT_EQ(job.file.m_offset, 0);
    source.skip(3);
    EXPECT_EQ(job.file.m_offset, 3);
    EXPECT_THROW(source.skip(2), ISource::EofException);
    EXPECT_THROW(source.skip(0xFFFFFFFFFFFFFFFF), ISource::EofException);
    EXPECT_EQ(job.file.m_offset, 3);
    source.skip(1);
    EXPECT_THROW(source.skip(1), ISource::EofException);
}

TEST(JobFileSource, ShowsWhatItWouldHandOut)
{
    OpenJob job("abcd");
    JobFileSource source(job.file);

    EXPECT_TRUE(source.window().empty());
    source.next();
    ASSERT_EQ(source.window().size(), 3U);
    EXPECT_EQ(source.window()[0], 'b');
    source.skip(2);
    ASSERT_EQ(source.window().size(), 1U);
    EXPECT_EQ(source.window()[0], 'd');
}

TEST(JobFileSource, SkipsFarBeyondAView)
{
    constexpr std::int64_t far = std::int64_t{5} << 30;
    SparseFile sparse("a");
    sparse.resize(far + 1);
    sparse.writeAt(far, "z");
    JobParser::JobFile file;
    file.open(sparse.path());
    JobFileSource source(file);

    EXPECT_EQ(source.next(), 'a');
    source.skip(far - 1);
    EXPECT_EQ(source.next(), 'z');
    EXPECT_THROW(source.next(), ISource::EofException);
}

} // namespace
} // namespace Pdf::Parser
