#include "JobParser/JobFile.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>

#include "JobParser/JobParserException.h"
#include "JobParser/model/UnexpectedEndOfFileException.h"
#include "tests/JobParser/model/JobFileReading.h"
#include "tests/support/NoAddressSpace.h"
#include "tests/support/SparseFile.h"
#include "tests/support/ThrowingAssertions.h"

#include "Torv/GenericException.h"
#include "Torv/IO/MappingGroup.h"

namespace JobParser
{
namespace
{

template <typename Action> std::string failedAssertion(Action action)
{
    const ThrowingAssertions throwing;
    try {
        action();
    } catch (const Torv::GenericException& failure) {
        return failure.what();
    }
    return "none";
}

TEST(JobFile, IsClosedAndEmptyAtFirst)
{
    JobFile file;

    EXPECT_FALSE(file.isOpen());
    EXPECT_TRUE(file.atEnd());
    EXPECT_TRUE(file.window().empty());
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
    EXPECT_THROW(file.peekChar(), UnexpectedEndOfFileException);
}

TEST(JobFile, OpensAtItsStartAndKeepsThePath)
{
    const SparseFile bytes("abc");
    JobFile file;

    file.open(bytes.path());

    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(file.path, bytes.path());
    EXPECT_EQ(file.m_offset, 0);
    EXPECT_EQ(file.m_realDataSize, 3);
    EXPECT_EQ(file.fileSize, 3);
}

TEST(JobFile, ReadsByteByByteAndThrowsAtTheEnd)
{
    const SparseFile bytes("a\xFF");
    JobFile file;
    file.open(bytes.path());

    EXPECT_EQ(file.getChar(), 'a');
    EXPECT_EQ(file.m_offset, 1);
    EXPECT_EQ(file.getChar(), 0xFF);
    EXPECT_EQ(file.m_offset, 2);
    EXPECT_TRUE(file.atEnd());
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
    EXPECT_EQ(file.m_offset, 2);
}

TEST(JobFile, PeeksWithoutMoving)
{
    const SparseFile bytes("ab");
    JobFile file;
    file.open(bytes.path());

    EXPECT_EQ(file.peekChar(), 'a');
    EXPECT_EQ(file.peekChar(), 'a');
    EXPECT_EQ(file.m_offset, 0);
    file.setPos(2);
    EXPECT_THROW(file.peekChar(), UnexpectedEndOfFileException);
}

TEST(JobFile, RejectsAMissingFileWithItsPath)
{
    JobFile file;

    try {
        file.open("/nowhere/job.prn");
        FAIL() << "opened";
    } catch (const Torv::GenericException& error) {
        EXPECT_NE(std::string(error.what()).find("/nowhere/job.prn"), std::string::npos) << error.what();
    }
    EXPECT_FALSE(file.isOpen());
}

TEST(JobFile, RejectsADirectory)
{
    JobFile file;

    EXPECT_THROW(file.open("/"), Torv::GenericException);
    EXPECT_FALSE(file.isOpen());
}

TEST(JobFile, RejectsAPipeWithoutWaitingForAWriter)
{
    const SparseFile place;
    const std::string path = place.path() + ".pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    JobFile file;

    EXPECT_THROW(file.open(path), Torv::GenericException);

    unlink(path.c_str());
}

TEST(JobFile, OpensAnEmptyFile)
{
    const SparseFile bytes;
    JobFile file;

    file.open(bytes.path());

    EXPECT_TRUE(file.isOpen());
    EXPECT_TRUE(file.atEnd());
    EXPECT_EQ(file.m_realDataSize, 0);
    EXPECT_TRUE(file.window().empty());
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
    EXPECT_FALSE(file.advancePos(1));
    file.setPos(0);
    EXPECT_EQ(copied(file, 0, 0), "");
}

TEST(JobFile, OpensAnotherFileInPlaceOfTheFirst)
{
    const SparseFile first("first");
    const SparseFile second("2nd");
    JobFile file;
    file.open(first.path());
    file.setPos(4);

    file.open(second.path());

    EXPECT_EQ(file.path, second.path());
    EXPECT_EQ(file.m_offset, 0);
    EXPECT_EQ(file.m_realDataSize, 3);
    EXPECT_EQ(textFrom(file), "2nd");
}

TEST(JobFile, OpensFilesOneAfterAnotherWithinAGroup)
{
    const auto group = std::make_shared<Torv::IO::MappingGroup>();
    JobFile file;

    for (const std::int64_t size : {65537, 3, 1048576, 65537, 1048577, 200000}) {
        const SparseFile bytes(variedBytes(size));
        file.open(bytes.path(), group);
        EXPECT_EQ(file.m_realDataSize, size);
        EXPECT_EQ(textFrom(file), variedBytes(size));
        EXPECT_EQ(copied(file, size - 1, 1), variedBytes(size).substr(static_cast<std::size_t>(size) - 1));
    }
}

TEST(JobFile, ForgetsAllButThePathWhenClosed)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());
    file.getChar();

    file.close();

    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.path, bytes.path());
    EXPECT_EQ(file.m_offset, 0);
    EXPECT_EQ(file.m_realDataSize, 0);
    EXPECT_EQ(file.fileSize, 0);
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
    file.close();
    EXPECT_FALSE(file.isOpen());
}

TEST(JobFile, OpensAgainAfterClose)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());
    file.close();

    file.open(bytes.path());

    EXPECT_EQ(file.getChar(), 'a');
}

TEST(JobFile, StaysValidBehindTheLastByteOfAFileOfExactlyOneView)
{
    SparseFile bytes;
    bytes.resize(oneView);
    bytes.writeAt(oneView - 1, "Z");
    JobFile file;
    file.open(bytes.path());
    file.setPos(oneView - 1);

    EXPECT_EQ(file.getChar(), 'Z');
    EXPECT_EQ(file.m_offset, oneView);
    EXPECT_TRUE(file.atEnd());
    EXPECT_TRUE(file.window().empty());
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
    EXPECT_THROW(file.peekChar(), UnexpectedEndOfFileException);
    file.returnChar(1);
    EXPECT_EQ(file.peekChar(), 'Z');
}

TEST(JobFile, ReadsTheOneByteBehindAView)
{
    SparseFile bytes;
    bytes.resize(oneView + 1);
    bytes.writeAt(oneView - 1, "YZ");
    JobFile file;
    file.open(bytes.path());
    file.setPos(oneView - 1);

    EXPECT_EQ(file.getChar(), 'Y');
    EXPECT_EQ(file.peekChar(), 'Z');
    EXPECT_EQ(file.getChar(), 'Z');
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
}

TEST(JobFile, ReadsEveryByteOverSeveralViews)
{
    const std::string bytes = variedBytes(2 * oneView + 12345);
    const SparseFile disk(bytes);
    JobFile file;
    file.open(disk.path());

    std::string read;
    read.reserve(bytes.size());
    while (!file.atEnd())
        read += static_cast<char>(file.getChar());

    EXPECT_TRUE(read == bytes);
}

TEST(JobFile, ReturnsBytesOverTheStartOfAView)
{
    const std::string bytes = variedBytes(2 * oneView);
    const SparseFile disk(bytes);
    for (const std::int64_t count : {std::int64_t{1}, std::int64_t{1024}, std::int64_t{1025},
                                     std::int64_t{5120}, std::int64_t{9000}, oneView}) {
        JobFile file;
        file.open(disk.path());
        file.setPos(oneView);

        file.returnChar(count);

        EXPECT_EQ(file.m_offset, oneView - count);
        for (std::int64_t offset = oneView - count, end = offset + 20; offset != end; ++offset)
            EXPECT_EQ(file.getChar(), static_cast<std::uint8_t>(bytes[static_cast<std::size_t>(offset)]))
                << count;
    }
}

TEST(JobFile, KeepsTheLeadInTheViewSoThatReturningBytesMapsNothing)
{
    SparseFile disk;
    disk.resize(3 * oneView);
    JobFile file;
    file.open(disk.path());
    file.setPos(2 * oneView);
    const std::uint8_t* here = file.window().data();

    file.returnChar(1024);

    EXPECT_EQ(file.window().data(), here - 1024);
}

TEST(JobFile, AdvancesUpToTheEndAndNotBeyond)
{
    const SparseFile bytes("abcdef");
    JobFile file;
    file.open(bytes.path());

    EXPECT_TRUE(file.advancePos(2));
    EXPECT_EQ(file.peekChar(), 'c');
    EXPECT_FALSE(file.advancePos(5));
    EXPECT_EQ(file.m_offset, 2);
    EXPECT_FALSE(file.advancePos(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(file.m_offset, 2);
    EXPECT_TRUE(file.advancePos(4));
    EXPECT_EQ(file.m_offset, 6);
    EXPECT_TRUE(file.atEnd());
    EXPECT_FALSE(file.advancePos(1));
}

TEST(JobFile, JumpsOverViewsInBothDirections)
{
    const std::string bytes = variedBytes(2 * oneView + 5000);
    const SparseFile disk(bytes);
    JobFile file;
    file.open(disk.path());
    const std::array<std::int64_t, 10> places{
        oneView - 1, oneView,         oneView + 1, 2 * oneView + 4999, 0,
        2 * oneView, 2 * oneView - 1, 1023,        2 * oneView - 4096, 1};

    for (const std::int64_t place : places) {
        file.setPos(place);

        EXPECT_EQ(file.m_offset, place);
        EXPECT_EQ(file.peekChar(), static_cast<std::uint8_t>(bytes[static_cast<std::size_t>(place)]))
            << place;
    }
    file.setPos(0);
    EXPECT_TRUE(file.advancePos(oneView));
    EXPECT_EQ(file.peekChar(), static_cast<std::uint8_t>(bytes[oneView]));
    EXPECT_TRUE(file.advancePos(oneView + 5000));
    EXPECT_TRUE(file.atEnd());
}

TEST(JobFile, TakesThePositionAtTheEndOfTheData)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());

    file.setPos(3);

    EXPECT_EQ(file.m_offset, 3);
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
}

TEST(JobFile, ShowsTheBytesFromThePositionToTheEndOfTheView)
{
    SparseFile bytes;
    bytes.resize(oneView + 100);
    JobFile file;
    file.open(bytes.path());

    EXPECT_EQ(file.window().size(), 4194304U);
    file.setPos(oneView - 3);
    EXPECT_EQ(file.window().size(), 3U);
    file.setPos(oneView);
    EXPECT_EQ(file.window().size(), 100U);
    file.setPos(oneView + 100);
    EXPECT_TRUE(file.window().empty());
}

TEST(JobFile, CopiesRangesOverSeveralViewsByteForByte)
{
    const std::string bytes = variedBytes(2 * oneView + 12345);
    const SparseFile disk(bytes);
    JobFile file;
    file.open(disk.path());
    const std::array<std::array<std::int64_t, 2>, 8> ranges{{{0, 2 * oneView + 12345},
                                                             {0, 1},
                                                             {0, oneView},
                                                             {oneView - 1, 2},
                                                             {oneView, oneView},
                                                             {1, 2 * oneView},
                                                             {2 * oneView + 12344, 1},
                                                             {7, 100}}};

    for (const auto& [offset, size] : ranges)
        EXPECT_TRUE(copied(file, offset, size) ==
                    bytes.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(size)))
            << offset << '+' << size;
}

TEST(JobFile, CopiesNothingForASizeOfZeroWhateverTheOffset)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());
    file.setPos(1);

    EXPECT_EQ(copied(file, 0, 0), "");
    EXPECT_EQ(copied(file, 99, 0), "");
    EXPECT_EQ(copied(file, -1, 0), "");
    EXPECT_EQ(file.m_offset, 1);
}

TEST(JobFile, ThrowsForARangeThatRunsPastTheEnd)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());

    EXPECT_EQ(copied(file, 1, 2), "bc");
    EXPECT_THROW(copied(file, 1, 3), UnexpectedEndOfFileException);
    EXPECT_THROW(copied(file, 3, 1), UnexpectedEndOfFileException);
    EXPECT_THROW(copied(file, 0, std::numeric_limits<std::int64_t>::max()), UnexpectedEndOfFileException);
}

TEST(JobFile, ThrowsForARangeOfNegativeSize)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());

    EXPECT_THROW(copied(file, 0, -1), JobParserException);
    EXPECT_THROW(copied(file, 0, std::numeric_limits<std::int64_t>::min()), JobParserException);
}

TEST(JobFile, TakesTheEndOfAFileThatShrankForTheEndOfTheJob)
{
    SparseFile bytes;
    bytes.resize(2 * oneView);
    JobFile file;
    file.open(bytes.path());
    bytes.resize(oneView + 10);

    file.setPos(oneView);

    EXPECT_EQ(file.m_realDataSize, oneView + 10);
    EXPECT_EQ(file.fileSize, 2 * oneView);
    EXPECT_EQ(file.window().size(), 10U);
    EXPECT_TRUE(file.advancePos(10));
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
}

TEST(JobFile, IsAtItsEndIfThePositionIsBehindAFileThatShrank)
{
    SparseFile bytes;
    bytes.resize(2 * oneView);
    JobFile file;
    file.open(bytes.path());
    bytes.resize(oneView + 10);

    file.setPos(2 * oneView - 5);

    EXPECT_TRUE(file.atEnd());
    EXPECT_TRUE(file.window().empty());
    EXPECT_THROW(file.getChar(), UnexpectedEndOfFileException);
}

TEST(JobFile, ThrowsForARangeThatIsGoneSinceTheFileShrank)
{
    SparseFile bytes;
    bytes.resize(2 * oneView);
    JobFile file;
    file.open(bytes.path());
    bytes.resize(oneView + 10);

    EXPECT_THROW(copied(file, 2 * oneView - 5, 5), UnexpectedEndOfFileException);
}

TEST(JobFile, FailsAnAssertionWithNothingMovedIfAHandlerThrows)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());
    file.setPos(1);

    EXPECT_EQ(failedAssertion([&] { file.setPos(-1); }),
              "ofs >= 0 && ofs <= m_realDataSize, JobFile, setPos");
    EXPECT_EQ(failedAssertion([&] { file.setPos(4); }), "ofs >= 0 && ofs <= m_realDataSize, JobFile, setPos");
    EXPECT_EQ(failedAssertion([&] { file.returnChar(2); }), "m_offset >= 0, JobFile, returnChar");
    EXPECT_EQ(failedAssertion([&] { file.advancePos(0); }), "count > 0, JobFile, advancePos");
    EXPECT_EQ(failedAssertion([&] { file.advancePos(-1); }), "count > 0, JobFile, advancePos");
    EXPECT_EQ(failedAssertion([&] { copied(file, 4, 1); }),
              "ofs >= 0 && ofs <= m_realDataSize, JobFile, copyToFile");
    EXPECT_EQ(failedAssertion([&] { copied(file, -1, 1); }),
              "ofs >= 0 && ofs <= m_realDataSize, JobFile, copyToFile");

    EXPECT_EQ(file.m_offset, 1);
    EXPECT_EQ(file.getChar(), 'b');
}

TEST(JobFile, AssertsThatItIsOpenBeforeItCopies)
{
    JobFile file;

    EXPECT_EQ(failedAssertion([&] { copied(file, 0, 1); }), "isOpen(), JobFile, copyToFile");
    EXPECT_EQ(failedAssertion([&] { copied(file, 0, 0); }), "isOpen(), JobFile, copyToFile");
}

TEST(JobFileDeathTest, AbortsOnAPositionOutsideTheData)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());

    EXPECT_DEATH(file.setPos(4),
                 "Assertion failed: ofs >= 0 && ofs <= m_realDataSize, file JobFile, function setPos");
    EXPECT_DEATH(copied(file, 4, 1),
                 "Assertion failed: ofs >= 0 && ofs <= m_realDataSize, file JobFile, function copyToFile");
}

TEST(JobFileDeathTest, AbortsOnReturningMoreBytesThanWereRead)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());
    file.getChar();

    EXPECT_DEATH(file.returnChar(2), "Assertion failed: m_offset >= 0, file JobFile, function returnChar");
}

TEST(JobFileDeathTest, AbortsOnAdvancingByNothing)
{
    const SparseFile bytes("abc");
    JobFile file;
    file.open(bytes.path());

    EXPECT_DEATH(file.advancePos(0), "Assertion failed: count > 0, file JobFile, function advancePos");
}

TEST(JobFile, AssertsThatAFileWasOpenedBeforeThePositionIsSet)
{
    JobFile file;

    EXPECT_EQ(failedAssertion([&] { file.setPos(0); }), "mapper != nullptr, JobFile, mapView");
}

TEST(JobFileDeathTest, AbortsOnCopyingFromAClosedFile)
{
    JobFile file;

    EXPECT_DEATH(copied(file, 0, 1), "Assertion failed: isOpen\\(\\), file JobFile, function copyToFile");
}

#if !defined(NEEDS_SHADOW_MEMORY)
/// Leaves with 0 if a reader whose next view is refused is closed, and so reads nothing any more.
[[noreturn]] void moveWithoutAddressSpace(JobFile& file)
{
    refuseAddresses();
    try {
        file.setPos(oneView);
    } catch (const Torv::GenericException&) {
        std::_Exit(!file.isOpen() && file.atEnd() && file.window().empty() ? 0 : 2);
    }
    std::_Exit(1);
}

TEST(JobFileDeathTest, IsClosedIfTheSystemRefusesAView)
{
    SparseFile bytes;
    bytes.resize(2 * oneView);
    JobFile file;
    file.open(bytes.path());

    EXPECT_EXIT(moveWithoutAddressSpace(file), testing::ExitedWithCode(0), "");
}
#endif

} // namespace
} // namespace JobParser
