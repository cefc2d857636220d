#include "Torv/NoFactoryException.h"

#include <gtest/gtest.h>

TEST(NoFactoryException, IsCaughtAsAGenericExceptionWithMessageAndCode)
{
    const auto fail = [] { throw Torv::NoFactoryException("message", 5); };

    try {
        fail();
        FAIL() << "nothing was thrown";
    } catch (const Torv::GenericException& caught) {
        EXPECT_STREQ(caught.what(), "message");
        EXPECT_EQ(caught.code(), 5);
    }
}

TEST(NoFactoryException, IsToldFromAPlainGenericException)
{
    EXPECT_THROW(throw Torv::NoFactoryException("message"), Torv::NoFactoryException);
    try {
        throw Torv::GenericException("message");
    } catch (const Torv::NoFactoryException&) {
        FAIL() << "a plain exception was taken for the special one";
    } catch (const Torv::GenericException& caught) {
        EXPECT_STREQ(caught.what(), "message");
    }
}
