#include "worker/DocumentMedia.h"

#include <gtest/gtest.h>

#include "tests/worker/WalkerSupport.h"

namespace JobParser::Worker
{
namespace
{

PageSize mediaOf(std::string_view text)
{
    OpenBody open(text);
    const PageSize size = documentMedia(*open.reader);
    EXPECT_EQ(open.reader->position(), 0);
    return size;
}

TEST(DocumentMedia, ReadsTheSizeOfTheComment)
{
    EXPECT_EQ(mediaOf("%!PS-Adobe-3.0\n%%DocumentMedia: A4 595 842 0 () ()\n").width, 2099);
    EXPECT_EQ(mediaOf("%!PS-Adobe-3.0\r%%DocumentMedia: A4 595 842\r").height, 2970);
}

TEST(DocumentMedia, FindsNothingElsewhere)
{
    EXPECT_EQ(mediaOf("").width, 0);
    EXPECT_EQ(mediaOf("%!PS\n%%Title: (%%DocumentMedia: A4 595 842)\n").width, 0);
    EXPECT_EQ(mediaOf("%!PS\n%%DocumentMedia:").width, 0);
    EXPECT_EQ(mediaOf("%!PS\n%%DocumentMedia: A4 (atend)\n").width, 0);
}

} // namespace
} // namespace JobParser::Worker
