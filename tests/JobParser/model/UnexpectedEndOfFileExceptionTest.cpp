#include "JobParser/model/UnexpectedEndOfFileException.h"

#include <gtest/gtest.h>

namespace JobParser
{
namespace
{

TEST(UnexpectedEndOfFileException, SaysThatTheFileEndedAndBelongsToTheTree)
{
    const UnexpectedEndOfFileException error;

    EXPECT_STREQ(error.what(), "Unexpected end of file");
    EXPECT_NE(dynamic_cast<const JobParserException*>(&error), nullptr);
    EXPECT_NE(dynamic_cast<const Torv::GenericException*>(&error), nullptr);
    EXPECT_NE(dynamic_cast<const std::exception*>(&error), nullptr);
}

} // namespace
} // namespace JobParser
