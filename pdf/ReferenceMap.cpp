#include "pdf/ReferenceMap.h"

#include <chrono>
#include <cstdint>

namespace Pdf
{
namespace
{

// The steps of splitmix64, after which each bit of the result hangs on all bits of the value.
std::uint64_t mixed(std::uint64_t value)
{
    value += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31);
}

// The place of a variable and the time are as good as chance to who writes a file.
std::uint64_t seedOfProcess()
{
    static const std::uint64_t seed =
        mixed(reinterpret_cast<std::uintptr_t>(&seed) ^
              static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
    return seed;
}

} // namespace

std::size_t ReferenceHash::operator()(const Reference& reference) const noexcept
{
    const std::uint64_t both = std::uint64_t{reference.number} << 32 | reference.generation;
    return static_cast<std::size_t>(mixed(both ^ seedOfProcess()));
}

} // namespace Pdf
