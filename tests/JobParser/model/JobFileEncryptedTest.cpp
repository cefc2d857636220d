// How a reader opens encrypted files.

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/JobParser/model/JobFileReading.h"
#include "tests/support/EncryptedFile.h"
#include "tests/support/SparseFile.h"

#include "Torv/GenericException.h"
#include "Torv/Security/Endecryptor/Decryptor.h"

namespace JobParser
{
namespace
{

using Torv::Security::Endecryptor::Algorithm;
using Torv::Security::Endecryptor::Decryptor;

void openEncrypted(JobFile& file, const EncryptedFile& encrypted)
{
    file.openEncrypted(encrypted.path(), std::make_unique<Decryptor>(encrypted.options));
}

TEST(JobFile, ReadsAnEncryptedFileAsThePlainOne)
{
    for (const Algorithm algorithm : {Algorithm::Aes128Cbc, Algorithm::Aes256Ctr}) {
        const EncryptedFile encrypted(algorithm, "\x1B%-12345X@PJL job");
        JobFile file;

        openEncrypted(file, encrypted);

        EXPECT_EQ(file.path, encrypted.path());
        EXPECT_EQ(file.m_offset, 0);
        EXPECT_EQ(textFrom(file), "\x1B%-12345X@PJL job");
        EXPECT_EQ(file.getChar(), 0x1B);
    }
}

TEST(JobFile, KnowsTheTrueSizeOfAnEncryptedFileOnceItIsOpen)
{
    for (const std::int64_t size : {std::int64_t{0}, std::int64_t{1}, std::int64_t{16}, std::int64_t{1024},
                                    oneView - 1, oneView, oneView + 1, 2 * oneView + 5}) {
        const EncryptedFile encrypted(Algorithm::Aes256Cbc, variedBytes(size));
        JobFile file;

        openEncrypted(file, encrypted);

        EXPECT_TRUE(file.isOpen());
        EXPECT_EQ(file.m_realDataSize, size);
        EXPECT_EQ(file.fileSize, size - size % 16 + 16);
        EXPECT_EQ(file.atEnd(), size == 0);
    }
}

TEST(JobFile, ReadsAnEncryptedFileOfSeveralViewsFromAnyPlace)
{
    const std::int64_t size = 2 * oneView + 5;
    const std::string bytes = variedBytes(size);
    for (const Algorithm algorithm : {Algorithm::Aes128Cbc, Algorithm::Aes128Ctr}) {
        const EncryptedFile encrypted(algorithm, bytes);
        JobFile file;
        openEncrypted(file, encrypted);

        EXPECT_EQ(copied(file, 0, size), bytes);
        EXPECT_EQ(copied(file, oneView + 3, oneView), bytes.substr(oneView + 3, oneView));
        file.setPos(size - 1);
        EXPECT_EQ(file.getChar(), static_cast<std::uint8_t>(bytes.back()));
        EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
        file.setPos(5);
        EXPECT_EQ(file.getChar(), static_cast<std::uint8_t>(bytes[5]));
    }
}

TEST(JobFile, IsClosedIfAnEncryptedFileHasAnotherKey)
{
    const EncryptedFile encrypted(Algorithm::Aes128Cbc, variedBytes(oneView + 100));
    auto wrong = encrypted.options;
    wrong.key[0] = 'X';
    JobFile file;

    EXPECT_THROW(file.openEncrypted(encrypted.path(), std::make_unique<Decryptor>(wrong)),
                 Torv::GenericException);

    EXPECT_FALSE(file.isOpen());
    EXPECT_TRUE(file.atEnd());
}

TEST(JobFile, OpensAPlainFileBehindAnEncryptedOne)
{
    const EncryptedFile encrypted(Algorithm::Aes128Cbc, "secret");
    const SparseFile plain("plain");
    JobFile file;
    openEncrypted(file, encrypted);

    file.open(plain.path());

    EXPECT_EQ(textFrom(file), "plain");
    EXPECT_EQ(file.m_realDataSize, 5);
}

// The shadow memory of the sanitizers needs the address space that this takes away.

} // namespace
} // namespace JobParser
