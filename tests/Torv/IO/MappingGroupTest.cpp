#include "Torv/IO/MappingGroup.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "tests/Torv/IO/Mappings.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/NoAddressSpace.h"

using Torv::IO::MappingGroup;
using Torv::Test::isMappedAt;
using Torv::Test::TemporaryDirectory;

namespace
{

constexpr std::int64_t mebibyte = 1024 * 1024;

std::int64_t pageSize()
{
    return ::sysconf(_SC_PAGESIZE);
}

/// A file that is open.
class OpenFile
{
public:
    explicit OpenFile(const std::string& bytes)
        : m_path(m_directory.file("job", bytes)), m_descriptor(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC))
    {
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { ::close(m_descriptor); }

    int descriptor() const { return m_descriptor; }

    /// How many mappings of it the process has.
    int mappings() const
    {
        std::ifstream maps("/proc/self/maps");
        int count = 0;
        for (std::string line; std::getline(maps, line);)
            count += line.ends_with(m_path) ? 1 : 0;
        return count;
    }

private:
    TemporaryDirectory m_directory;
    std::string m_path;
    int m_descriptor;
};

std::string pageOf(char byte)
{
    return std::string(static_cast<std::size_t>(pageSize()), byte);
}

} // namespace

TEST(MappingGroup, MapsAStretchOfAFile)
{
    const OpenFile file(pageOf('a') + "job data");
    MappingGroup group;

    const auto mapping = group.map(file.descriptor(), pageSize(), 8);

    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(std::string(mapping.get(), mapping.get() + 8), "job data");
}

TEST(MappingGroup, PutsMappingsSideBySide)
{
    const OpenFile file(pageOf('a') + pageOf('b') + "c");
    MappingGroup group;

    const auto first = group.map(file.descriptor(), 0, pageSize() + 1);
    const auto second = group.map(file.descriptor(), 2 * pageSize(), 1);
    const auto third = group.map(file.descriptor(), pageSize(), 1);

    EXPECT_EQ(second.get(), first.get() + 2 * pageSize());
    EXPECT_EQ(third.get(), second.get() + pageSize());
    EXPECT_EQ(*first, 'a');
    EXPECT_EQ(*second, 'c');
    EXPECT_EQ(*third, 'b');
}

TEST(MappingGroup, KeepsWhatNobodyHoldsUntilItEnds)
{
    const OpenFile file("job data");
    auto group = std::make_unique<MappingGroup>();

    const void* const page = group->map(file.descriptor(), 0, 8).get();
    EXPECT_TRUE(isMappedAt(page));
    group.reset();

    EXPECT_FALSE(isMappedAt(page));
}

TEST(MappingGroup, LeavesAMappingForWhoHoldsIt)
{
    const OpenFile file("job data");
    auto group = std::make_unique<MappingGroup>();

    auto mapping = group->map(file.descriptor(), 0, 8);
    const void* const page = mapping.get();
    group.reset();
    EXPECT_EQ(std::string(mapping.get(), mapping.get() + 8), "job data");
    mapping.reset();

    EXPECT_FALSE(isMappedAt(page));
}

TEST(MappingGroup, EndsMappingsTogetherOnceTheirAddressesAreFull)
{
    const OpenFile file(std::string(mebibyte, 'x'));
    MappingGroup group;

    for (int number = 0; number < 32; ++number)
        ASSERT_NE(group.map(file.descriptor(), 0, mebibyte), nullptr);
    EXPECT_EQ(file.mappings(), 32);
    const auto next = group.map(file.descriptor(), 0, mebibyte);

    ASSERT_NE(next, nullptr);
    EXPECT_EQ(*next, 'x');
    EXPECT_EQ(file.mappings(), 1);
}

TEST(MappingGroup, EndsMappingsTogetherOnceThereAreMany)
{
    const OpenFile file("job data");
    MappingGroup group;

    auto held = group.map(file.descriptor(), 0, 8);
    for (int number = 1; number < 256; ++number)
        ASSERT_NE(group.map(file.descriptor(), 0, 8), nullptr);
    const auto next = group.map(file.descriptor(), 0, 8);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(file.mappings(), 257);
    EXPECT_EQ(std::string(held.get(), held.get() + 8), "job data");
    held.reset();

    EXPECT_EQ(file.mappings(), 1);
}

TEST(MappingGroup, MapsNoMoreThanAMebibyteAtATime)
{
    const OpenFile file(std::string(mebibyte + 1, 'x'));
    MappingGroup group;

    EXPECT_EQ(group.map(file.descriptor(), 0, mebibyte + 1), nullptr);
    EXPECT_NE(group.map(file.descriptor(), 0, mebibyte), nullptr);
}

TEST(MappingGroup, LeavesAddressesForOtherThingsHoweverManyPeersThereAre)
{
    constexpr std::size_t most = sizeof(void*) < 8 ? 8 : 64;
    const OpenFile file("job data");
    const MappingGroup first;
    std::vector<std::unique_ptr<MappingGroup>> groups;
    for (std::size_t number = 0; number < most; ++number) {
        groups.push_back(first.makePeer());
        ASSERT_NE(groups.back()->map(file.descriptor(), 0, 8), nullptr);
    }
    const auto oneMore = first.makePeer();

    EXPECT_EQ(oneMore->map(file.descriptor(), 0, 8), nullptr);
    EXPECT_NE(groups.front()->map(file.descriptor(), 0, 8), nullptr);
    groups.pop_back();
    EXPECT_NE(oneMore->map(file.descriptor(), 0, 8), nullptr);
}

TEST(MappingGroup, MapsNothingMoreWhereTheSystemRefusedOnce)
{
    const OpenFile file("job data");
    MappingGroup group;
    const auto held = group.map(file.descriptor(), 0, 8);

    EXPECT_EQ(group.map(-1, 0, 8), nullptr);

    EXPECT_EQ(group.map(file.descriptor(), 0, 8), nullptr);
    EXPECT_EQ(std::string(held.get(), held.get() + 8), "job data");
    EXPECT_NE(group.makePeer()->map(file.descriptor(), 0, 8), nullptr);
}

TEST(MappingGroup, GivesBackTheAddressesThatItCannotUse)
{
    const OpenFile file("job data");
    MappingGroup group;
    const auto held = group.map(file.descriptor(), 0, 8);

    group.map(-1, 0, 8);

    EXPECT_FALSE(isMappedAt(held.get() + 2 * pageSize()));
}

#if !defined(NEEDS_SHADOW_MEMORY)
/// Leaves with 0 if nothing is mapped.
[[noreturn]] void mapWithoutAddressSpace(MappingGroup& group, const OpenFile& file)
{
    refuseAddresses();
    std::_Exit(group.map(file.descriptor(), 0, 8) == nullptr ? 0 : 1);
}

TEST(MappingGroupDeathTest, MapsNothingWhereTheSystemHasNoAddresses)
{
    const OpenFile file("job data");
    MappingGroup first;
    MappingGroup second;
    ASSERT_NE(second.map(file.descriptor(), 0, 8), nullptr);

    EXPECT_EXIT(mapWithoutAddressSpace(first, file), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(mapWithoutAddressSpace(second, file), testing::ExitedWithCode(0), "");
}
#endif

TEST(MappingGroupThreads, MapOrRefuseWhilePeersEndMappings)
{
    const std::array<OpenFile, 2> files{OpenFile(pageOf('a')), OpenFile(pageOf('b'))};
    const MappingGroup first;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, group = std::shared_ptr<MappingGroup>(first.makePeer()), number] {
            const char byte = number % 2 == 0 ? 'a' : 'b';
            const int descriptor = files[static_cast<std::size_t>(number % 2)].descriptor();
            std::shared_ptr<const std::uint8_t> held;
            for (int round = 0; round < 2000; ++round) {
                auto mapping = group->map(descriptor, 0, pageSize());
                if ((mapping != nullptr && *mapping != byte) || (held != nullptr && *held != byte))
                    ++wrong;
                if (round % 100 == 0)
                    held = std::move(mapping);
            }
        });
    }

    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(wrong, 0);
}
