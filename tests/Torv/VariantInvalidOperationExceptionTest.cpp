#include "Torv/VariantInvalidOperationException.h"

#include <gtest/gtest.h>

TEST(VariantInvalidOperationException, IsCaughtAsAGenericExceptionWithMessageAndCode)
{
    const auto fail = [] { throw Torv::VariantInvalidOperationException("message", 5); };

    try {
        fail();
        FAIL() << "nothing was thrown";
    } catch (const Torv::GenericException& caught) {
        EXPECT_STREQ(caught.what(), "message");
        EXPECT_EQ(caught.code(), 5);
    }
}

TEST(VariantInvalidOperationException, IsToldFromAPlainGenericException)
{
    EXPECT_THROW(throw Torv::VariantInvalidOperationException("message"),
                 Torv::VariantInvalidOperationException);
    try {
        throw Torv::GenericException("message");
    } catch (const Torv::VariantInvalidOperationException&) {
        FAIL() << "a plain exception was taken for the special one";
    } catch (const Torv::GenericException& caught) {
        EXPECT_STREQ(caught.what(), "message");
    }
}
