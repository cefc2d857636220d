#include "Torv/Security/Endecryptor/Decryptor.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/MessageOf.h"

namespace Torv::Security::Endecryptor
{
namespace
{

std::string fromHex(std::string_view hex)
{
    const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
    std::string bytes;
    for (std::size_t at = 0; at < hex.size(); at += 2)
        bytes += static_cast<char>(digit(hex[at]) * 16 + digit(hex[at + 1]));
    return bytes;
}

std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string decrypted(const Decryptor& decryptor, const Decryptor::Stretch& stretch)
{
    std::string out(stretch.bytes.size(), '?');
    const std::size_t size = decryptor.decrypt(stretch, reinterpret_cast<std::uint8_t*>(out.data()));
    return out.substr(0, size);
}

const std::string key128 = fromHex("2b7e151628aed2a6abf7158809cf4f3c");
const std::string key256 = fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
const std::string cbcVector = fromHex("000102030405060708090a0b0c0d0e0f");
const std::string ctrVector = fromHex("f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff");
const std::string plain = fromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                                  "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");

struct Published {
    Options options;
    std::string encrypted; ///< Four blocks, those of `plain`.
};

// The examples of NIST SP 800-38A.
const std::array<Published, 4>& published()
{
    static const std::array<Published, 4> rows{{
        {{Algorithm::Aes128Cbc, key128, cbcVector},
         fromHex("7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
                 "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7")},
        {{Algorithm::Aes256Cbc, key256, cbcVector},
         fromHex("f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
                 "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b")},
        {{Algorithm::Aes128Ctr, key128, ctrVector},
         fromHex("874d6191b620e3261bef6864990db6ce9806f66b7970fdff8617187bb9fffdff"
                 "5ae4df3edbd5d35e5b4f09020db03eab1e031dda2fbe03d1792170a0f3009cee")},
        {{Algorithm::Aes256Ctr, key256, ctrVector},
         fromHex("601ec313775789a5b7a7f504bbf3d228f443e3ca4d62b59aca84e990cacaf5c5"
                 "2b0930daa23de94ce87017ba2d84988ddfc9c58db67aada613c2dd08457941a6")},
    }};
    return rows;
}

TEST(Decryptor, DecryptsPublishedExamples)
{
    for (const Published& row : published()) {
        const Decryptor decryptor(row.options);

        EXPECT_EQ(decrypted(decryptor, {0, bytesOf(row.encrypted), {}, false}), plain);
    }
}

TEST(Decryptor, DecryptsAnyBlockOnItsOwn)
{
    for (const Published& row : published()) {
        const Decryptor decryptor(row.options);
        for (std::size_t at = 0; at < 64; at += 16) {
            const auto bytes = bytesOf(row.encrypted);
            Decryptor::Stretch stretch{static_cast<std::int64_t>(at), bytes.subspan(at, 16), {}, false};
            if (decryptor.isPadded() && at > 0)
                stretch.precedent = bytes.subspan(at - 16, 16);

            EXPECT_EQ(decrypted(decryptor, stretch), plain.substr(at, 16));
        }
    }
}

TEST(Decryptor, KnowsWhichCiphersPad)
{
    EXPECT_TRUE(Decryptor(published()[0].options).isPadded());
    EXPECT_TRUE(Decryptor(published()[1].options).isPadded());
    EXPECT_FALSE(Decryptor(published()[2].options).isPadded());
    EXPECT_FALSE(Decryptor(published()[3].options).isPadded());
}

TEST(Decryptor, DecryptsStretchesOfAnyLengthWhereNothingIsPadded)
{
    const Decryptor decryptor(published()[2].options);
    for (std::size_t size = 0; size <= 16; ++size) {
        const auto bytes = bytesOf(published()[2].encrypted).subspan(48, size);

        EXPECT_EQ(decrypted(decryptor, {48, bytes, {}, true}), plain.substr(48, size));
    }
}

TEST(Decryptor, CarriesTheCounterOverAllItsBytes)
{
    // The second block of the key stream of FF...FF is the first of 00...00.
    const Decryptor wrapping({Algorithm::Aes128Ctr, key128, std::string(16, '\xFF')});
    const Decryptor zero({Algorithm::Aes128Ctr, key128, std::string(16, '\0')});
    const std::string nothing(16, '\0');

    EXPECT_EQ(decrypted(wrapping, {16, bytesOf(nothing), {}, false}),
              decrypted(zero, {0, bytesOf(nothing), {}, false}));

    const Decryptor carrying({Algorithm::Aes128Ctr, key128, fromHex("000000000000000000000000fffffff0")});
    const Decryptor carried({Algorithm::Aes128Ctr, key128, fromHex("00000000000000000000000100000000")});
    EXPECT_EQ(decrypted(carrying, {256, bytesOf(nothing), {}, false}),
              decrypted(carried, {0, bytesOf(nothing), {}, false}));
}

TEST(Decryptor, RejectsWrongPaddingAtTheEndAlone)
{
    const Decryptor decryptor(published()[0].options);
    const auto bytes = bytesOf(published()[0].encrypted);

    EXPECT_EQ(messageOf([&] {
                  decrypted(decryptor, {0, bytes, {}, true});
              }),
              "The padding is wrong: another key, or no file of this cipher");
    EXPECT_EQ(decrypted(decryptor, {0, bytes, {}, false}), plain);
}

TEST(Decryptor, RejectsHalfBlocksWhereBlocksArePadded)
{
    const Decryptor decryptor(published()[0].options);

    EXPECT_EQ(messageOf([&] {
                  decrypted(decryptor, {0, bytesOf(published()[0].encrypted).first(17), {}, false});
              }),
              "The size is no multiple of the cipher's blocks of 16 bytes");
}

struct WrongOptions {
    const char* what;
    Options options;
    const char* message;
};

TEST(Decryptor, RejectsOptionsThatMakeNoSense)
{
    const std::array<WrongOptions, 6> rows{{
        {"a short key",
         {Algorithm::Aes128Cbc, std::string(15, 'k'), cbcVector},
         "The key has the wrong length | bytes=15 | wanted=16"},
        {"a short key of 256 bits",
         {Algorithm::Aes256Ctr, key128, cbcVector},
         "The key has the wrong length | bytes=16 | wanted=32"},
        {"a long key",
         {Algorithm::Aes128Ctr, key256, cbcVector},
         "The key has the wrong length | bytes=32 | wanted=16"},
        {"a short vector",
         {Algorithm::Aes256Cbc, key256, ""},
         "The initialisation vector has the wrong length | bytes=0 | wanted=16"},
        {"no algorithm", {static_cast<Algorithm>(0), key128, cbcVector}, "Unknown cipher | algorithm=0"},
        {"an unknown algorithm",
         {static_cast<Algorithm>(5), key128, cbcVector},
         "Unknown cipher | algorithm=5"},
    }};

    for (const WrongOptions& row : rows)
        EXPECT_EQ(messageOf([&] { Decryptor decryptor(row.options); }), row.message) << row.what;
}

bool hasLoadedTheCipherLibrary()
{
    std::ifstream maps("/proc/self/maps");
    const std::string text((std::istreambuf_iterator<char>(maps)), std::istreambuf_iterator<char>());
    return text.find("libcrypto") != std::string::npos;
}

[[noreturn]] void decryptOnce()
{
    const Decryptor decryptor(published()[0].options);
    const bool before = hasLoadedTheCipherLibrary();
    decrypted(decryptor, {0, bytesOf(published()[0].encrypted), {}, false});
    std::_Exit(!before && hasLoadedTheCipherLibrary() ? 0 : 1);
}

TEST(DecryptorDeathTest, LoadsTheCipherLibraryAtTheFirstDecryption)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_EXIT(decryptOnce(), testing::ExitedWithCode(0), "");
}

TEST(DecryptorThreads, ShareOneDecryptor)
{
    const Decryptor decryptor(published()[1].options);
    std::array<int, 8> right{};
    std::vector<std::thread> threads;

    for (int& count : right) {
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i)
                count += decrypted(decryptor, {0, bytesOf(published()[1].encrypted), {}, false}) == plain;
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(right, (std::array<int, 8>{50, 50, 50, 50, 50, 50, 50, 50}));
}

} // namespace
} // namespace Torv::Security::Endecryptor
