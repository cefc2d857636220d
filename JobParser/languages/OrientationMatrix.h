#pragma once

#include <compare>
#include <cstdint>

namespace JobParser::PostScript
{

/// The first four numbers of a PostScript matrix `[a b c d e f]`, each reduced to its sign: -1, 0 or 1. They
/// tell how the matrix turns a page, and not how it scales or moves it.
struct OrientationMatrix {
    std::int8_t a;
    std::int8_t b;
    std::int8_t c;
    std::int8_t d;

    /// In the order of a, b, c, d.
    auto operator<=>(const OrientationMatrix&) const = default;
};

} // namespace JobParser::PostScript
