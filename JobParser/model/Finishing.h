#pragma once

#include <cstdint>

#include "JobParser/Export.h"

namespace JobParser
{

/// The value sets of the finishing groups of a record. The numbers are stored in records; a job may bring
/// numbers that have no name here, and they are kept as they are.
enum class Duplex : std::int32_t { OneSided = 0, LongEdge = 1, ShortEdge = 2 };

enum class Staple : std::int32_t {
    None = 0,
    LeftTop = 1,
    RightTop = 2,
    Two = 3,
    UnknownPosition = 100,
    DeviceDefault = 101,
};

enum class Punch : std::int32_t {
    None = 0,
    TwoHoles = 1,
    ThreeHoles = 2,
    FourHoles = 3,
    UnknownKind = 100,
    DriverDefault = 101,
};

/// Each value is a quarter turn further than the one before.
enum class Orientation : std::int32_t {
    Portrait = 0,
    Landscape = 1,
    ReversePortrait = 2,
    ReverseLandscape = 3
};

/// The orientation after a number of quarter turns, which may be negative; always 0 to 3.
JOBPARSER_EXPORT Orientation rotate90(Orientation o, int quarterTurns);

/// The bits that both numbers have. With Landscape: not 0 for the two landscape values.
constexpr int operator&(Orientation a, Orientation b)
{
    return static_cast<int>(a) & static_cast<int>(b);
}
constexpr int operator&(Orientation a, int b)
{
    return static_cast<int>(a) & b;
}

} // namespace JobParser
