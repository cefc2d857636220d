#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "worker/PageClass.h"
#include "worker/PclPalette.h"
#include "worker/RasterRow.h"

namespace JobParser::Worker
{

class PagePrinter;

/// The pictures of PCL 5: how their rows are made up, the rows themselves, and what they paint.
class PclRaster
{
public:
    explicit PclRaster(int tolerance) : m_tolerance(tolerance) { setPlanes(1); }

    /// Rows are made of planes of a fixed palette: 1, 3 of light, -3 of ink, -4 of ink with black first.
    void setPlanes(int planes);
    /// Takes the payload of `ESC * v # W`, which describes pixels and palette. False if it makes no sense.
    bool configure(std::span<const std::uint8_t> data);
    /// Takes the payload of `ESC * g # W`, which describes inks with several levels.
    void configureInks(std::span<const std::uint8_t> data);

    void setMode(int mode);
    /// Dots in a row; 0 if not told.
    void setWidth(int width) { m_width = width > 0 ? static_cast<std::size_t>(width) : 0; }

    /// Begins or ends a picture, or skips rows: the next row has an empty seed.
    void clearRows();

    /// Takes the data of a plane that is not the last one of its row, or of a row.
    void takePlane(std::span<const std::uint8_t> data);
    void takeRow(std::span<const std::uint8_t> data, const PclPalette& palette, PagePrinter& printer);

    /// The greatest class that a picture can show.
    PageClass greatest(const PclPalette& palette) const;

    PclPalette::Space space() const { return m_space; }
    /// Whether the palette is one of those that a job may change.
    PclPalette defaultPalette() const;

private:
    enum class Pixels : std::uint8_t { IndexedByPlane, IndexedByPixel, DirectByPixel, Inks };

    void takeAdaptive(std::span<const std::uint8_t> data, const PclPalette& palette, PagePrinter& printer);
    void finishRow(const PclPalette& palette, PagePrinter& printer);
    PageClass classOfRow(const PclPalette& palette) const;
    PageClass classOfIndexedPlanes(const PclPalette& palette) const;
    PageClass classOfInks() const;
    PageClass classOfPackedIndexes(const PclPalette& palette) const;
    PageClass classOfDirectPixels() const;
    std::size_t usedBytes() const;
    std::uint8_t usedBits(std::size_t byte) const;
    std::uint8_t byteOf(std::size_t plane, std::size_t at) const;

    int m_tolerance;
    Pixels m_pixels = Pixels::IndexedByPlane;
    PclPalette::Space m_space = PclPalette::Space::Rgb;
    int m_planeCode = 1; ///< As in setPlanes.
    int m_bits = 1;      ///< Of an index, or of a component.
    std::size_t m_width = 0;
    RasterMode m_mode = RasterMode::Plain;
    std::vector<RasterRow> m_planes;
    std::vector<int> m_inkOfPlane; ///< 0 black, 1 to 3 cyan, magenta, yellow, from 4 on light inks.
    std::size_t m_plane = 0;       ///< The one that comes next.
};

} // namespace JobParser::Worker
