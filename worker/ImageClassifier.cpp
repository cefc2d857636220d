#include "worker/ImageClassifier.h"

#include <algorithm>
#include <utility>

#include "worker/FitzColor.h"

namespace JobParser::Worker
{
namespace
{

// A row of a picture longer than this is nonsense.
constexpr std::size_t longestRow = std::size_t{1} << 28;

std::size_t rowSize(const fz_image* image)
{
    const std::size_t bits = static_cast<std::size_t>(image->w) * image->n * image->bpc;
    return (bits + 7) / 8;
}

unsigned sampleAt(const std::uint8_t* row, std::size_t index, int bits)
{
    if (bits == 8)
        return row[index];
    if (bits == 16)
        return (unsigned{row[index * 2]} << 8) | row[index * 2 + 1];
    const std::size_t bit = index * static_cast<std::size_t>(bits);
    const unsigned shift = 8U - static_cast<unsigned>(bits) - static_cast<unsigned>(bit % 8);
    return (unsigned{row[bit / 8]} >> shift) & ((1U << bits) - 1U);
}

bool hasRegularBits(int bits)
{
    return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
}

// What a sample stands for if the picture does not say: 0 to 1, and in Lab the ranges of MuPDF.
std::pair<float, float> usualRange(int component, bool isLab)
{
    if (!isLab)
        return {0, 1};
    return component == 0 ? std::pair(0.0F, 100.0F) : std::pair(-128.0F, 127.0F);
}

float decoded(const fz_image* image, int component, unsigned value, bool isLab)
{
    const float part = static_cast<float>(value) / static_cast<float>((1U << image->bpc) - 1U);
    auto [least, most] = usualRange(component, isLab);
    if (image->use_decode) {
        const float* decode = image->decode + std::ptrdiff_t{component} * 2;
        least = decode[0];
        most = decode[1];
    }
    return least + part * (most - least);
}

} // namespace

void ImageClassifier::raise(PageClass pageClass)
{
    m_class = std::max(m_class, pageClass);
}

PageClass ImageClassifier::classify(fz_image* image)
{
    m_class = PageClass::Blank;
    if (image->colorspace == nullptr)
        return PageClass::Mono;
    const bool isGray = fz_colorspace_type(m_context, image->colorspace) == FZ_COLORSPACE_GRAY;
    m_greatest = isGray ? PageClass::Gray : PageClass::Color;
    if (hasRows(image))
        readRows(image, false);
    else
        takePixmap(image);
    return m_class;
}

bool ImageClassifier::paints(fz_image* mask)
{
    m_class = PageClass::Blank;
    m_greatest = PageClass::Mono;
    if (!hasRows(mask) || mask->n != 1 || mask->bpc != 1)
        return true;
    readRows(mask, true);
    return m_class != PageClass::Blank;
}

// Whether the samples come out of a stream just as the picture says.
bool ImageClassifier::hasRows(fz_image* image) const
{
    const fz_compressed_buffer* buffer = fz_compressed_image_buffer(m_context, image);
    if (buffer == nullptr || !hasRegularBits(image->bpc) || image->w <= 0 || image->h <= 0)
        return false;
    switch (buffer->params.type) {
    case FZ_IMAGE_RAW:
    case FZ_IMAGE_FAX:
    case FZ_IMAGE_FLATE:
    case FZ_IMAGE_LZW:
    case FZ_IMAGE_RLD:
    case FZ_IMAGE_JBIG2: return true;
    case FZ_IMAGE_JPEG: return image->n == 3 && !image->invert_cmyk_jpeg;
    default: return false;
    }
}

void ImageClassifier::readRows(fz_image* image, bool isMask)
{
    const std::size_t size = rowSize(image);
    if (size > longestRow)
        fz_throw(m_context, FZ_ERROR_GENERIC, "A picture is too wide");
    const Form form = isMask ? Form::OneComponent : formOf(image);
    if (isMask)
        prepareStencil(image);
    else if (form == Form::OneComponent)
        prepareTable(image);
    fz_compressed_buffer* buffer = fz_compressed_image_buffer(m_context, image);
    fz_stream* stream = fz_open_compressed_buffer(m_context, buffer);
    std::uint8_t* row = nullptr;
    fz_var(row);
    fz_try(m_context)
    {
        row = static_cast<std::uint8_t*>(fz_malloc(m_context, size));
        for (int y = 0; y < image->h && m_class < m_greatest; ++y) {
            if (fz_read(m_context, stream, row, size) != size)
                break;
            takeRow(image, row, form);
        }
    }
    fz_always(m_context)
    {
        fz_free(m_context, row);
        fz_drop_stream(m_context, stream);
    }
    fz_catch(m_context)
    {
        // What is cut off or corrupt shows as far as it was read.
        if (fz_caught(m_context) == FZ_ERROR_MEMORY)
            fz_rethrow(m_context);
    }
}

bool ImageClassifier::usesPlainValues(const fz_image* image) const
{
    return image->bpc == 8 && !image->use_decode && !image->use_colorkey;
}

ImageClassifier::Form ImageClassifier::formOf(const fz_image* image) const
{
    const auto type = fz_colorspace_type(m_context, image->colorspace);
    const bool isPlain = usesPlainValues(image);
    if (isPlain && type == FZ_COLORSPACE_GRAY && image->n == 1)
        return Form::Gray8;
    if (isPlain && type == FZ_COLORSPACE_RGB && image->n == 3)
        return Form::Rgb8;
    if (isPlain && type == FZ_COLORSPACE_CMYK && image->n == 4)
        return Form::Cmyk8;
    if (image->n == 1 && image->bpc <= 8)
        return Form::OneComponent;
    return Form::General;
}

// The value 0 of a stencil lets paint through.
void ImageClassifier::prepareStencil(const fz_image* mask)
{
    const bool isInverted = mask->use_decode && mask->decode[0] > mask->decode[1];
    m_table[0] = isInverted ? PageClass::Blank : PageClass::Mono;
    m_table[1] = isInverted ? PageClass::Mono : PageClass::Blank;
}

void ImageClassifier::prepareTable(const fz_image* image)
{
    const bool isIndexed = fz_colorspace_type(m_context, image->colorspace) == FZ_COLORSPACE_INDEXED;
    for (unsigned value = 0; value < (1U << image->bpc); ++value) {
        if (image->use_colorkey && isKeyedOut(image, &value)) {
            m_table[value] = PageClass::Blank;
        } else if (isIndexed) {
            m_table[value] = classOfEntry(image, value);
        } else {
            float components[FZ_MAX_COLORS] = {};
            components[0] = decoded(image, 0, value, false);
            m_table[value] = classOfColor(m_context, image->colorspace, components, m_tolerance);
        }
    }
}

// The colour that the palette has for a value.
PageClass ImageClassifier::classOfEntry(const fz_image* image, unsigned value) const
{
    const auto& palette = image->colorspace->u.indexed;
    const float index = image->use_decode ? decoded(image, 0, value, false) : static_cast<float>(value);
    const int entry = std::clamp(static_cast<int>(index), 0, palette.high);
    const int n = fz_colorspace_n(m_context, palette.base);
    const bool isLab = fz_colorspace_type(m_context, palette.base) == FZ_COLORSPACE_LAB;
    float components[FZ_MAX_COLORS] = {};
    for (int i = 0; i < n; ++i) {
        const auto [least, most] = usualRange(i, isLab);
        components[i] = least + static_cast<float>(palette.lookup[entry * n + i]) * (most - least) / 255;
    }
    return classOfColor(m_context, palette.base, components, m_tolerance);
}

void ImageClassifier::takeRow(const fz_image* image, const std::uint8_t* row, Form form)
{
    switch (form) {
    case Form::Gray8: takeGrays(row, image->w); break;
    case Form::Rgb8: takeRgb(row, image->w); break;
    case Form::Cmyk8: takeCmyk(row, image->w); break;
    case Form::OneComponent: takeTable(image, row); break;
    case Form::General: takeGeneral(image, row); break;
    }
}

void ImageClassifier::takeGrays(const std::uint8_t* row, int count)
{
    for (int i = 0; i < count && m_class < m_greatest; ++i) {
        if (row[i] != 255)
            raise(row[i] == 0 ? PageClass::Mono : PageClass::Gray);
    }
}

void ImageClassifier::takeRgb(const std::uint8_t* row, int count)
{
    for (int i = 0; i < count && m_class < m_greatest; ++i, row += 3) {
        if ((row[0] & row[1] & row[2]) != 255)
            raise(classOfRgb(row[0], row[1], row[2], m_tolerance));
    }
}

void ImageClassifier::takeCmyk(const std::uint8_t* row, int count)
{
    for (int i = 0; i < count && m_class < m_greatest; ++i, row += 4) {
        if ((row[0] | row[1] | row[2] | row[3]) == 0)
            continue;
        const auto channel = [&](int ink) { return 255 - std::min(255, row[ink] + row[3]); };
        raise(classOfRgb(channel(0), channel(1), channel(2), m_tolerance));
    }
}

void ImageClassifier::takeTable(const fz_image* image, const std::uint8_t* row)
{
    const auto count = static_cast<std::size_t>(image->w);
    std::size_t i = 0;
    if (image->bpc == 1) {
        // Whole bytes of paper make up most of a page.
        const int paper = m_table[0] == PageClass::Blank ? 0 : (m_table[1] == PageClass::Blank ? 255 : -1);
        while (i + 8 <= count && row[i / 8] == paper)
            i += 8;
    }
    for (; i < count && m_class < m_greatest; ++i)
        raise(m_table[sampleAt(row, i, image->bpc)]);
}

void ImageClassifier::takeGeneral(const fz_image* image, const std::uint8_t* row)
{
    unsigned values[FZ_MAX_COLORS] = {};
    unsigned former[FZ_MAX_COLORS] = {};
    const int n = std::min<int>(image->n, FZ_MAX_COLORS);
    const bool isLab = fz_colorspace_type(m_context, image->colorspace) == FZ_COLORSPACE_LAB;
    for (int x = 0; x < image->w && m_class < m_greatest; ++x) {
        const std::size_t first = static_cast<std::size_t>(x) * image->n;
        for (int i = 0; i < n; ++i)
            values[i] = sampleAt(row, first + static_cast<std::size_t>(i), image->bpc);
        if (x > 0 && std::equal(values, values + n, former))
            continue;
        std::copy(values, values + n, former);
        if (image->use_colorkey && isKeyedOut(image, values))
            continue;
        float components[FZ_MAX_COLORS] = {};
        for (int i = 0; i < n; ++i)
            components[i] = decoded(image, i, values[i], isLab);
        raise(classOfColor(m_context, image->colorspace, components, m_tolerance));
    }
}

bool ImageClassifier::isKeyedOut(const fz_image* image, const unsigned* values) const
{
    for (int i = 0; i < image->n; ++i) {
        const int value = static_cast<int>(values[i]);
        if (value < image->colorkey[i * 2] || value > image->colorkey[i * 2 + 1])
            return false;
    }
    return true;
}

// Whole pictures of formats that MuPDF decodes at once.
void ImageClassifier::takePixmap(fz_image* image)
{
    fz_pixmap* decodedImage = fz_get_unscaled_pixmap_from_image(m_context, image);
    fz_pixmap* rgb = nullptr;
    fz_var(rgb);
    fz_try(m_context)
    {
        rgb = fz_convert_pixmap(m_context, decodedImage, fz_device_rgb(m_context), nullptr, nullptr,
                                fz_default_color_params, 1);
        const int n = rgb->n;
        for (int y = 0; y < rgb->h && m_class < m_greatest; ++y) {
            const std::uint8_t* pixel = rgb->samples + y * rgb->stride;
            for (int x = 0; x < rgb->w && m_class < m_greatest; ++x, pixel += n) {
                if (!rgb->alpha || pixel[n - 1] != 0)
                    raise(classOfRgb(pixel[0], pixel[1], pixel[2], m_tolerance));
            }
        }
    }
    fz_always(m_context)
    {
        fz_drop_pixmap(m_context, rgb);
        fz_drop_pixmap(m_context, decodedImage);
    }
    fz_catch(m_context)
    {
        fz_rethrow(m_context);
    }
}

} // namespace JobParser::Worker
