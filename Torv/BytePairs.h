#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
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

/// A set of one to four bytes below 128 of which no two end with the same four bits, so that one look-up
/// among sixteen tells whether a byte belongs to it.
class NibbleSet
{
public:
    /// Bytes that break the rule do not compile.
    consteval NibbleSet(std::initializer_list<std::uint8_t> bytes)
    {
        // No byte ends with another place than its own, so that nothing is found where nothing was put.
        m_table[0] = 1;
        if (bytes.size() == 0 || bytes.size() > m_bytes.size())
            throw "no set of this kind";
        m_bytes.fill(*bytes.begin());
        std::copy(bytes.begin(), bytes.end(), m_bytes.begin());
        std::uint32_t taken = 0;
        for (const std::uint8_t byte : bytes) {
            const std::size_t place = byte % m_table.size();
            if (byte >= 128 || (taken >> place) % 2 != 0)
                throw "no set of this kind";
            m_table[place] = byte;
            taken |= 1U << place;
        }
    }

    constexpr bool contains(std::uint8_t byte) const { return m_table[byte % m_table.size()] == byte; }

    /// At each index the byte of the set that ends with these four bits, or one that does not.
    constexpr const std::array<std::uint8_t, 16>& table() const { return m_table; }

    /// The bytes of the set, some of them more than once.
    constexpr const std::array<std::uint8_t, 4>& bytes() const { return m_bytes; }

private:
    std::array<std::uint8_t, 4> m_bytes{};
    std::array<std::uint8_t, 16> m_table{};
};

/// The index of the first place where one of `firsts` stands with one of `seconds` behind it. A last byte
/// that is one of `firsts` counts as such a place. The size of `bytes` if there is none.
std::size_t findPairOfSets(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                           const NibbleSet& seconds);

} // namespace Torv
