#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "worker/PageClass.h"

namespace JobParser::Worker
{

/// The colours that a PCL job has to choose from, by number.
class PclPalette
{
public:
    /// A colour, channels from 0 to 255.
    struct Color {
        std::uint8_t red = 0;
        std::uint8_t green = 0;
        std::uint8_t blue = 0;
    };

    /// What the three components of a colour that a job sets mean.
    enum class Space : std::uint8_t { Rgb, Cmy, Lab, Luminance };

    /// White and black.
    PclPalette();
    /// The fixed palettes of one plane, of three planes of light, and of three planes of ink (-3).
    static PclPalette ofPlanes(int planes);
    /// The default palette of as many colours as `bits` bits number, 1 to 8.
    static PclPalette ofBits(int bits, Space space);
    /// The default pens of HP-GL/2.
    static PclPalette ofPens(std::size_t count);

    std::size_t size() const { return m_colors.size(); }
    /// The colour of a number; numbers beyond the palette begin anew.
    Color color(std::size_t index) const;
    /// Sets a colour. Numbers beyond the palette do nothing.
    void set(std::size_t index, Color color);

    /// The class of a colour, as classOfRgb has it.
    PageClass classOf(std::size_t index, int tolerance) const;
    /// The greatest class of all.
    PageClass greatest(int tolerance) const;

private:
    explicit PclPalette(std::vector<Color> colors) : m_colors(std::move(colors)) {}

    std::vector<Color> m_colors; ///< Never empty.
};

/// The colour of three components, each as a part of what stands for the most, 0 to 1; of Lab from 0 to 100
/// and twice from -100 to 100, of luminance and chrominance like RGB.
PclPalette::Color colorOf(PclPalette::Space space, const std::array<double, 3>& components);

} // namespace JobParser::Worker
