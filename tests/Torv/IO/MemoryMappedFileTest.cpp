#include "Torv/IO/MemoryMappedFile.h"

#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/Torv/IO/Mappings.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/MessageOf.h"

#include "Torv/GenericException.h"
#include "Torv/IO/MappingGroup.h"

using Torv::IO::MappedView;
using Torv::IO::MappingGroup;
using Torv::IO::MemoryMappedFile;
using Torv::Test::isMappedAt;
using Torv::Test::TemporaryDirectory;

namespace
{

std::string textOf(const MappedView& view)
{
    return std::string(view.data, view.data + view.size);
}

std::string openingMessage(const std::string& path)
{
    return messageOf([&] { MemoryMappedFile file(path); });
}

} // namespace

TEST(MemoryMappedFile, MapsAWholeFile)
{
    const TemporaryDirectory directory;
    MemoryMappedFile file(directory.file("job", "job data"));

    const auto view = file.map(0, 8);

    EXPECT_EQ(textOf(*view), "job data");
    EXPECT_EQ(view->offset, 0);
}

TEST(MemoryMappedFile, DeliversNoMoreThanTheFileHolds)
{
    const TemporaryDirectory directory;
    MemoryMappedFile file(directory.file("job", "job data"));

    EXPECT_EQ(textOf(*file.map(0, 0xFFFFFFFF)), "job data");
}

TEST(MemoryMappedFile, DeliversNoMoreThanIsAskedFor)
{
    const TemporaryDirectory directory;
    MemoryMappedFile file(directory.file("job", "job data"));

    EXPECT_EQ(textOf(*file.map(0, 3)), "job");
}

TEST(MemoryMappedFile, MapsFromAMultipleOfItsAlignment)
{
    const TemporaryDirectory directory;
    const std::int64_t alignment = MemoryMappedFile::alignment();
    MemoryMappedFile file(
        directory.file("job", std::string(static_cast<std::size_t>(alignment), '.') + "second page"));

    const auto view = file.map(alignment, 6);

    EXPECT_EQ(textOf(*view), "second");
    EXPECT_EQ(view->offset, alignment);
}

TEST(MemoryMappedFile, IsAlignedToPages)
{
    EXPECT_EQ(MemoryMappedFile::alignment(), ::sysconf(_SC_PAGESIZE));
    EXPECT_GT(MemoryMappedFile::alignment(), 0);
}

TEST(MemoryMappedFile, RefusesAnOffsetBetweenPagesAndBeforeTheStart)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", "job data");
    MemoryMappedFile file(path);

    EXPECT_EQ(messageOf([&] { file.map(1, 2); }),
              "Cannot map file | path=" + path + " | error=Invalid argument");
    EXPECT_EQ(messageOf([&] { file.map(-MemoryMappedFile::alignment(), 2); }),
              "Cannot map file | path=" + path + " | error=Invalid argument");
    EXPECT_FALSE(file.isMapped());
}

TEST(MemoryMappedFile, KeepsTheFormerViewIfMappingFails)
{
    const TemporaryDirectory directory;
    MemoryMappedFile file(directory.file("job", "job data"));
    const std::weak_ptr<const MappedView> former = file.map(0, 8);

    EXPECT_THROW(file.map(1, 2), Torv::GenericException);

    EXPECT_TRUE(file.isMapped());
    EXPECT_FALSE(former.expired());
}

TEST(MemoryMappedFile, GivesAViewOfNothingWhereThereIsNothing)
{
    const TemporaryDirectory directory;
    MemoryMappedFile empty(directory.file("empty", ""));
    MemoryMappedFile file(directory.file("job", "job data"));

    const auto ofEmptyFile = empty.map(0, 8);
    const auto ofNoLength = file.map(0, 0);
    const auto behindTheEnd = file.map(MemoryMappedFile::alignment() * 1000, 8);

    EXPECT_EQ(ofEmptyFile->size, 0);
    EXPECT_NE(ofEmptyFile->data, nullptr);
    EXPECT_EQ(ofNoLength->size, 0);
    EXPECT_NE(ofNoLength->data, nullptr);
    EXPECT_EQ(behindTheEnd->size, 0);
    EXPECT_NE(behindTheEnd->data, nullptr);
    EXPECT_EQ(behindTheEnd->offset, MemoryMappedFile::alignment() * 1000);
}

TEST(MemoryMappedFile, SeesTheFileAsLongAsItIsNow)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", "job");
    MemoryMappedFile file(path);
    ASSERT_EQ(textOf(*file.map(0, 100)), "job");

    std::ofstream(path, std::ios::binary | std::ios::app) << " data";

    EXPECT_EQ(textOf(*file.map(0, 100)), "job data");
}

TEST(MemoryMappedFile, TellsWhetherItHoldsAView)
{
    const TemporaryDirectory directory;
    MemoryMappedFile file(directory.file("job", "job data"));

    EXPECT_FALSE(file.isMapped());
    file.map(0, 8);
    EXPECT_TRUE(file.isMapped());
    file.unmap();
    EXPECT_FALSE(file.isMapped());
    file.unmap();
    EXPECT_FALSE(file.isMapped());
}

TEST(MemoryMappedFile, HoldsOnlyTheViewGivenLast)
{
    const TemporaryDirectory directory;
    MemoryMappedFile file(directory.file("job", "job data"));

    const std::weak_ptr<const MappedView> first = file.map(0, 8);
    const std::weak_ptr<const MappedView> second = file.map(0, 8);
    EXPECT_TRUE(first.expired());
    EXPECT_FALSE(second.expired());
    file.unmap();

    EXPECT_TRUE(second.expired());
}

TEST(MemoryMappedFile, LeavesAViewReadableForWhoHoldsIt)
{
    const TemporaryDirectory directory;
    auto file = std::make_unique<MemoryMappedFile>(directory.file("job", "job data"));

    const auto view = file->map(0, 8);
    file->unmap();
    file.reset();

    EXPECT_EQ(textOf(*view), "job data");
}

TEST(MemoryMappedFile, GivesAPartOfWhatIsMappedWithoutMappingIt)
{
    const TemporaryDirectory directory;
    const std::int64_t page = MemoryMappedFile::alignment();
    const auto pageSize = static_cast<std::size_t>(page);
    MemoryMappedFile file(
        directory.file("job", std::string(pageSize, 'a') + std::string(pageSize, 'b') + "c"),
        MemoryMappedFile::Access::Mapped);
    auto whole = file.map(0, 2 * static_cast<std::uint32_t>(page) + 1);
    file.unmap();

    const auto end = file.map(page, 100);
    const std::uint8_t* const start = whole->data;
    whole.reset();

    EXPECT_EQ(end->data, start + page);
    EXPECT_EQ(end->offset, page);
    EXPECT_EQ(textOf(*end), std::string(100, 'b'));
    EXPECT_EQ(textOf(*file.map(2 * page, 9)), "c");
}

TEST(MemoryMappedFile, MapsWhatReachesBeyondWhatIsMapped)
{
    const TemporaryDirectory directory;
    const auto pageSize = static_cast<std::size_t>(MemoryMappedFile::alignment());
    MemoryMappedFile file(directory.file("job", std::string(pageSize, 'a') + "b"));
    const auto start = file.map(0, 10);

    EXPECT_EQ(textOf(*file.map(0, static_cast<std::uint32_t>(pageSize) + 1)),
              std::string(pageSize, 'a') + "b");
}

namespace
{

// Whether a view shows what becomes of the file, as a mapping does.
bool isMapping(const MappedView& view, const std::string& path)
{
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary) << '#';
    return view.data[0] == '#';
}

} // namespace

TEST(MemoryMappedFile, ReadsWhatIsSmallIfThatIsWanted)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", "job data");
    MemoryMappedFile file(path, MemoryMappedFile::Access::Read);

    const auto view = file.map(0, 100);

    EXPECT_EQ(textOf(*view), "job data");
    EXPECT_EQ(view->offset, 0);
    EXPECT_FALSE(isMapping(*view, path));
    EXPECT_EQ(textOf(*view), "job data");
}

TEST(MemoryMappedFile, ReadsNoMoreThanAMebibyte)
{
    constexpr std::size_t most = 1024 * 1024;
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", std::string(most + 1, 'x'));
    MemoryMappedFile file(path, MemoryMappedFile::Access::Read);

    EXPECT_FALSE(isMapping(*file.map(0, most), path));
    EXPECT_TRUE(isMapping(*file.map(0, most + 1), path));
}

TEST(MemoryMappedFile, GivesAPartOfWhatWasRead)
{
    const TemporaryDirectory directory;
    const std::int64_t page = MemoryMappedFile::alignment();
    const auto pageSize = static_cast<std::size_t>(page);
    MemoryMappedFile file(directory.file("job", std::string(pageSize, 'a') + "bc"),
                          MemoryMappedFile::Access::Read);
    auto whole = file.map(0, 2 * static_cast<std::uint32_t>(page));

    const auto end = file.map(page, 100);
    const std::uint8_t* const start = whole->data;
    whole.reset();

    EXPECT_EQ(end->data, start + page);
    EXPECT_EQ(textOf(*end), "bc");
    EXPECT_EQ(file.map(2 * page, 9)->size, 0);
}

TEST(MemoryMappedFile, KeepsWhatWasReadOfAFileThatIsCutShort)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", "job data");
    MemoryMappedFile file(path, MemoryMappedFile::Access::Read);
    const auto view = file.map(0, 8);

    ASSERT_EQ(::truncate(path.c_str(), 0), 0);

    EXPECT_EQ(textOf(*view), "job data");
    EXPECT_EQ(file.map(0, 8)->size, 0);
}

TEST(MemoryMappedFile, ReadsWhatIsSmallByItself)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", std::string(65536, 'x'));
    MemoryMappedFile file(path);
    MemoryMappedFile mapped(path, MemoryMappedFile::Access::Mapped);

    EXPECT_FALSE(isMapping(*file.map(0, 65536), path));
    EXPECT_TRUE(isMapping(*mapped.map(0, 65536), path));
}

TEST(MemoryMappedFile, ReadsMoreWhereTheProcessHasThreads)
{
    constexpr std::size_t most = 1024 * 1024;
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", std::string(most + 1, 'x'));
    MemoryMappedFile file(path);

    std::thread([&] {
        EXPECT_FALSE(isMapping(*file.map(0, most), path));
        EXPECT_TRUE(isMapping(*file.map(0, most + 1), path));
    }).join();
}

TEST(MemoryMappedFile, LetsTheMappingGoWithItsLastHolder)
{
    const TemporaryDirectory directory;
    MemoryMappedFile file(directory.file("job", "job data"), MemoryMappedFile::Access::Mapped);

    auto view = file.map(0, 8);
    const void* const address = view->data;
    file.unmap();
    EXPECT_TRUE(isMappedAt(address));
    view.reset();

    EXPECT_FALSE(isMappedAt(address));
}

TEST(MemoryMappedFile, MapsWithinAGroup)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", std::string(65537, 'x'));
    const auto group = std::make_shared<MappingGroup>();
    const void* page = nullptr;

    {
        MemoryMappedFile file(path, group);
        const auto view = file.map(0, 65537);
        EXPECT_EQ(textOf(*view), std::string(65537, 'x'));
        EXPECT_TRUE(isMapping(*view, path));
        page = view->data;
    }

    EXPECT_TRUE(isMappedAt(page));
    EXPECT_EQ(MemoryMappedFile(path, group).map(0, 65537)->data,
              static_cast<const std::uint8_t*>(page) + 65536 + MemoryMappedFile::alignment());
}

TEST(MemoryMappedFile, LeavesOutOfAGroupWhatIsSmallOrLarge)
{
    constexpr std::size_t large = 1024 * 1024 + 1;
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", std::string(large, 'x'));
    MemoryMappedFile file(path, std::make_shared<MappingGroup>());

    EXPECT_FALSE(isMapping(*file.map(0, 65536), path));
    const void* const page = file.map(0, large)->data;
    file.unmap();

    EXPECT_FALSE(isMappedAt(page));
}

TEST(MemoryMappedFile, ReadsWhatAGroupRefusesWhereTheProcessHasThreads)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", std::string(65537, 'x'));
    const auto group = std::make_shared<MappingGroup>();
    constexpr int noDescriptor = -1;
    ASSERT_EQ(group->map(noDescriptor, 0, 1), nullptr);
    MemoryMappedFile file(path, group);

    std::thread([&] {
        const auto view = file.map(0, 65537);
        EXPECT_EQ(textOf(*view), std::string(65537, 'x'));
        EXPECT_FALSE(isMapping(*view, path));
    }).join();
}

TEST(MemoryMappedFile, ReadsAFileThatWasRemovedMeanwhile)
{
    const TemporaryDirectory directory;
    const std::string path = directory.file("job", "job data");
    MemoryMappedFile file(path);

    ::unlink(path.c_str());

    EXPECT_EQ(textOf(*file.map(0, 8)), "job data");
}

TEST(MemoryMappedFile, RefusesAMissingFile)
{
    const TemporaryDirectory directory;
    const std::string path = directory.path("missing");

    EXPECT_EQ(openingMessage(path), "Cannot open file | path=" + path + " | error=No such file or directory");
}

TEST(MemoryMappedFile, RefusesADirectory)
{
    const TemporaryDirectory directory;
    const std::string path = directory.path("");

    EXPECT_EQ(openingMessage(path), "Cannot open file | path=" + path + " | error=Is a directory");
}

TEST(MemoryMappedFile, RefusesAFifoWithoutWaitingForAWriter)
{
    const TemporaryDirectory directory;
    const std::string path = directory.path("fifo");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);

    EXPECT_EQ(openingMessage(path), "Cannot open file | path=" + path + " | error=Not a regular file");
}

TEST(MemoryMappedFile, RefusesADevice)
{
    EXPECT_EQ(openingMessage("/dev/null"), "Cannot open file | path=/dev/null | error=Not a regular file");
}

TEST(MemoryMappedFile, ClosesWhatItRefuses)
{
    const TemporaryDirectory directory;
    const std::string path = directory.path("fifo");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int before = ::dup(STDIN_FILENO);
    ::close(before);

    EXPECT_THROW(MemoryMappedFile file(path), Torv::GenericException);

    const int after = ::dup(STDIN_FILENO);
    ::close(after);
    EXPECT_EQ(after, before);
}
