#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// Finds, in bulk, the places in a stretch of bytes where something may begin that is known by two bytes.
///
/// Job data is mostly bytes that mean nothing. Single bytes such as ESC are frequent enough in binary data to
/// stop a search all the time; pairs are rare.
namespace Torv
{

/// Two bytes that follow each other.
struct BytePair {
    std::uint8_t first;
    std::uint8_t second;
};

/// The index of the first place where one of the pairs begins. A last byte that equals the first byte of a
/// pair counts as such a place, since what follows it is not known here. The size of `bytes` if there is
/// none.
std::size_t findPair(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs);

/// The index of the first place where one of the single bytes stands or the pair begins. A last byte that
/// equals the first byte of the pair counts as such a place. The size of `bytes` if there is none.
std::size_t findByteOrPair(std::span<const std::uint8_t> bytes, const std::array<std::uint8_t, 2>& singles,
                           BytePair pair);

} // namespace Torv
