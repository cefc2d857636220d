#include "worker/PixelScan.h"

#include <algorithm>
#include <cstring>

namespace JobParser::Worker
{
namespace
{

constexpr std::size_t pixelSize = 3;
constexpr std::size_t blockSize = 24; // Three words hold eight pixels.

bool isPaper(const std::uint8_t* block)
{
    std::uint64_t words[3];
    std::memcpy(words, block, sizeof(words));
    return (words[0] & words[1] & words[2]) == ~std::uint64_t{0};
}

} // namespace

PageClass classOfRgbRow(const std::uint8_t* row, std::size_t count, int tolerance)
{
    PageClass greatest = PageClass::Blank;
    const std::uint8_t* end = row + count * pixelSize;
    while (row != end && greatest != PageClass::Color) {
        const auto left = static_cast<std::size_t>(end - row);
        if (left >= blockSize && isPaper(row)) {
            row += blockSize;
            continue;
        }
        const std::uint8_t* blockEnd = row + std::min(left, blockSize);
        for (; row != blockEnd; row += pixelSize)
            greatest = std::max(greatest, classOfRgb(row[0], row[1], row[2], tolerance));
    }
    return greatest;
}

} // namespace JobParser::Worker
