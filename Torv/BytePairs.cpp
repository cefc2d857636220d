// A scan is made of two things: a matcher, which says whether a place counts by its byte and the next one,
// and rounds, which lead it over the bytes, one function for each width of the machine. A matcher has the
// forms `hits` for one byte, for 16 and for 32, and `mayHit` for the last byte, whose next one is unknown.
//
// The bytes are loaded twice, at a place and one behind it, so that a round compares pairs and not single
// bytes: in compressed data every second round would hold one of the single bytes. A round asks once whether
// anything was hit, and tells where out of what it has compared. What is too short for a round goes by in
// steps of one vector, of which the last overlaps the one before it, so that nothing is read outside the
// bytes and no rest remains.
//
// Google Highway would do the same for more machines, but loading its library alone takes 3.4 ms.

#include "Torv/BytePairs.h"

#include <algorithm>
#include <bit>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
// Written in a way that Clang takes in C alone.
#if __has_include(<sys/platform/x86.h>) && !defined(__clang__)
#include <sys/platform/x86.h>
#define TORV_LOADER_KNOWS_PROCESSOR
#endif
#endif

#include "Torv/BytePairsKernels.h"

// What is marked so is compiled for AVX2 whatever the options of the build are.
#define TORV_AVX2 gnu::target("avx2")

namespace Torv
{
namespace BytePairsKernels
{
namespace
{

template <std::size_t pairCount> class PairMatcher
{
public:
    explicit PairMatcher(const std::array<BytePair, pairCount>& pairs) : m_pairs(pairs) {}

    bool mayHit(std::uint8_t last) const
    {
        bool result = false;
        for (const BytePair& pair : m_pairs)
            result |= last == pair.first;
        return result;
    }

    bool hits(std::uint8_t current, std::uint8_t next) const
    {
        bool result = false;
        for (const BytePair& pair : m_pairs)
            result |= (current == pair.first) & (next == pair.second);
        return result;
    }

#if defined(__x86_64__)
    [[gnu::always_inline]] __m128i hits(__m128i current, __m128i next) const
    {
        return hits(current, next, std::make_index_sequence<pairCount>());
    }

    [[TORV_AVX2, gnu::always_inline]] __m256i hits(__m256i current, __m256i next) const
    {
        return hits(current, next, std::make_index_sequence<pairCount>());
    }
#endif

private:
#if defined(__x86_64__)
    template <std::size_t... index>
    [[gnu::always_inline]] __m128i hits(__m128i current, __m128i next, std::index_sequence<index...>) const
    {
        return (... | (_mm_cmpeq_epi8(current, _mm_set1_epi8(static_cast<char>(m_pairs[index].first))) &
                       _mm_cmpeq_epi8(next, _mm_set1_epi8(static_cast<char>(m_pairs[index].second)))));
    }

    template <std::size_t... index>
    [[TORV_AVX2, gnu::always_inline]] __m256i hits(__m256i current, __m256i next,
                                                   std::index_sequence<index...>) const
    {
        return (... | (_mm256_cmpeq_epi8(current, _mm256_set1_epi8(static_cast<char>(m_pairs[index].first))) &
                       _mm256_cmpeq_epi8(next, _mm256_set1_epi8(static_cast<char>(m_pairs[index].second)))));
    }
#endif

    std::array<BytePair, pairCount> m_pairs;
};

#if defined(__x86_64__)

[[gnu::always_inline]] inline __m128i equal(__m128i bytes, std::uint8_t byte)
{
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(static_cast<char>(byte)));
}

[[TORV_AVX2, gnu::always_inline]] inline __m256i equal(__m256i bytes, std::uint8_t byte)
{
    return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(static_cast<char>(byte)));
}

#endif

class ByteOrPairMatcher
{
public:
    ByteOrPairMatcher(const std::array<std::uint8_t, 2>& singles, BytePair pair)
        : m_singles(singles), m_pair(pair)
    {
    }

    bool mayHit(std::uint8_t last) const
    {
        return last == m_singles[0] || last == m_singles[1] || last == m_pair.first;
    }

    bool hits(std::uint8_t current, std::uint8_t next) const
    {
        bool result = current == m_singles[0];
        result |= current == m_singles[1];
        result |= (current == m_pair.first) & (next == m_pair.second);
        return result;
    }

#if defined(__x86_64__)
    [[gnu::always_inline]] __m128i hits(__m128i current, __m128i next) const
    {
        return equal(current, m_singles[0]) | equal(current, m_singles[1]) |
               (equal(current, m_pair.first) & equal(next, m_pair.second));
    }

    [[TORV_AVX2, gnu::always_inline]] __m256i hits(__m256i current, __m256i next) const
    {
        return equal(current, m_singles[0]) | equal(current, m_singles[1]) |
               (equal(current, m_pair.first) & equal(next, m_pair.second));
    }
#endif

private:
    std::array<std::uint8_t, 2> m_singles;
    BytePair m_pair;
};

/// The sets outlive it. It does not copy them: a vector that is loaded from bytes just written waits for
/// them.
class PairOfSetsMatcher
{
public:
    PairOfSetsMatcher(const NibbleSet& firsts, const NibbleSet& seconds)
        : m_firsts(&firsts), m_seconds(&seconds)
    {
    }

    bool mayHit(std::uint8_t last) const { return m_firsts->contains(last); }

    bool hits(std::uint8_t current, std::uint8_t next) const
    {
        return m_seconds->contains(next) && m_firsts->contains(current);
    }

#if defined(__x86_64__)
    [[gnu::always_inline]] __m128i hits(__m128i current, __m128i next) const
    {
        return within(current, *m_firsts) & within(next, *m_seconds);
    }

    [[TORV_AVX2, gnu::always_inline]] __m256i hits(__m256i current, __m256i next) const
    {
        return within(current, *m_firsts) & within(next, *m_seconds);
    }
#endif

private:
#if defined(__x86_64__)
    [[gnu::always_inline]] static __m128i within(__m128i bytes, const NibbleSet& set)
    {
        const auto& members = set.bytes();
        return equal(bytes, members[0]) | equal(bytes, members[1]) | equal(bytes, members[2]) |
               equal(bytes, members[3]);
    }

    // The shuffle looks up the low four bits of each byte, and gives 0 for bytes from 128 on.
    [[TORV_AVX2, gnu::always_inline]] static __m256i within(__m256i bytes, const NibbleSet& set)
    {
        const __m128i table = _mm_loadu_si128(reinterpret_cast<const __m128i*>(set.table().data()));
        return _mm256_cmpeq_epi8(bytes, _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(table), bytes));
    }
#endif

    const NibbleSet* m_firsts;
    const NibbleSet* m_seconds;
};

/// Each of the rounds looks at `places` places and reads one byte more. They give the first place that is
/// hit, `places` if there is none.
template <typename Matcher>
std::size_t scanPortable(const std::uint8_t* data, std::size_t places, Matcher matcher)
{
    std::size_t at = 0;
    while (at < places && !matcher.hits(data[at], data[at + 1]))
        ++at;
    return at;
}

#if defined(__x86_64__)

/// The processor's own prefetching ends at each page. A round takes too long for it to look a page ahead by
/// running ahead, as a plain memchr does, so the rounds ask for the next page themselves.
constexpr std::size_t prefetchDistance = 4096;
constexpr std::size_t cacheLine = 64;

template <std::size_t size> [[gnu::always_inline]] inline void prefetch(const std::uint8_t* place)
{
    for (std::size_t at = 0; at < size; at += cacheLine)
        _mm_prefetch(reinterpret_cast<const char*>(place + at), _MM_HINT_T0);
}

/// 1 to `width`. From there on no load of first bytes crosses a cache line; the places before it belong to
/// the first vector.
inline std::size_t bytesToAligned(const std::uint8_t* data, std::size_t width)
{
    return width - reinterpret_cast<std::uintptr_t>(data) % width;
}

template <typename Matcher>
[[gnu::always_inline]] inline __m128i hits16(const std::uint8_t* place, const Matcher& matcher)
{
    return matcher.hits(_mm_loadu_si128(reinterpret_cast<const __m128i*>(place)),
                        _mm_loadu_si128(reinterpret_cast<const __m128i*>(place + 1)));
}

[[gnu::always_inline]] inline unsigned maskOf(__m128i hits)
{
    return static_cast<unsigned>(_mm_movemask_epi8(hits));
}

/// What is hit in four vectors at once.
struct RoundOf64 {
    __m128i hits[4];

    bool any() const { return maskOf(hits[0] | hits[1] | hits[2] | hits[3]) != 0; }

    /// The first place that is hit, of a round where there is one.
    std::size_t first() const
    {
        return static_cast<std::size_t>(std::countr_zero(mask(0) | mask(1) | mask(2) | mask(3)));
    }

private:
    std::uint64_t mask(std::size_t part) const { return std::uint64_t(maskOf(hits[part])) << 16 * part; }
};

template <typename Matcher>
[[gnu::always_inline]] inline RoundOf64 roundOf64(const std::uint8_t* place, const Matcher& matcher)
{
    return {{hits16(place, matcher), hits16(place + 16, matcher), hits16(place + 32, matcher),
             hits16(place + 48, matcher)}};
}

template <typename Matcher>
std::size_t scanSse2(const std::uint8_t* data, std::size_t places, Matcher matcher)
{
    constexpr std::size_t width = 16;
    constexpr std::size_t round = 4 * width;
    if (places < width)
        return scanPortable(data, places, matcher);
    if (const unsigned mask = maskOf(hits16(data, matcher)); mask != 0)
        return static_cast<std::size_t>(std::countr_zero(mask));

    std::size_t at = bytesToAligned(data, width);
    for (; places - at >= round + prefetchDistance; at += round) {
        prefetch<round>(data + at + prefetchDistance);
        if (const RoundOf64 hits = roundOf64(data + at, matcher); hits.any())
            return at + hits.first();
    }
    for (; places - at >= round; at += round)
        if (const RoundOf64 hits = roundOf64(data + at, matcher); hits.any())
            return at + hits.first();
    for (at = std::min(at, places - width);; at = std::min(at + width, places - width)) {
        const unsigned mask = maskOf(hits16(data + at, matcher));
        if (mask != 0)
            return at + static_cast<std::size_t>(std::countr_zero(mask));
        if (at == places - width)
            return places;
    }
}

template <typename Matcher>
[[TORV_AVX2, gnu::always_inline]] inline __m256i hits32(const std::uint8_t* place, const Matcher& matcher)
{
    return matcher.hits(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(place)),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place + 1)));
}

[[TORV_AVX2, gnu::always_inline]] inline unsigned maskOf(__m256i hits)
{
    return static_cast<unsigned>(_mm256_movemask_epi8(hits));
}

/// What is hit in four vectors at once.
struct RoundOf128 {
    __m256i hits[4];

    [[TORV_AVX2, gnu::always_inline]] bool any() const
    {
        return maskOf(hits[0] | hits[1] | hits[2] | hits[3]) != 0;
    }

    /// The first place that is hit, of a round where there is one.
    [[TORV_AVX2, gnu::always_inline]] std::size_t first() const
    {
        const std::uint64_t low = std::uint64_t(maskOf(hits[1])) << 32 | maskOf(hits[0]);
        const std::uint64_t high = std::uint64_t(maskOf(hits[3])) << 32 | maskOf(hits[2]);
        return static_cast<std::size_t>(low != 0 ? std::countr_zero(low) : 64 + std::countr_zero(high));
    }
};

template <typename Matcher>
[[TORV_AVX2, gnu::always_inline]] inline RoundOf128 roundOf128(const std::uint8_t* place,
                                                               const Matcher& matcher)
{
    return {{hits32(place, matcher), hits32(place + 32, matcher), hits32(place + 64, matcher),
             hits32(place + 96, matcher)}};
}

template <typename Matcher>
[[TORV_AVX2]] std::size_t scanAvx2(const std::uint8_t* data, std::size_t places, Matcher matcher)
{
    constexpr std::size_t width = 32;
    constexpr std::size_t round = 4 * width;
    if (places < width)
        return scanSse2(data, places, matcher);
    if (const unsigned mask = maskOf(hits32(data, matcher)); mask != 0)
        return static_cast<std::size_t>(std::countr_zero(mask));

    std::size_t at = bytesToAligned(data, width);
    for (; places - at >= round + prefetchDistance; at += round) {
        prefetch<round>(data + at + prefetchDistance);
        if (const RoundOf128 hits = roundOf128(data + at, matcher); hits.any())
            return at + hits.first();
    }
    for (; places - at >= round; at += round)
        if (const RoundOf128 hits = roundOf128(data + at, matcher); hits.any())
            return at + hits.first();
    for (at = std::min(at, places - width);; at = std::min(at + width, places - width)) {
        const unsigned mask = maskOf(hits32(data + at, matcher));
        if (mask != 0)
            return at + static_cast<std::size_t>(std::countr_zero(mask));
        if (at == places - width)
            return places;
    }
}

#endif

/// Leads the matcher over all of the bytes. The last one is a place of its own kind: nothing follows it.
template <typename Matcher, typename Scan>
std::size_t find(std::span<const std::uint8_t> bytes, const Matcher& matcher, Scan scan)
{
    if (bytes.empty())
        return 0;
    const std::size_t places = bytes.size() - 1;
    const std::size_t found = scan(bytes.data(), places, matcher);
    return found == places && !matcher.mayHit(bytes.back()) ? bytes.size() : found;
}

} // namespace

std::size_t findPairPortable(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs)
{
    return find(bytes, PairMatcher(pairs), scanPortable<PairMatcher<2>>);
}

std::size_t findByteOrPairPortable(std::span<const std::uint8_t> bytes,
                                   const std::array<std::uint8_t, 2>& singles, BytePair pair)
{
    return find(bytes, ByteOrPairMatcher(singles, pair), scanPortable<ByteOrPairMatcher>);
}

std::size_t findPairOfSetsPortable(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                                   const NibbleSet& seconds)
{
    return find(bytes, PairOfSetsMatcher(firsts, seconds), scanPortable<PairOfSetsMatcher>);
}

#if defined(__x86_64__)

std::size_t findPairSse2(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs)
{
    return find(bytes, PairMatcher(pairs), scanSse2<PairMatcher<2>>);
}

std::size_t findByteOrPairSse2(std::span<const std::uint8_t> bytes,
                               const std::array<std::uint8_t, 2>& singles, BytePair pair)
{
    return find(bytes, ByteOrPairMatcher(singles, pair), scanSse2<ByteOrPairMatcher>);
}

std::size_t findPairOfSetsSse2(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                               const NibbleSet& seconds)
{
    return find(bytes, PairOfSetsMatcher(firsts, seconds), scanSse2<PairOfSetsMatcher>);
}

bool hasAvx2()
{
#ifdef TORV_LOADER_KNOWS_PROCESSOR
    // What the loader found out. To ask the processor once more is slow on virtual machines.
    return CPU_FEATURE_ACTIVE(AVX2);
#else
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
#endif
}

std::size_t findPairAvx2(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs)
{
    return find(bytes, PairMatcher(pairs), scanAvx2<PairMatcher<2>>);
}

std::size_t findByteOrPairAvx2(std::span<const std::uint8_t> bytes,
                               const std::array<std::uint8_t, 2>& singles, BytePair pair)
{
    return find(bytes, ByteOrPairMatcher(singles, pair), scanAvx2<ByteOrPairMatcher>);
}

std::size_t findPairOfSetsAvx2(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                               const NibbleSet& seconds)
{
    return find(bytes, PairOfSetsMatcher(firsts, seconds), scanAvx2<PairOfSetsMatcher>);
}

#endif

} // namespace BytePairsKernels

std::size_t findPair(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs)
{
#if defined(__x86_64__)
    static const bool wide = BytePairsKernels::hasAvx2();

    return wide ? BytePairsKernels::findPairAvx2(bytes, pairs) : BytePairsKernels::findPairSse2(bytes, pairs);
#else
    return BytePairsKernels::findPairPortable(bytes, pairs);
#endif
}

std::size_t findByteOrPair(std::span<const std::uint8_t> bytes, const std::array<std::uint8_t, 2>& singles,
                           BytePair pair)
{
#if defined(__x86_64__)
    static const bool wide = BytePairsKernels::hasAvx2();

    return wide ? BytePairsKernels::findByteOrPairAvx2(bytes, singles, pair)
                : BytePairsKernels::findByteOrPairSse2(bytes, singles, pair);
#else
    return BytePairsKernels::findByteOrPairPortable(bytes, singles, pair);
#endif
}

std::size_t findPairOfSets(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                           const NibbleSet& seconds)
{
#if defined(__x86_64__)
    static const bool wide = BytePairsKernels::hasAvx2();

    return wide ? BytePairsKernels::findPairOfSetsAvx2(bytes, firsts, seconds)
                : BytePairsKernels::findPairOfSetsSse2(bytes, firsts, seconds);
#else
    return BytePairsKernels::findPairOfSetsPortable(bytes, firsts, seconds);
#endif
}

} // namespace Torv
