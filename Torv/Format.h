#pragma once

#include <string>
#include <type_traits>

namespace Torv
{
namespace Detail
{

std::string formatArguments(const char* fmt, ...);

/// What goes through `...` for a value: an enumeration of its own class has no promotion there.
template <typename T> constexpr auto printable(T value)
{
    if constexpr (std::is_enum_v<T>)
        return static_cast<std::underlying_type_t<T>>(value);
    else
        return value;
}

template <typename T>
inline constexpr bool isPrintable = std::is_arithmetic_v<T> || std::is_enum_v<T> ||
                                    std::is_same_v<T, const char*> || std::is_same_v<T, char*>;

} // namespace Detail

/// Formats as printf does, whatever the length of the result and whatever the host's locale. `%I64d` and
/// `%I64X` stand for 64-bit decimal and hexadecimal. Strings go in NUL-terminated, so they end at a NUL.
template <typename... Args> std::string format(const char* fmt, Args... args)
{
    static_assert((Detail::isPrintable<Args> && ...), "printf takes numbers and C strings");
    return Detail::formatArguments(fmt, Detail::printable(args)...);
}

} // namespace Torv
