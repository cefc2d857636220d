#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <type_traits>

namespace Torv
{

/// Takes over a struct that grew at its end from version to version, from a caller of any version.
///
/// The struct begins with a `std::size_t` that says how large the caller's is. `sizes` are those that it ever
/// had, the present one included. Members that the caller does not know keep what `result` says. False, with
/// `result` as it was, for a size that no version had: what stands there then is anybody's guess.
template <typename T> bool takeVersioned(const void* from, std::span<const std::size_t> sizes, T& result)
{
    static_assert(std::is_trivially_copyable_v<T> && std::is_standard_layout_v<T>);
    std::size_t size = 0;
    std::memcpy(&size, from, sizeof size);
    if (size > sizeof(T) || std::find(sizes.begin(), sizes.end(), size) == sizes.end())
        return false;
    std::memcpy(&result, from, size);
    return true;
}

} // namespace Torv
