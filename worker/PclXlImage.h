#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "worker/PageClass.h"
#include "worker/PclXlValue.h"

namespace JobParser::Worker
{

using PclXlAttributes = std::map<std::uint8_t, PclXlValue>;

/// A colour space of PCL XL, with a palette if the job gave one.
struct PclXlColorSpace {
    int space = 1;
    std::vector<std::uint8_t> palette; ///< Three bytes a colour, or one of a gray; empty if there is none.

    int components() const { return space == 1 ? 1 : 3; }
};

/// A picture or a raster pattern of PCL XL: how its pixels are made up, and what its blocks show.
class PclXlImage
{
public:
    PclXlImage(const PclXlAttributes& attributes, const PclXlColorSpace& space, int tolerance);

    /// Takes the data of one block, as the attributes of its operator describe it. Does nothing more once the
    /// picture shows `enough`.
    void takeBlock(const PclXlAttributes& attributes, std::span<const std::uint8_t> data, PageClass enough);

    PageClass pageClass() const { return m_class; }
    /// The greatest class that it can show.
    PageClass greatest() const;

private:
    std::size_t rowSize() const;
    void takeRows(std::span<const std::uint8_t> pixels);
    void takePackBits(std::span<const std::uint8_t> data);
    void takeDeltaRows(std::span<const std::uint8_t> data, std::size_t rows);
    void takeRow(std::span<const std::uint8_t> row);
    void takeSamples(std::span<const std::uint8_t> row);
    PageClass classOfValue(unsigned value) const;

    PclXlColorSpace m_space;
    int m_tolerance;
    bool m_isIndexed = false;
    int m_bits = 8; ///< Of a component.
    std::size_t m_width = 0;
    std::size_t m_padding = 4; ///< Rows are filled up to a multiple of as many bytes.
    PageClass m_class = PageClass::Blank;
    PageClass m_enough = PageClass::Color;
};

} // namespace JobParser::Worker
