#include "worker/PclPalette.h"

#include <algorithm>
#include <cmath>

namespace JobParser::Worker
{
namespace
{

using Color = PclPalette::Color;

constexpr Color black{0, 0, 0};
constexpr Color white{255, 255, 255};
constexpr Color red{255, 0, 0};
constexpr Color green{0, 255, 0};
constexpr Color blue{0, 0, 255};
constexpr Color cyan{0, 255, 255};
constexpr Color magenta{255, 0, 255};
constexpr Color yellow{255, 255, 0};

constexpr std::array<Color, 2> monoColors{white, black};
constexpr std::array<Color, 8> lightColors{black, red, green, yellow, blue, magenta, cyan, white};
constexpr std::array<Color, 8> inkColors{white, cyan, magenta, blue, yellow, green, red, black};
constexpr std::array<Color, 8> penColors{white, black, red, green, yellow, blue, magenta, cyan};

std::uint8_t asByte(double part)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

} // namespace

PclPalette::PclPalette() : m_colors(monoColors.begin(), monoColors.end()) {}

PclPalette PclPalette::ofPlanes(int planes)
{
    if (planes == 3)
        return PclPalette({lightColors.begin(), lightColors.end()});
    if (planes == -3)
        return PclPalette({inkColors.begin(), inkColors.end()});
    return {};
}

PclPalette PclPalette::ofBits(int bits, Space space)
{
    const int used = std::clamp(bits, 1, 8);
    if (used == 1)
        return {};
    const auto& first = space == Space::Cmy ? inkColors : lightColors;
    std::vector<Color> colors(std::size_t{1} << used, black);
    if (used == 2)
        colors = {first[0], first[1], first[2], first[7]};
    else
        std::copy(first.begin(), first.end(), colors.begin());
    return PclPalette(std::move(colors));
}

PclPalette PclPalette::ofPens(std::size_t count)
{
    std::vector<Color> colors(std::max<std::size_t>(count, 2), black);
    std::copy_n(penColors.begin(), std::min(colors.size(), penColors.size()), colors.begin());
    return PclPalette(std::move(colors));
}

Color PclPalette::color(std::size_t index) const
{
    return m_colors[index % m_colors.size()];
}

void PclPalette::set(std::size_t index, Color color)
{
    if (index < m_colors.size())
        m_colors[index] = color;
}

PageClass PclPalette::classOf(std::size_t index, int tolerance) const
{
    const Color found = color(index);
    return classOfRgb(found.red, found.green, found.blue, tolerance);
}

PageClass PclPalette::greatest(int tolerance) const
{
    PageClass greatest = PageClass::Blank;
    for (std::size_t i = 0; i < m_colors.size(); ++i)
        greatest = std::max(greatest, classOf(i, tolerance));
    return greatest;
}

PclPalette::Color colorOf(PclPalette::Space space, const std::array<double, 3>& components)
{
    const auto& [first, second, third] = components;
    switch (space) {
    case PclPalette::Space::Rgb: return {asByte(first), asByte(second), asByte(third)};
    case PclPalette::Space::Cmy: return {asByte(1 - first), asByte(1 - second), asByte(1 - third)};
    case PclPalette::Space::Lab:
    case PclPalette::Space::Luminance: break;
    }
    // How far the two others are from neutral is all that matters.
    const bool isLab = space == PclPalette::Space::Lab;
    const double light = isLab ? first / 100 : first;
    const double a = isLab ? second / 100 : second;
    const double b = isLab ? third / 100 : third;
    return {asByte(light + a), asByte(light), asByte(light + b)};
}

} // namespace JobParser::Worker
