#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Torv/BytePairs.h"

/// The forms of findPair, findByteOrPair and findPairOfSets, of which each chooses one. They all do the same;
/// they are named for tests.
namespace Torv::BytePairsKernels
{

/// A byte at a time; runs on every machine.
std::size_t findPairPortable(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs);
std::size_t findByteOrPairPortable(std::span<const std::uint8_t> bytes,
                                   const std::array<std::uint8_t, 2>& singles, BytePair pair);
std::size_t findPairOfSetsPortable(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                                   const NibbleSet& seconds);

#if defined(__x86_64__)
/// 64 bytes a round. Every machine of this kind has it.
std::size_t findPairSse2(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs);
std::size_t findByteOrPairSse2(std::span<const std::uint8_t> bytes,
                               const std::array<std::uint8_t, 2>& singles, BytePair pair);
std::size_t findPairOfSetsSse2(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                               const NibbleSet& seconds);

/// Whether this machine runs the forms for AVX2.
bool hasAvx2();

/// 128 bytes a round. To be called only where hasAvx2() is true.
std::size_t findPairAvx2(std::span<const std::uint8_t> bytes, const std::array<BytePair, 2>& pairs);
std::size_t findByteOrPairAvx2(std::span<const std::uint8_t> bytes,
                               const std::array<std::uint8_t, 2>& singles, BytePair pair);
std::size_t findPairOfSetsAvx2(std::span<const std::uint8_t> bytes, const NibbleSet& firsts,
                               const NibbleSet& seconds);
#endif

} // namespace Torv::BytePairsKernels
