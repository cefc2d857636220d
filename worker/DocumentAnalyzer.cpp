#include "worker/DocumentAnalyzer.h"

#include <algorithm>
#include <cmath>
#include <mupdf/pdf.h>

#include "worker/BodyReader.h"
#include "worker/BodyStream.h"
#include "worker/PaintDevice.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

// Where only pixels tell what is seen, a page is rendered at this many dots an inch, as far as that does not
// make it larger than this many dots.
constexpr float pixelsPerInch = 100;
constexpr float mostPixels = 16.0F * 1024 * 1024;
constexpr float pointsPerInch = 72;

const char* typeOf(Pdl pdl)
{
    return pdl == Pdl::Xps ? "application/vnd.ms-xpsdocument" : "application/pdf";
}

float scaleFor(fz_rect box)
{
    const float scale = pixelsPerInch / pointsPerInch;
    const float pixels = (box.x1 - box.x0) * (box.y1 - box.y0) * scale * scale;
    return pixels <= mostPixels ? scale : scale * std::sqrt(mostPixels / pixels);
}

PageClass classOfPixmap(const fz_pixmap* pixmap, int tolerance)
{
    PageClass pageClass = PageClass::Blank;
    for (int y = 0; y < pixmap->h && pageClass != PageClass::Color; ++y) {
        const std::uint8_t* pixel = pixmap->samples + y * pixmap->stride;
        for (int x = 0; x < pixmap->w; ++x, pixel += pixmap->n)
            pageClass = std::max(pageClass, classOfRgb(pixel[0], pixel[1], pixel[2], tolerance));
    }
    return pageClass;
}

} // namespace

FitzDocument openDocument(fz_context* context, BodyReader& reader, Pdl pdl)
{
    fz_document* document = nullptr;
    Fitz::protect(context, [&] {
        fz_stream* stream = openBodyStream(context, reader);
        fz_try(context)
        {
            document = fz_open_document_with_stream(context, typeOf(pdl), stream);
        }
        fz_always(context)
        {
            fz_drop_stream(context, stream);
        }
        fz_catch(context)
        {
            fz_rethrow(context);
        }
    });
    FitzDocument handle(context, document);
    int needsPassword = 0;
    Fitz::protect(context, [&] { needsPassword = fz_needs_password(context, document); });
    if (needsPassword != 0)
        throw WorkerException(ErrorCode::BadDocument, "The document wants a password");
    return handle;
}

int countPages(fz_context* context, const FitzDocument& document)
{
    int count = 0;
    Fitz::protect(context, [&] { count = fz_count_pages(context, document.get()); });
    return count;
}

FitzPage loadPage(fz_context* context, const FitzDocument& document, int index)
{
    fz_page* page = nullptr;
    Fitz::protect(context, [&] { page = fz_load_page(context, document.get(), index); });
    return {context, page};
}

JobFacts DocumentAnalyzer::analyze(BodyReader& reader, Pdl pdl)
{
    const FitzDocument document = openDocument(m_context, reader, pdl);
    const int count = countPages(m_context, document);
    JobFacts facts;
    for (int i = 0; i < count; ++i) {
        try {
            const FitzPage page = loadPage(m_context, document, i);
            fz_rect box = fz_empty_rect;
            Fitz::protect(m_context, [&] { box = fz_bound_page(m_context, page.get()); });
            facts.addPage(classOfPage(page.get(), box), pageSizeOfPoints(box.x1 - box.x0, box.y1 - box.y0));
        } catch (const WorkerException& error) {
            // A tree that claims more pages than it has ends where they end.
            if (error.code() == static_cast<int>(ErrorCode::Limit) || facts.pageCount() == 0)
                throw;
            break;
        }
    }
    if (facts.pageCount() == 0)
        throw WorkerException(ErrorCode::BadDocument, "The document has no pages");
    return facts;
}

PageClass DocumentAnalyzer::classOfPage(fz_page* page, fz_rect box)
{
    PaintResult result;
    fz_cookie cookie{};
    fz_device* device = nullptr;
    Fitz::protect(m_context, [&] { device = newPaintDevice(m_context, box, m_tolerance, cookie, result); });
    const FitzDevice handle(m_context, device);
    try {
        runPage(page, device, fz_identity, cookie);
        Fitz::protect(m_context, [&] { fz_close_device(m_context, device); });
    } catch (const WorkerException& error) {
        // A page is printed up to the place where it is malformed.
        if (error.code() == static_cast<int>(ErrorCode::Limit))
            throw;
    }
    if (result.possible <= result.pageClass)
        return result.pageClass;
    return std::max(result.pageClass, classOfPixels(page, box));
}

PageClass DocumentAnalyzer::classOfPixels(fz_page* page, fz_rect box)
{
    const float scale = scaleFor(box);
    const fz_matrix matrix = fz_pre_translate(fz_scale(scale, scale), -box.x0, -box.y0);
    const fz_irect area = fz_round_rect(fz_transform_rect(box, matrix));
    fz_pixmap* pixmap = nullptr;
    Fitz::protect(m_context, [&] {
        // Edges between black and white must not turn gray.
        fz_set_aa_level(m_context, 0);
        pixmap = fz_new_pixmap_with_bbox(m_context, fz_device_rgb(m_context), area, nullptr, 0);
    });
    const FitzPixmap pixels(m_context, pixmap);
    fz_device* device = nullptr;
    Fitz::protect(m_context, [&] {
        fz_clear_pixmap_with_value(m_context, pixmap, 0xFF);
        device = fz_new_draw_device(m_context, matrix, pixmap);
    });
    const FitzDevice handle(m_context, device);
    fz_cookie cookie{};
    try {
        runPage(page, device, fz_identity, cookie);
        Fitz::protect(m_context, [&] { fz_close_device(m_context, device); });
    } catch (const WorkerException& error) {
        if (error.code() == static_cast<int>(ErrorCode::Limit))
            throw;
    }
    return classOfPixmap(pixmap, m_tolerance);
}

void DocumentAnalyzer::runPage(fz_page* page, fz_device* device, fz_matrix matrix, fz_cookie& cookie)
{
    Fitz::protect(m_context, [&] {
        // Of a PDF what is printed, which is not all that is shown.
        pdf_page* pdfPage = pdf_page_from_fz_page(m_context, page);
        if (pdfPage != nullptr)
            pdf_run_page_with_usage(m_context, pdfPage, device, matrix, "Print", &cookie);
        else
            fz_run_page(m_context, page, device, matrix, &cookie);
    });
}

} // namespace JobParser::Worker
