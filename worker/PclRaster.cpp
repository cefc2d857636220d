#include "worker/PclRaster.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "worker/PagePrinter.h"

namespace JobParser::Worker
{
namespace
{

// Which ink the n-th component of a description of inks is, by how many there are.
constexpr std::array<int, 1> blackInk{0};
constexpr std::array<int, 3> colorInks{1, 2, 3};
constexpr std::array<int, 6> allInks{0, 1, 2, 3, 4, 5};

std::span<const int> inksOf(std::size_t count)
{
    if (count == 1)
        return blackInk;
    if (count == 3)
        return colorInks;
    return std::span<const int>(allInks).first(std::min(count, allInks.size()));
}

int planesOf(unsigned levels)
{
    return std::clamp(static_cast<int>(std::bit_width(std::max(levels, 2U) - 1U)), 1, 4);
}

PclPalette::Space spaceOf(int number)
{
    switch (number) {
    case 1: return PclPalette::Space::Cmy;
    case 3: return PclPalette::Space::Lab;
    case 4: return PclPalette::Space::Luminance;
    default: return PclPalette::Space::Rgb;
    }
}

} // namespace

void PclRaster::setPlanes(int planes)
{
    const int count = std::abs(planes);
    const bool isKnown = count == 1 || count == 3 || planes == -4;
    m_planeCode = isKnown ? planes : 1;
    m_space = planes < 0 ? PclPalette::Space::Cmy : PclPalette::Space::Rgb;
    m_inkOfPlane.clear();
    m_pixels = Pixels::IndexedByPlane;
    m_bits = isKnown ? count : 1;
    if (planes == -4) {
        m_pixels = Pixels::Inks;
        m_inkOfPlane = {0, 1, 2, 3};
    }
    m_planes.assign(static_cast<std::size_t>(m_bits), {});
    m_plane = 0;
}

bool PclRaster::configure(std::span<const std::uint8_t> data)
{
    if (data.size() < 6)
        return false;
    const int encoding = data[1];
    const int indexBits = std::clamp<int>(data[2], 1, 8);
    const bool isPlanar = encoding == 0 || encoding == 2;
    m_space = spaceOf(data[0]);
    m_planeCode = 0;
    m_inkOfPlane.clear();
    m_bits = encoding == 2 ? 3 : indexBits;
    m_pixels = Pixels::IndexedByPlane;
    if (encoding == 1)
        m_pixels = Pixels::IndexedByPixel;
    else if (encoding == 3)
        m_pixels = Pixels::DirectByPixel;
    // One bit a primary is the fixed palette of three planes.
    if (encoding == 2)
        m_planeCode = m_space == PclPalette::Space::Cmy ? -3 : 3;
    m_planes.assign(isPlanar ? static_cast<std::size_t>(m_bits) : 1, {});
    m_plane = 0;
    return true;
}

void PclRaster::configureInks(std::span<const std::uint8_t> data)
{
    constexpr std::size_t headSize = 2;
    constexpr std::size_t inkSize = 6;
    constexpr std::uint8_t knownFormat = 2;
    if (data.size() < headSize || data[0] != knownFormat)
        return;
    const auto inks = inksOf(data[1]);
    std::vector<int> inkOfPlane;
    for (std::size_t i = 0; i < inks.size() && headSize + (i + 1) * inkSize <= data.size(); ++i) {
        const auto levels = data.subspan(headSize + i * inkSize + 4, 2);
        const int planes = planesOf((unsigned{levels[0]} << 8) | levels[1]);
        inkOfPlane.insert(inkOfPlane.end(), static_cast<std::size_t>(planes), inks[i]);
    }
    if (inkOfPlane.empty())
        return;
    m_inkOfPlane = std::move(inkOfPlane);
    m_pixels = Pixels::Inks;
    m_space = PclPalette::Space::Cmy;
    m_planes.assign(m_inkOfPlane.size(), {});
    m_plane = 0;
}

PclPalette PclRaster::defaultPalette() const
{
    if (m_planeCode != 0)
        return PclPalette::ofPlanes(m_planeCode);
    return m_pixels == Pixels::DirectByPixel ? PclPalette::ofBits(8, m_space)
                                             : PclPalette::ofBits(m_bits, m_space);
}

void PclRaster::setMode(int mode)
{
    switch (mode) {
    case 1: m_mode = RasterMode::RunLength; break;
    case 2: m_mode = RasterMode::PackBits; break;
    case 3: m_mode = RasterMode::DeltaRow; break;
    case 5: m_mode = RasterMode::Adaptive; break;
    case 9: m_mode = RasterMode::ReplacementDelta; break;
    default: m_mode = RasterMode::Plain; break;
    }
}

void PclRaster::clearRows()
{
    for (RasterRow& plane : m_planes)
        plane.clear();
    m_plane = 0;
}

void PclRaster::takePlane(std::span<const std::uint8_t> data)
{
    if (m_plane < m_planes.size())
        m_planes[m_plane].decode(m_mode, data);
    ++m_plane;
}

void PclRaster::takeRow(std::span<const std::uint8_t> data, const PclPalette& palette, PagePrinter& printer)
{
    if (m_mode == RasterMode::Adaptive) {
        takeAdaptive(data, palette, printer);
        return;
    }
    takePlane(data);
    // Planes that a row leaves out are empty.
    for (; m_plane < m_planes.size(); ++m_plane)
        m_planes[m_plane].clear();
    finishRow(palette, printer);
}

void PclRaster::takeAdaptive(std::span<const std::uint8_t> data, const PclPalette& palette,
                             PagePrinter& printer)
{
    constexpr std::size_t headSize = 3;
    constexpr std::uint8_t emptyRows = 4;
    while (data.size() >= headSize) {
        const std::uint8_t command = data[0];
        const std::size_t count = (std::size_t{data[1]} << 8) | data[2];
        data = data.subspan(headSize);
        if (command == emptyRows)
            clearRows();
        if (command > 3)
            continue;
        const auto row = data.first(std::min(count, data.size()));
        data = data.subspan(row.size());
        m_planes.front().decode(static_cast<RasterMode>(command), row);
        finishRow(palette, printer);
    }
}

void PclRaster::finishRow(const PclPalette& palette, PagePrinter& printer)
{
    m_plane = 0;
    printer.mark(classOfRow(palette));
}

PageClass PclRaster::greatest(const PclPalette& palette) const
{
    switch (m_pixels) {
    case Pixels::IndexedByPlane:
    case Pixels::IndexedByPixel: return palette.greatest(m_tolerance);
    case Pixels::DirectByPixel: return PageClass::Color;
    case Pixels::Inks: break;
    }
    const bool isBlackOnly = std::ranges::all_of(m_inkOfPlane, [](int ink) { return ink == 0; });
    return !isBlackOnly ? PageClass::Color : (m_inkOfPlane.size() > 1 ? PageClass::Gray : PageClass::Mono);
}

PageClass PclRaster::classOfRow(const PclPalette& palette) const
{
    switch (m_pixels) {
    case Pixels::IndexedByPlane: return classOfIndexedPlanes(palette);
    case Pixels::IndexedByPixel: return classOfPackedIndexes(palette);
    case Pixels::DirectByPixel: return classOfDirectPixels();
    case Pixels::Inks: break;
    }
    return classOfInks();
}

std::uint8_t PclRaster::byteOf(std::size_t plane, std::size_t at) const
{
    const auto bytes = m_planes[plane].bytes();
    return at < bytes.size() ? bytes[at] : std::uint8_t{0};
}

// Bytes of the longest plane, as far as they are within the width.
std::size_t PclRaster::usedBytes() const
{
    std::size_t used = 0;
    for (const RasterRow& plane : m_planes)
        used = std::max(used, plane.bytes().size());
    return m_width == 0 ? used : std::min(used, (m_width + 7) / 8);
}

std::uint8_t PclRaster::usedBits(std::size_t byte) const
{
    const std::size_t left = m_width - byte * 8;
    if (m_width == 0 || left >= 8)
        return 0xFF;
    return static_cast<std::uint8_t>(0xFF00U >> left);
}

PageClass PclRaster::classOfIndexedPlanes(const PclPalette& palette) const
{
    std::array<bool, 256> isUsed{};
    const std::size_t planes = std::min<std::size_t>(m_planes.size(), 8);
    const std::size_t size = usedBytes();
    for (std::size_t at = 0; at < size; ++at) {
        std::array<unsigned, 8> bytes{};
        unsigned any = 0;
        for (std::size_t plane = 0; plane < planes; ++plane)
            any |= bytes[plane] = byteOf(plane, at);
        const unsigned used = usedBits(at);
        if ((any & used) != used)
            isUsed[0] = true;
        for (unsigned bit = 0; bit < 8 && (any & used) != 0; ++bit) {
            std::size_t index = 0;
            for (std::size_t plane = 0; plane < planes; ++plane)
                index |= static_cast<std::size_t>((bytes[plane] >> bit) & 1U) << plane;
            if (((used >> bit) & 1U) != 0 && index != 0)
                isUsed[index] = true;
        }
    }
    PageClass greatest = PageClass::Blank;
    for (std::size_t index = 0; index < isUsed.size(); ++index) {
        if (isUsed[index])
            greatest = std::max(greatest, palette.classOf(index, m_tolerance));
    }
    return greatest;
}

PageClass PclRaster::classOfInks() const
{
    PageClass greatest = PageClass::Blank;
    const std::size_t size = usedBytes();
    for (std::size_t at = 0; at < size && greatest != PageClass::Color; ++at) {
        // Bits of each plane of an ink have to be the same for all three, or it is a colour.
        std::array<std::array<unsigned, 4>, 6> levels{};
        std::array<std::size_t, 6> count{};
        for (std::size_t plane = 0; plane < m_planes.size(); ++plane) {
            const auto ink = static_cast<std::size_t>(m_inkOfPlane[plane]);
            levels[ink][count[ink]++ % 4] = byteOf(plane, at) & usedBits(at);
        }
        const unsigned blackBits = levels[0][0] | levels[0][1] | levels[0][2] | levels[0][3];
        unsigned colored = 0;
        unsigned any = blackBits;
        bool isPartial = count[0] > 1 && blackBits != (levels[0][0] & levels[0][1]);
        for (std::size_t level = 0; level < 4; ++level) {
            colored |= (levels[1][level] ^ levels[2][level]) | (levels[1][level] ^ levels[3][level]);
            colored |= levels[4][level] | levels[5][level];
            any |= levels[1][level] | levels[2][level] | levels[3][level];
        }
        if ((colored & ~blackBits) != 0)
            greatest = PageClass::Color;
        else if (any != 0)
            greatest = std::max(greatest, isPartial ? PageClass::Gray : PageClass::Mono);
    }
    return greatest;
}

PageClass PclRaster::classOfPackedIndexes(const PclPalette& palette) const
{
    std::array<bool, 256> isUsed{};
    const auto bytes = m_planes.front().bytes();
    const auto bits = static_cast<unsigned>(std::bit_ceil(static_cast<unsigned>(m_bits)));
    const unsigned mask = (1U << bits) - 1U;
    const std::size_t perByte = 8 / bits;
    const std::size_t pixels =
        m_width == 0 ? bytes.size() * perByte : std::min(m_width, bytes.size() * perByte);
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        const auto place = static_cast<unsigned>(perByte - 1 - pixel % perByte);
        isUsed[(unsigned{bytes[pixel / perByte]} >> (place * bits)) & mask] = true;
    }
    PageClass greatest = PageClass::Blank;
    for (std::size_t index = 0; index < isUsed.size(); ++index) {
        if (isUsed[index])
            greatest = std::max(greatest, palette.classOf(index, m_tolerance));
    }
    return greatest;
}

PageClass PclRaster::classOfDirectPixels() const
{
    PageClass greatest = PageClass::Blank;
    const auto bytes = m_planes.front().bytes();
    const std::size_t pixels = m_width == 0 ? bytes.size() / 3 : std::min(m_width, bytes.size() / 3);
    for (std::size_t pixel = 0; pixel < pixels && greatest != PageClass::Color; ++pixel) {
        const auto c = bytes.subspan(pixel * 3, 3);
        PclPalette::Color color{c[0], c[1], c[2]};
        if (m_space == PclPalette::Space::Lab) {
            const auto signedPart = [](std::uint8_t byte) { return static_cast<std::int8_t>(byte); };
            color = colorOf(m_space, {c[0] / 2.55, signedPart(c[1]) / 1.28, signedPart(c[2]) / 1.28});
        } else if (m_space != PclPalette::Space::Rgb) {
            color = colorOf(m_space, {c[0] / 255.0, c[1] / 255.0, c[2] / 255.0});
        }
        greatest = std::max(greatest, classOfRgb(color.red, color.green, color.blue, m_tolerance));
    }
    return greatest;
}

} // namespace JobParser::Worker
