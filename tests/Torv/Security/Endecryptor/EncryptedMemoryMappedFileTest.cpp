#include "Torv/Security/Endecryptor/EncryptedMemoryMappedFile.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/EncryptedFile.h"
#include "tests/support/MessageOf.h"

namespace Torv::Security::Endecryptor
{
namespace
{

constexpr std::array allAlgorithms = {Algorithm::Aes128Cbc, Algorithm::Aes256Cbc, Algorithm::Aes128Ctr,
                                      Algorithm::Aes256Ctr};

std::string textOf(const IO::MappedView& view)
{
    return std::string(view.data, view.data + view.size);
}

std::unique_ptr<Decryptor> decryptorOf(const EncryptedFile& file)
{
    return std::make_unique<Decryptor>(file.options);
}

TEST(EncryptedMemoryMappedFile, GivesWhatOpensslEncrypted)
{
    for (const Algorithm algorithm : allAlgorithms) {
        for (const std::size_t size : std::array<std::size_t, 9>{0, 1, 15, 16, 17, 31, 32, 33, 5000}) {
            const std::string plain = numberedBytes(size);
            const EncryptedFile encrypted(algorithm, plain);
            EncryptedMemoryMappedFile file(encrypted.path(), decryptorOf(encrypted));

            const auto view = file.map(0, 1 << 20);

            EXPECT_EQ(textOf(*view), plain) << EncryptedFile::nameOf(algorithm) << ' ' << size;
            EXPECT_EQ(view->offset, 0);
        }
    }
}

TEST(EncryptedMemoryMappedFile, DecryptsEachStretchOnItsOwn)
{
    const std::string plain = numberedBytes(20000);
    for (const Algorithm algorithm : allAlgorithms) {
        const EncryptedFile encrypted(algorithm, plain);
        for (const std::int64_t offset : {16384, 4096, 12288, 0, 8192}) {
            EncryptedMemoryMappedFile file(encrypted.path(), decryptorOf(encrypted));

            const auto view = file.map(offset, 4096);

            EXPECT_EQ(textOf(*view), plain.substr(static_cast<std::size_t>(offset), 4096));
            EXPECT_EQ(view->offset, offset);
        }
    }
}

TEST(EncryptedMemoryMappedFile, EndsBeforeThePadding)
{
    const EncryptedFile encrypted(Algorithm::Aes128Cbc, numberedBytes(8191));
    EncryptedMemoryMappedFile file(encrypted.path(), decryptorOf(encrypted));

    EXPECT_EQ(std::filesystem::file_size(encrypted.path()), 8192U);
    EXPECT_EQ(file.map(4096, 4096)->size, 4095);
    EXPECT_EQ(file.map(4096, 100000)->size, 4095);
    EXPECT_EQ(file.map(8192, 4096)->size, 0);
}

TEST(EncryptedMemoryMappedFile, KeepsAViewAsLongAsSomebodyHoldsIt)
{
    const std::string plain = numberedBytes(100);
    const EncryptedFile encrypted(Algorithm::Aes256Cbc, plain);
    EncryptedMemoryMappedFile file(encrypted.path(), decryptorOf(encrypted));
    EXPECT_FALSE(file.isMapped());

    const auto view = file.map(0, 200);
    EXPECT_TRUE(file.isMapped());
    file.unmap();

    EXPECT_FALSE(file.isMapped());
    EXPECT_EQ(textOf(*view), plain);
}

TEST(EncryptedMemoryMappedFile, RejectsAWrongKey)
{
    const EncryptedFile encrypted(Algorithm::Aes128Cbc, "a job of one line");
    Options wrong = encrypted.options;
    wrong.key = "0123456789abcdeX";
    EncryptedMemoryMappedFile file(encrypted.path(), std::make_unique<Decryptor>(wrong));

    EXPECT_EQ(messageOf([&] { file.map(0, 100); }),
              "Cannot decrypt file | path=" + encrypted.path() +
                  " | error=The padding is wrong: another key, or no file of this cipher");
    EXPECT_FALSE(file.isMapped());
}

TEST(EncryptedMemoryMappedFile, RejectsASizeThatNoPaddedFileHas)
{
    const Torv::Test::TemporaryDirectory directory;
    const Options options{Algorithm::Aes256Cbc, std::string(32, 'k'), std::string(16, 'v')};
    for (const std::size_t size : std::array<std::size_t, 5>{0, 1, 15, 17, 31}) {
        const std::string path = directory.file("job", std::string(size, 'x'));

        EXPECT_EQ(messageOf([&] { EncryptedMemoryMappedFile(path, std::make_unique<Decryptor>(options)); }),
                  "Cannot decrypt file | path=" + path +
                      " | error=The size is no multiple of the cipher's blocks of 16 bytes");
    }
}

TEST(EncryptedMemoryMappedFile, RejectsAFileThatBecameShorter)
{
    const EncryptedFile encrypted(Algorithm::Aes128Ctr, numberedBytes(20000));
    EncryptedMemoryMappedFile file(encrypted.path(), decryptorOf(encrypted));
    std::filesystem::resize_file(encrypted.path(), 10000);

    EXPECT_EQ(messageOf([&] { file.map(8192, 100000); }),
              "Cannot decrypt file | path=" + encrypted.path() + " | error=The file became shorter");
    EXPECT_EQ(file.map(4096, 4096)->size, 4096);
}

TEST(EncryptedMemoryMappedFile, SaysWhatCannotBeOpenedAsAPlainFileDoes)
{
    const Options options{Algorithm::Aes128Ctr, std::string(16, 'k'), std::string(16, 'v')};

    EXPECT_EQ(
        messageOf([&] { EncryptedMemoryMappedFile("/nowhere/job", std::make_unique<Decryptor>(options)); }),
        "Cannot open file | path=/nowhere/job | error=No such file or directory");
}

TEST(EncryptedMemoryMappedFile, NeedsADecryptor)
{
    const Torv::Test::TemporaryDirectory directory;
    const std::string path = directory.file("job", "x");

    EXPECT_EQ(messageOf([&] { EncryptedMemoryMappedFile(path, nullptr); }),
              "Cannot decrypt file | path=" + path + " | error=There is no decryptor");
}

} // namespace
} // namespace Torv::Security::Endecryptor
