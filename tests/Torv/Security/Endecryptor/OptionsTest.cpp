#include "Torv/Security/Endecryptor/Options.h"

#include <gtest/gtest.h>

namespace Torv::Security::Endecryptor
{

TEST(EndecryptorOptions, WritesTheKeyAndTheVectorInBase64)
{
    Options options;
    options.algorithm = Algorithm::Aes256Cbc;
    options.key = std::string("\x00\x01\xFF", 3);
    options.iv = "iv";

    EXPECT_EQ(options.toJson(), R"({"algorithm":2,"key":"AAH/","iv":"aXY="})");
}

} // namespace Torv::Security::Endecryptor
