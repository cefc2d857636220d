#pragma once

#include <algorithm>
#include <cstdint>

namespace JobParser::Worker
{

/// What is painted on a page, from least to most: a page is of the greatest class that anything on it has.
enum class PageClass : std::uint8_t {
    Blank, ///< Nothing, or white alone.
    Mono,  ///< Black and white alone.
    Gray,  ///< Shades of gray.
    Color, ///< Anything else.
};

/// The class of a colour with channels from 0 to 255. Channels that differ by at most `tolerance` are gray.
constexpr PageClass classOfRgb(int red, int green, int blue, int tolerance)
{
    const int least = std::min({red, green, blue});
    const int greatest = std::max({red, green, blue});
    if (greatest - least > tolerance)
        return PageClass::Color;
    if (least == 255)
        return PageClass::Blank;
    return greatest == 0 ? PageClass::Mono : PageClass::Gray;
}

} // namespace JobParser::Worker
