#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Looks at eight bytes at once, as one word whose lowest byte is the first.
///
/// Tests mark the high bit of each byte that they find. A borrow may mark bytes behind the first one found,
/// so that only the first mark, and that there is none, mean something.
namespace Torv::EightBytes
{

inline constexpr std::size_t size = sizeof(std::uint64_t);
inline constexpr std::uint64_t highBits = 0x8080808080808080U;

/// A word of eight times the same byte.
constexpr std::uint64_t filledWith(std::uint8_t byte)
{
    return 0x0101010101010101U * byte;
}

/// Reads eight bytes.
inline std::uint64_t load(const void* bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, size);
    if constexpr (std::endian::native == std::endian::big) {
        std::uint64_t reversed = 0;
        for (std::size_t byte = 0; byte < size; ++byte, word >>= 8)
            reversed = reversed << 8 | (word & 0xFF);
        return reversed;
    }
    return word;
}

/// Marks bytes below a limit of at most 128.
constexpr std::uint64_t markBelow(std::uint64_t word, std::uint8_t limit)
{
    return (word - filledWith(limit)) & ~word & highBits;
}

/// Marks bytes of one value, which is below 128.
constexpr std::uint64_t markEqual(std::uint64_t word, std::uint8_t value)
{
    return markBelow(word ^ filledWith(value), 1);
}

/// The index of the first byte that is marked, for marks of which there is one.
constexpr std::size_t firstMarked(std::uint64_t marks)
{
    return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

/// How many of the bytes from the first on are not marked. `mark` tests a word.
template <typename Mark> std::size_t countUnmarked(const void* bytes, std::size_t count, Mark mark)
{
    const char* const start = static_cast<const char*>(bytes);
    std::size_t passed = 0;
    for (; count - passed >= size; passed += size)
        if (const std::uint64_t marks = mark(load(start + passed)))
            return passed + firstMarked(marks);
    const std::size_t left = count - passed;
    if (left == 0)
        return count;
    // What is left, as the end of a word whose other bytes are known to pass, or are not there.
    std::uint64_t word = 0;
    if (count >= size)
        word = load(start + count - size) >> 8 * (size - left);
    else
        for (std::size_t byte = left; byte-- != 0;)
            word = word << 8 | static_cast<std::uint8_t>(start[byte]);
    const std::uint64_t marks = mark(word) & ((std::uint64_t(1) << 8 * left) - 1);
    return marks == 0 ? count : passed + firstMarked(marks);
}

} // namespace Torv::EightBytes
