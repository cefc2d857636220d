#include "worker/PclXlImage.h"

#include <algorithm>

#include "worker/JpegScan.h"
#include "worker/PclXlFormat.h"
#include "worker/PixelScan.h"
#include "worker/RasterRow.h"

namespace JobParser::Worker
{
namespace
{

using namespace PclXl;

constexpr std::size_t widest = 1U << 20;

int integerOf(const PclXlAttributes& attributes, Attribute id, int otherwise)
{
    const auto found = attributes.find(id);
    return found == attributes.end() ? otherwise : found->second.integer();
}

int bitsOf(int depth)
{
    return depth == 0 ? 1 : (depth == 1 ? 4 : 8);
}

} // namespace

PclXlImage::PclXlImage(const PclXlAttributes& attributes, const PclXlColorSpace& space, int tolerance)
    : m_space(space), m_tolerance(tolerance)
{
    m_isIndexed = integerOf(attributes, ColorMapping, DirectPixel) == IndexedPixel;
    m_bits = bitsOf(integerOf(attributes, ColorDepth, 2));
    m_width = std::min(static_cast<std::size_t>(std::max(integerOf(attributes, SourceWidth, 0), 0)), widest);
}

PageClass PclXlImage::greatest() const
{
    if (m_isIndexed) {
        PageClass greatest = PageClass::Blank;
        for (unsigned value = 0; value < (1U << m_bits); ++value)
            greatest = std::max(greatest, classOfValue(value));
        return greatest;
    }
    if (m_space.components() == 3)
        return PageClass::Color;
    return m_bits == 1 ? PageClass::Mono : PageClass::Gray;
}

std::size_t PclXlImage::rowSize() const
{
    const auto components = static_cast<std::size_t>(m_isIndexed ? 1 : m_space.components());
    const std::size_t bytes = (m_width * components * static_cast<std::size_t>(m_bits) + 7) / 8;
    return (bytes + m_padding - 1) / m_padding * m_padding;
}

void PclXlImage::takeBlock(const PclXlAttributes& attributes, std::span<const std::uint8_t> data,
                           PageClass enough)
{
    m_enough = enough;
    m_padding = static_cast<std::size_t>(std::clamp(integerOf(attributes, PadBytesMultiple, 4), 1, 64));
    const int rows = std::max(integerOf(attributes, BlockHeight, 0), 0);
    if (m_class >= m_enough || rowSize() == 0)
        return;
    switch (integerOf(attributes, CompressMode, NoCompression)) {
    case RunLength: takePackBits(data); break;
    case Jpeg: m_class = std::max(m_class, classOfJpeg(data, m_tolerance, m_enough)); break;
    case DeltaRow: takeDeltaRows(data, static_cast<std::size_t>(rows)); break;
    default: takeRows(data); break;
    }
}

void PclXlImage::takeRows(std::span<const std::uint8_t> pixels)
{
    const std::size_t size = rowSize();
    for (; pixels.size() >= size && m_class < m_enough; pixels = pixels.subspan(size))
        takeRow(pixels.first(size));
}

// Runs go on over the ends of rows.
void PclXlImage::takePackBits(std::span<const std::uint8_t> data)
{
    const std::size_t size = rowSize();
    std::vector<std::uint8_t> row;
    row.reserve(size);
    const auto put = [&](std::uint8_t byte) {
        row.push_back(byte);
        if (row.size() == size) {
            takeRow(row);
            row.clear();
        }
    };
    for (std::size_t at = 0; at < data.size() && m_class < m_enough;) {
        const std::size_t control = data[at++];
        if (control < 128) {
            const std::size_t end = std::min(data.size(), at + control + 1);
            for (; at < end; ++at)
                put(data[at]);
        } else if (control > 128 && at < data.size()) {
            for (std::size_t i = 0; i < 257 - control; ++i)
                put(data[at]);
            ++at;
        }
    }
}

// Each row has its length in front, and the row before as its seed.
void PclXlImage::takeDeltaRows(std::span<const std::uint8_t> data, std::size_t rows)
{
    RasterRow row;
    const std::size_t size = rowSize();
    std::vector<std::uint8_t> whole(size);
    for (std::size_t i = 0; i < rows && data.size() >= 2 && m_class < m_enough; ++i) {
        const std::size_t length = std::size_t{data[0]} | (std::size_t{data[1]} << 8);
        data = data.subspan(2);
        const auto part = data.first(std::min(length, data.size()));
        data = data.subspan(part.size());
        row.decode(RasterMode::DeltaRow, part);
        std::ranges::fill(whole, std::uint8_t{0});
        const auto bytes = row.bytes().first(std::min(row.bytes().size(), size));
        std::ranges::copy(bytes, whole.begin());
        takeRow(whole);
    }
}

void PclXlImage::takeRow(std::span<const std::uint8_t> row)
{
    if (!m_isIndexed && m_bits == 8 && m_space.components() == 3)
        m_class = std::max(m_class, classOfRgbRow(row.data(), m_width, m_tolerance));
    else
        takeSamples(row);
}

void PclXlImage::takeSamples(std::span<const std::uint8_t> row)
{
    const auto components = static_cast<std::size_t>(m_isIndexed ? 1 : m_space.components());
    const auto bits = static_cast<std::size_t>(m_bits);
    const unsigned most = (1U << bits) - 1U;
    const auto sample = [&](std::size_t index) {
        const std::size_t bit = index * bits;
        return (unsigned{row[bit / 8]} >> (8 - bits - bit % 8)) & most;
    };
    for (std::size_t x = 0; x < m_width && m_class < m_enough; ++x) {
        if (components == 1) {
            m_class = std::max(m_class, classOfValue(sample(x)));
            continue;
        }
        const auto channel = [&](std::size_t i) { return static_cast<int>(sample(x * 3 + i) * 255 / most); };
        m_class = std::max(m_class, classOfRgb(channel(0), channel(1), channel(2), m_tolerance));
    }
}

PageClass PclXlImage::classOfValue(unsigned value) const
{
    const unsigned most = (1U << static_cast<unsigned>(m_bits)) - 1U;
    const auto components = static_cast<std::size_t>(m_space.components());
    if (!m_isIndexed) {
        const int gray = static_cast<int>(value * 255 / most);
        return classOfRgb(gray, gray, gray, m_tolerance);
    }
    const std::size_t at = value * components;
    if (at + components > m_space.palette.size())
        return PageClass::Blank;
    const std::uint8_t* color = m_space.palette.data() + at;
    if (components == 1)
        return classOfRgb(color[0], color[0], color[0], m_tolerance);
    return classOfRgb(color[0], color[1], color[2], m_tolerance);
}

} // namespace JobParser::Worker
