#include "Torv/GenericException.h"

#include <exception>
#include <gtest/gtest.h>
#include <string>

TEST(GenericException, KeepsItsMessageAsItStands)
{
    const Torv::GenericException exception("100% | path=%s");

    EXPECT_STREQ(exception.what(), "100% | path=%s");
}

TEST(GenericException, HasTheCodeZeroUnlessGivenOne)
{
    EXPECT_EQ(Torv::GenericException("a").code(), 0);
    EXPECT_EQ(Torv::GenericException("a", -7).code(), -7);
}

TEST(GenericException, IsCaughtAsAStandardException)
{
    std::string message;

    try {
        throw Torv::GenericException("message", 3);
    } catch (const std::exception& caught) {
        message = caught.what();
    }

    EXPECT_EQ(message, "message");
}

TEST(GenericException, KeepsMessageAndCodeInACopy)
{
    const Torv::GenericException original("message", 3);

    const Torv::GenericException copy(original);

    EXPECT_STREQ(copy.what(), "message");
    EXPECT_EQ(copy.code(), 3);
}
