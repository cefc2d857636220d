#include "worker/PaintDevice.h"

#include <algorithm>

#include "worker/FitzColor.h"
#include "worker/ImageClassifier.h"

// MuPDF calls a device by a table of functions and leaves it by jumps, so that nothing here has a destructor.
// It keeps a stack of clips for its devices; this one adds how deep it is inside of something whose effect
// only pixels show.

namespace JobParser::Worker
{
namespace
{

struct PaintDevice {
    fz_device base;
    fz_rect page;
    int tolerance;
    fz_cookie* cookie;
    PaintResult* result;
    int maskDepth;  ///< Masks that are being drawn.
    int tileDepth;  ///< Tiles that are being drawn.
    int depth;      ///< Clips and groups that are open.
    int doubtDepth; ///< The outermost of them that makes doubtful what is painted; 0 if none does.
};

PaintDevice& paintDevice(fz_device* device)
{
    return *reinterpret_cast<PaintDevice*>(device);
}

void open(PaintDevice& device, bool isDoubtful)
{
    ++device.depth;
    if (isDoubtful && device.doubtDepth == 0)
        device.doubtDepth = device.depth;
}

void close(PaintDevice& device)
{
    if (device.doubtDepth == device.depth)
        device.doubtDepth = 0;
    --device.depth;
}

/// Whether something of this class would tell anything new.
bool matters(const PaintDevice& device, PageClass pageClass)
{
    const PaintResult& result = *device.result;
    const PageClass known =
        device.doubtDepth == 0 ? result.pageClass : std::max(result.pageClass, result.possible);
    return device.maskDepth == 0 && pageClass > known;
}

void raise(PaintDevice& device, PageClass pageClass)
{
    PaintResult& result = *device.result;
    PageClass& target = device.doubtDepth == 0 ? result.pageClass : result.possible;
    target = std::max(target, pageClass);
    if (result.pageClass == PageClass::Color)
        device.cookie->abort = 1;
}

bool isVisible(fz_context* context, PaintDevice& device, fz_rect box)
{
    if (device.tileDepth > 0)
        return true;
    const fz_rect seen = fz_intersect_rect(device.page, fz_device_current_scissor(context, &device.base));
    // A line without width is painted all the same.
    return box.x0 <= box.x1 && box.y0 <= box.y1 && box.x0 < seen.x1 && box.x1 > seen.x0 && box.y0 < seen.y1 &&
           box.y1 > seen.y0;
}

PageClass classOfPaint(fz_context* context, const PaintDevice& device, fz_colorspace* space,
                       const float* color, float alpha)
{
    return withAlpha(classOfColor(context, space, color, device.tolerance), alpha);
}

void fillPath(fz_context* context, fz_device* base, const fz_path* path, int, fz_matrix ctm,
              fz_colorspace* space, const float* color, float alpha, fz_color_params)
{
    PaintDevice& device = paintDevice(base);
    const PageClass pageClass = classOfPaint(context, device, space, color, alpha);
    if (matters(device, pageClass) && isVisible(context, device, fz_bound_path(context, path, nullptr, ctm)))
        raise(device, pageClass);
}

void strokePath(fz_context* context, fz_device* base, const fz_path* path, const fz_stroke_state* stroke,
                fz_matrix ctm, fz_colorspace* space, const float* color, float alpha, fz_color_params)
{
    PaintDevice& device = paintDevice(base);
    const PageClass pageClass = classOfPaint(context, device, space, color, alpha);
    if (matters(device, pageClass) && isVisible(context, device, fz_bound_path(context, path, stroke, ctm)))
        raise(device, pageClass);
}

bool isGlyphVisible(fz_context* context, PaintDevice& device, const fz_text_span& span, int index,
                    fz_matrix ctm)
{
    const fz_text_item& item = span.items[index];
    if (item.gid < 0)
        return false;
    fz_matrix matrix = span.trm;
    matrix.e = item.x;
    matrix.f = item.y;
    const fz_rect box = fz_bound_glyph(context, span.font, item.gid, fz_concat(matrix, ctm));
    return !fz_is_empty_rect(box) && isVisible(context, device, box);
}

bool isTextVisible(fz_context* context, PaintDevice& device, const fz_text* text, fz_matrix ctm)
{
    for (const fz_text_span* span = text->head; span != nullptr; span = span->next) {
        for (int i = 0; i < span->len; ++i) {
            if (isGlyphVisible(context, device, *span, i, ctm))
                return true;
        }
    }
    return false;
}

void takeText(fz_context* context, PaintDevice& device, const fz_text* text, fz_matrix ctm,
              PageClass pageClass)
{
    if (matters(device, pageClass) && isTextVisible(context, device, text, ctm))
        raise(device, pageClass);
}

void fillText(fz_context* context, fz_device* base, const fz_text* text, fz_matrix ctm, fz_colorspace* space,
              const float* color, float alpha, fz_color_params)
{
    PaintDevice& device = paintDevice(base);
    takeText(context, device, text, ctm, classOfPaint(context, device, space, color, alpha));
}

void strokeText(fz_context* context, fz_device* base, const fz_text* text, const fz_stroke_state*,
                fz_matrix ctm, fz_colorspace* space, const float* color, float alpha, fz_color_params)
{
    PaintDevice& device = paintDevice(base);
    takeText(context, device, text, ctm, classOfPaint(context, device, space, color, alpha));
}

struct ShadeColors {
    fz_colorspace* space;
    int tolerance;
    PageClass pageClass;
};

void takeVertex(fz_context* context, void* argument, fz_vertex*, const float* color)
{
    ShadeColors& colors = *static_cast<ShadeColors*>(argument);
    colors.pageClass =
        std::max(colors.pageClass, classOfColor(context, colors.space, color, colors.tolerance));
}

void ignoreTriangle(fz_context*, void*, fz_vertex*, fz_vertex*, fz_vertex*) {}

PageClass classOfShade(fz_context* context, PaintDevice& device, fz_shade* shade, fz_matrix ctm)
{
    ShadeColors colors{shade->colorspace, device.tolerance, PageClass::Blank};
    if (shade->use_background)
        takeVertex(context, &colors, nullptr, shade->background);
    if (shade->use_function) {
        for (const auto& color : shade->function)
            takeVertex(context, &colors, nullptr, color);
    } else {
        fz_process_shade(context, shade, ctm, device.page, takeVertex, ignoreTriangle, &colors);
    }
    return colors.pageClass;
}

void fillShade(fz_context* context, fz_device* base, fz_shade* shade, fz_matrix ctm, float alpha,
               fz_color_params)
{
    PaintDevice& device = paintDevice(base);
    if (!matters(device, PageClass::Color) ||
        !isVisible(context, device, fz_bound_shade(context, shade, ctm)))
        return;
    const PageClass pageClass = withAlpha(classOfShade(context, device, shade, ctm), alpha);
    if (matters(device, pageClass))
        raise(device, pageClass);
}

fz_rect boundOfImage(fz_matrix ctm)
{
    return fz_transform_rect(fz_unit_rect, ctm);
}

void fillImage(fz_context* context, fz_device* base, fz_image* image, fz_matrix ctm, float alpha,
               fz_color_params)
{
    PaintDevice& device = paintDevice(base);
    if (!matters(device, PageClass::Color) || !isVisible(context, device, boundOfImage(ctm)))
        return;
    ImageClassifier classifier(context, device.tolerance);
    const PageClass pageClass = withAlpha(classifier.classify(image), alpha);
    if (matters(device, pageClass))
        raise(device, pageClass);
}

void fillImageMask(fz_context* context, fz_device* base, fz_image* image, fz_matrix ctm, fz_colorspace* space,
                   const float* color, float alpha, fz_color_params)
{
    PaintDevice& device = paintDevice(base);
    const PageClass pageClass = classOfPaint(context, device, space, color, alpha);
    if (!matters(device, pageClass) || !isVisible(context, device, boundOfImage(ctm)))
        return;
    ImageClassifier classifier(context, device.tolerance);
    if (classifier.paints(image))
        raise(device, pageClass);
}

void clipPath(fz_context*, fz_device* base, const fz_path*, int, fz_matrix, fz_rect)
{
    open(paintDevice(base), false);
}

void clipStrokePath(fz_context*, fz_device* base, const fz_path*, const fz_stroke_state*, fz_matrix, fz_rect)
{
    open(paintDevice(base), false);
}

void clipText(fz_context*, fz_device* base, const fz_text*, fz_matrix, fz_rect)
{
    open(paintDevice(base), true);
}

void clipStrokeText(fz_context*, fz_device* base, const fz_text*, const fz_stroke_state*, fz_matrix, fz_rect)
{
    open(paintDevice(base), true);
}

void clipImageMask(fz_context*, fz_device* base, fz_image*, fz_matrix, fz_rect)
{
    open(paintDevice(base), true);
}

void popClip(fz_context*, fz_device* base)
{
    close(paintDevice(base));
}

void beginMask(fz_context*, fz_device* base, fz_rect, int, fz_colorspace*, const float*, fz_color_params)
{
    ++paintDevice(base).maskDepth;
}

void endMask(fz_context*, fz_device* base)
{
    PaintDevice& device = paintDevice(base);
    --device.maskDepth;
    // What follows is seen through the mask until the clip is taken away.
    open(device, true);
}

// These leave a colour a colour and white paper white.
bool isPlainBlending(int blendMode)
{
    return blendMode == FZ_BLEND_NORMAL || blendMode == FZ_BLEND_MULTIPLY || blendMode == FZ_BLEND_DARKEN;
}

void beginGroup(fz_context*, fz_device* base, fz_rect, fz_colorspace*, int, int, int blendMode, float alpha)
{
    open(paintDevice(base), !isPlainBlending(blendMode) || alpha < 1);
}

void endGroup(fz_context*, fz_device* base)
{
    close(paintDevice(base));
}

int beginTile(fz_context*, fz_device* base, fz_rect, fz_rect, float, float, fz_matrix, int)
{
    ++paintDevice(base).tileDepth;
    return 0;
}

void endTile(fz_context*, fz_device* base)
{
    --paintDevice(base).tileDepth;
}

void setCallbacks(fz_device& base)
{
    base.fill_path = fillPath;
    base.stroke_path = strokePath;
    base.clip_path = clipPath;
    base.clip_stroke_path = clipStrokePath;
    base.fill_text = fillText;
    base.stroke_text = strokeText;
    base.clip_text = clipText;
    base.clip_stroke_text = clipStrokeText;
    base.fill_shade = fillShade;
    base.fill_image = fillImage;
    base.fill_image_mask = fillImageMask;
    base.clip_image_mask = clipImageMask;
    base.pop_clip = popClip;
    base.begin_mask = beginMask;
    base.end_mask = endMask;
    base.begin_group = beginGroup;
    base.end_group = endGroup;
    base.begin_tile = beginTile;
    base.end_tile = endTile;
}

} // namespace

fz_device* newPaintDevice(fz_context* context, fz_rect page, int tolerance, fz_cookie& cookie,
                          PaintResult& result)
{
    auto* device = reinterpret_cast<PaintDevice*>(fz_new_device_of_size(context, sizeof(PaintDevice)));
    device->page = page;
    device->tolerance = tolerance;
    device->cookie = &cookie;
    device->result = &result;
    setCallbacks(device->base);
    return &device->base;
}

} // namespace JobParser::Worker
