#include "worker/Descriptor.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace JobParser::Worker
{
namespace
{

bool isOpen(int number)
{
    return ::fcntl(number, F_GETFD) >= 0;
}

TEST(Descriptor, ClosesWhatItOwns)
{
    const int number = ::dup(STDERR_FILENO);
    {
        const Descriptor descriptor(number);
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(Descriptor, PassesOnWhatItOwns)
{
    const int number = ::dup(STDERR_FILENO);
    Descriptor first(number);

    Descriptor second(std::move(first));
    first = Descriptor();

    EXPECT_EQ(second.get(), number);
    EXPECT_TRUE(isOpen(number));
    second.close();
    EXPECT_FALSE(isOpen(number));
    EXPECT_FALSE(second.isOpen());
}

TEST(Descriptor, WritesAndReadsAllOfAText)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const Descriptor input(ends[0]);
    Descriptor output(ends[1]);
    std::array<char, 4> bytes{};

    EXPECT_TRUE(writeAll(output.get(), "abcdef"));
    EXPECT_TRUE(readAll(input.get(), bytes.data(), 4));
    EXPECT_EQ(std::string_view(bytes.data(), 4), "abcd");
    output.close();
    EXPECT_FALSE(readAll(input.get(), bytes.data(), 4));
}

TEST(Descriptor, SaysThatNothingCanBeWritten)
{
    const Descriptor readOnly(::open("/dev/null", O_RDONLY));

    EXPECT_FALSE(writeAll(readOnly.get(), "x"));
}

} // namespace
} // namespace JobParser::Worker
