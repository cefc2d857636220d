#include "Torv/Security/Endecryptor/Options.h"

#include <gtest/gtest.h>

#include "Torv/Json/Json.h"
#include "Torv/VariantInvalidOperationException.h"

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

TEST(EndecryptorOptions, ReadsWhatItWrote)
{
    const Options options = Options::fromJson(Json::parse(R"({"algorithm":3,"key":"AAH/","iv":"aXY="})"));

    EXPECT_EQ(options.algorithm, Algorithm::Aes128Ctr);
    EXPECT_EQ(options.key, std::string("\x00\x01\xFF", 3));
    EXPECT_EQ(options.iv, "iv");
}

TEST(EndecryptorOptions, WantsAllThreeKeys)
{
    for (const char* text :
         {R"({"key":"","iv":""})", R"({"algorithm":1,"iv":""})", R"({"algorithm":1,"key":""})",
          R"({"algorithm":"1","key":"","iv":""})", R"({"algorithm":1,"key":2,"iv":""})", "[]"})
        EXPECT_THROW(Options::fromJson(Json::parse(text)), VariantInvalidOperationException) << text;
}

TEST(EndecryptorOptions, KnowsTheCiphersByName)
{
    EXPECT_EQ(algorithmByName("aes-128-cbc"), Algorithm::Aes128Cbc);
    EXPECT_EQ(algorithmByName("aes-256-cbc"), Algorithm::Aes256Cbc);
    EXPECT_EQ(algorithmByName("aes-128-ctr"), Algorithm::Aes128Ctr);
    EXPECT_EQ(algorithmByName("AES-256-CTR"), Algorithm::Aes256Ctr);
    EXPECT_EQ(algorithmByName("aes-192-cbc"), std::nullopt);
    EXPECT_EQ(algorithmByName(""), std::nullopt);
}

TEST(EndecryptorOptions, NumbersTheCiphersAsWorkersKnowThem)
{
    EXPECT_EQ(static_cast<int>(Algorithm::Aes128Cbc), 1);
    EXPECT_EQ(static_cast<int>(Algorithm::Aes256Cbc), 2);
    EXPECT_EQ(static_cast<int>(Algorithm::Aes128Ctr), 3);
    EXPECT_EQ(static_cast<int>(Algorithm::Aes256Ctr), 4);
}

} // namespace Torv::Security::Endecryptor
