#include "worker/Converter.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <mupdf/pdf.h>
#include <string_view>

#include "JobParser/JobFile.h"
#include "worker/BodyReader.h"
#include "worker/OutputFolder.h"
#include "worker/PageSource.h"
#include "worker/PictureWriter.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

constexpr std::uint32_t usualDpi = 150;
constexpr std::uint32_t mostDpi = 2400;
constexpr double pointsPerInch = 72;

struct PixelSize {
    int width = 1;
    int height = 1;
};

bool isPaintedLanguage(Pdl pdl)
{
    return pdl == Pdl::Pcl5 || pdl == Pdl::PostScript || pdl == Pdl::PclXl || pdl == Pdl::Pdf ||
           pdl == Pdl::Xps;
}

std::uint32_t dpiOf(const ConvertRequest& request)
{
    return request.dpi == 0 ? usualDpi : std::min(request.dpi, mostDpi);
}

// A box without a resolution is filled; with one, a picture is only made smaller.
double scaleFor(const ConvertRequest& request, double width, double height)
{
    double scale = dpiOf(request) / pointsPerInch;
    if (request.boxWidth == 0 && request.boxHeight == 0)
        return scale;
    double fit = 1e9;
    if (request.boxWidth != 0)
        fit = std::min(fit, request.boxWidth / width);
    if (request.boxHeight != 0)
        fit = std::min(fit, request.boxHeight / height);
    return request.dpi == 0 ? fit : std::min(fit, scale);
}

PixelSize pixelsFor(const ConvertRequest& request, double width, double height)
{
    constexpr double mostPixels = 4e8;
    const double scale = scaleFor(request, width, height);
    if (width * scale * height * scale > mostPixels)
        throw WorkerException(ErrorCode::Limit, "The picture would be too large");
    const auto side = [&](double points, std::uint32_t box) {
        const std::int64_t pixels = std::max(1L, std::lround(points * scale));
        return static_cast<int>(box == 0 ? pixels : std::min(pixels, std::int64_t{box}));
    };
    return {side(width, request.boxWidth), side(height, request.boxHeight)};
}

/// Renders a page as request wants pictures. The pixmap is the caller's.
FitzPixmap render(fz_context* context, fz_page* page, const ConvertRequest& request)
{
    fz_rect box = fz_empty_rect;
    Fitz::protect(context, [&] { box = fz_bound_page(context, page); });
    const double width = std::max(1.0F, box.x1 - box.x0);
    const double height = std::max(1.0F, box.y1 - box.y0);
    const PixelSize size = pixelsFor(request, width, height);
    const fz_matrix matrix = fz_pre_translate(
        fz_scale(static_cast<float>(size.width / width), static_cast<float>(size.height / height)), -box.x0,
        -box.y0);
    fz_pixmap* pixmap = nullptr;
    Fitz::protect(context, [&] {
        fz_colorspace* space = request.forceMono ? fz_device_gray(context) : fz_device_rgb(context);
        pixmap = fz_new_pixmap(context, space, size.width, size.height, nullptr, 0);
    });
    FitzPixmap handle(context, pixmap);
    fz_device* device = nullptr;
    Fitz::protect(context, [&] {
        fz_clear_pixmap_with_value(context, pixmap, 0xFF);
        device = fz_new_draw_device(context, matrix, pixmap);
    });
    const FitzDevice deviceHandle(context, device);
    Fitz::protect(context, [&] {
        pdf_page* pdfPage = pdf_page_from_fz_page(context, page);
        if (pdfPage != nullptr)
            pdf_run_page_with_usage(context, pdfPage, device, fz_identity, "Print", nullptr);
        else
            fz_run_page(context, page, device, fz_identity, nullptr);
        fz_close_device(context, device);
    });
    return handle;
}

Picture pictureOf(const fz_pixmap* pixmap, const ConvertRequest& request)
{
    return {pixmap->samples, pixmap->w, pixmap->h, pixmap->n, static_cast<int>(dpiOf(request))};
}

void requirePages(int count)
{
    if (count == 0)
        throw WorkerException(ErrorCode::BadDocument, "The job has no pages");
}

int writePictures(fz_context* context, const PageSource& pages, const ConvertRequest& request,
                  const std::string& path)
{
    int number = 0;
    pages.forEach(request.pageCount, [&](fz_document*, fz_page* page, int) {
        const FitzPixmap pixmap = render(context, page, request);
        const std::string file = numberedPath(path, ++number);
        if (request.format == ConversionFormat::Jpeg) {
            writeJpeg(pictureOf(pixmap.get(), request), file);
            return;
        }
        const char* name = file.c_str();
        const int dpi = static_cast<int>(dpiOf(request));
        Fitz::protect(context, [&] {
            fz_set_pixmap_resolution(context, pixmap.get(), dpi, dpi);
            fz_save_pixmap_as_png(context, pixmap.get(), name);
        });
    });
    requirePages(number);
    return number;
}

void writeTiff(fz_context* context, const PageSource& pages, const ConvertRequest& request,
               const std::string& path)
{
    TiffWriter writer(path);
    const int count = pages.forEach(request.pageCount, [&](fz_document*, fz_page* page, int) {
        const FitzPixmap pixmap = render(context, page, request);
        writer.add(pictureOf(pixmap.get(), request));
    });
    requirePages(count);
    writer.close();
}

void writeText(fz_context* context, const PageSource& pages, const ConvertRequest& request,
               const std::string& path)
{
    fz_output* output = nullptr;
    Fitz::protect(context, [&] { output = fz_new_output_with_path(context, path.c_str(), 0); });
    const FitzHandle<fz_output, fz_drop_output> handle(context, output);
    bool isFirst = true;
    const int count = pages.forEach(request.pageCount, [&](fz_document*, fz_page* page, int) {
        fz_stext_page* text = nullptr;
        Fitz::protect(context, [&] { text = fz_new_stext_page_from_page(context, page, nullptr); });
        const FitzHandle<fz_stext_page, fz_drop_stext_page> textHandle(context, text);
        Fitz::protect(context, [&] {
            if (!isFirst)
                fz_write_byte(context, output, '\f');
            fz_print_stext_page_as_text(context, output, text);
        });
        isFirst = false;
    });
    requirePages(count);
    Fitz::protect(context, [&] { fz_close_output(context, output); });
}

/// Writes one document of pages of several.
class PdfMaker
{
public:
    explicit PdfMaker(fz_context* context) : m_context(context), m_document(context, create(context)) {}

    void add(fz_document* document, fz_page* page, int index)
    {
        pdf_document* target = m_document.get();
        pdf_document* source = nullptr;
        Fitz::protect(m_context, [&] { source = pdf_document_from_fz_document(m_context, document); });
        if (source == nullptr) {
            addPainted(page);
            return;
        }
        if (source != m_source) {
            m_source = source;
            pdf_graft_map* map = nullptr;
            Fitz::protect(m_context, [&] { map = pdf_new_graft_map(m_context, target); });
            m_map = std::make_unique<Map>(m_context, map);
        }
        pdf_graft_map* map = m_map->get();
        Fitz::protect(m_context, [&] { pdf_graft_mapped_page(m_context, map, -1, source, index); });
    }

    void save(const std::string& path)
    {
        const char* name = path.c_str();
        Fitz::protect(m_context, [&] {
            pdf_write_options options = pdf_default_write_options;
            options.do_garbage = 1;
            options.do_compress = 1;
            pdf_save_document(m_context, m_document.get(), name, &options);
        });
    }

private:
    using Map = FitzHandle<pdf_graft_map, pdf_drop_graft_map>;

    static pdf_document* create(fz_context* context)
    {
        pdf_document* document = nullptr;
        Fitz::protect(context, [&] { document = pdf_create_document(context); });
        return document;
    }

    void addPainted(fz_page* page)
    {
        pdf_document* target = m_document.get();
        Fitz::protect(m_context, [&] {
            const fz_rect box = fz_bound_page(m_context, page);
            pdf_obj* resources = nullptr;
            fz_buffer* contents = nullptr;
            fz_device* device = pdf_page_write(m_context, target, box, &resources, &contents);
            fz_run_page(m_context, page, device, fz_identity, nullptr);
            fz_close_device(m_context, device);
            fz_drop_device(m_context, device);
            pdf_obj* object = pdf_add_page(m_context, target, box, 0, resources, contents);
            pdf_insert_page(m_context, target, -1, object);
            pdf_drop_obj(m_context, object);
            pdf_drop_obj(m_context, resources);
            fz_drop_buffer(m_context, contents);
        });
    }

    fz_context* m_context;
    FitzHandle<pdf_document, pdf_drop_document> m_document;
    pdf_document* m_source = nullptr;
    std::unique_ptr<Map> m_map;
};

void writePdf(fz_context* context, const PageSource& pages, const ConvertRequest& request,
              const std::string& path)
{
    PdfMaker maker(context);
    const int count = pages.forEach(request.pageCount, [&](fz_document* document, fz_page* page, int index) {
        maker.add(document, page, index);
    });
    requirePages(count);
    maker.save(path);
}

std::vector<std::string> grayOptions(bool forceMono)
{
    if (!forceMono)
        return {};
    return {"-sColorConversionStrategy=Gray", "-sProcessColorModel=DeviceGray"};
}

// Requests to convert do not tell the language, and documents may stand behind a few bytes of something else.
Pdl guessLanguage(JobFile& file)
{
    constexpr std::size_t longestJunk = 1024;
    const auto bytes = file.window();
    const std::string_view start(reinterpret_cast<const char*>(bytes.data()),
                                 std::min(bytes.size(), longestJunk));
    if (start.find("%PDF-") != std::string_view::npos)
        return Pdl::Pdf;
    return start.find("%!") != std::string_view::npos ? Pdl::PostScript : Pdl::Unknown;
}

} // namespace

std::string Converter::outputPath() const
{
    return m_folder + OutputFolder::outputName;
}

int Converter::convert(const ConvertRequest& request, const Encryption& encryption)
{
    JobFile file;
    openJob(file, request.jobPath, encryption);
    PageSource pages(m_context, file, m_folder);
    bool isFound = false;
    for (const Body& body : BodyFinder(file, guessLanguage(file)).find()) {
        if (!isPaintedLanguage(body.pdl))
            continue;
        pages.add(body);
        isFound = true;
    }
    if (!isFound)
        throw WorkerException(ErrorCode::NoBody, "The file has no body in a language that is read here");
    return write(pages, request);
}

int Converter::write(PageSource& pages, const ConvertRequest& request)
{
    const std::string path = outputPath();
    const std::string wholePath = m_folder + "whole.pdf";
    switch (request.format) {
    case ConversionFormat::Png:
    case ConversionFormat::Jpeg: return writePictures(m_context, pages, request, path);
    case ConversionFormat::Tiff: writeTiff(m_context, pages, request, path); break;
    case ConversionFormat::Text: writeText(m_context, pages, request, path); break;
    case ConversionFormat::Pdf:
        if (!request.forceMono) {
            writePdf(m_context, pages, request, path);
        } else {
            writePdf(m_context, pages, request, wholePath);
            std::vector<std::string> options = grayOptions(true);
            options.insert(options.begin(), "-sDEVICE=pdfwrite");
            Ghostscript().convertFile(wholePath, options, path);
        }
        break;
    case ConversionFormat::PostScript: {
        writePdf(m_context, pages, request, wholePath);
        std::vector<std::string> options = grayOptions(request.forceMono);
        options.insert(options.begin(), "-sDEVICE=ps2write");
        Ghostscript().convertFile(wholePath, options, path);
        break;
    }
    }
    return 0;
}

} // namespace JobParser::Worker
