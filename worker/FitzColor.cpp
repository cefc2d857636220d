#include "worker/FitzColor.h"

#include <algorithm>
#include <array>

namespace JobParser::Worker
{
namespace
{

// Channels are compared as the bytes that a printer gets.
int asByte(float value)
{
    const float limited = std::clamp(value, 0.0F, 1.0F);
    return static_cast<int>(limited * 255.0F + 0.5F);
}

PageClass classOfChannels(float red, float green, float blue, int tolerance)
{
    return classOfRgb(asByte(red), asByte(green), asByte(blue), tolerance);
}

} // namespace

PageClass classOfCmyk(float cyan, float magenta, float yellow, float black, int tolerance)
{
    return classOfChannels(1 - std::min(1.0F, cyan + black), 1 - std::min(1.0F, magenta + black),
                           1 - std::min(1.0F, yellow + black), tolerance);
}

PageClass classOfColor(fz_context* context, fz_colorspace* space, const float* components, int tolerance)
{
    const float* c = components;
    if (space == nullptr)
        return PageClass::Mono;
    switch (fz_colorspace_type(context, space)) {
    case FZ_COLORSPACE_GRAY: return classOfChannels(c[0], c[0], c[0], tolerance);
    case FZ_COLORSPACE_RGB:
    case FZ_COLORSPACE_BGR: return classOfChannels(c[0], c[1], c[2], tolerance);
    case FZ_COLORSPACE_CMYK: return classOfCmyk(c[0], c[1], c[2], c[3], tolerance);
    case FZ_COLORSPACE_LAB:
    case FZ_COLORSPACE_INDEXED:
    case FZ_COLORSPACE_SEPARATION:
    case FZ_COLORSPACE_NONE: break;
    }
    std::array<float, FZ_MAX_COLORS> rgb{};
    fz_convert_color(context, space, components, fz_device_rgb(context), rgb.data(), nullptr,
                     fz_default_color_params);
    return classOfChannels(rgb[0], rgb[1], rgb[2], tolerance);
}

PageClass withAlpha(PageClass pageClass, float alpha)
{
    if (alpha <= 0)
        return PageClass::Blank;
    return alpha < 1 && pageClass == PageClass::Mono ? PageClass::Gray : pageClass;
}

} // namespace JobParser::Worker
