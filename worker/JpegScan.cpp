#include "worker/JpegScan.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>

#include "worker/PixelScan.h"

namespace JobParser::Worker
{
namespace
{

/// libjpeg reports an error by not coming back.
struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf exit;
};

[[noreturn]] void leave(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<ErrorManager*>(info->err)->exit, 1);
}

void ignoreMessage(j_common_ptr, int) {}

/// What is read of a picture. Kept apart from the function that is jumped into.
struct Scan {
    jpeg_decompress_struct info;
    ErrorManager errors;
    JSAMPLE* row;
    PageClass greatest;
};

void readRows(Scan& scan, int tolerance, PageClass enough)
{
    jpeg_decompress_struct& info = scan.info;
    const bool isGray = info.num_components == 1;
    info.out_color_space = isGray ? JCS_GRAYSCALE : (info.num_components == 4 ? JCS_CMYK : JCS_RGB);
    info.do_fancy_upsampling = FALSE;
    jpeg_start_decompress(&info);
    const std::size_t width = info.output_width;
    scan.row = static_cast<JSAMPLE*>(std::malloc(width * static_cast<std::size_t>(info.output_components)));
    while (scan.row != nullptr && info.output_scanline < info.output_height && scan.greatest < enough) {
        JSAMPROW rows[1] = {scan.row};
        jpeg_read_scanlines(&info, rows, 1);
        if (info.output_components == 3) {
            scan.greatest = std::max(scan.greatest, classOfRgbRow(scan.row, width, tolerance));
        } else {
            for (std::size_t x = 0; x < width && scan.greatest < enough; ++x) {
                // Four inks stand inverted, as light.
                const JSAMPLE* p = scan.row + x * static_cast<std::size_t>(info.output_components);
                const PageClass pageClass =
                    isGray ? classOfRgb(p[0], p[0], p[0], tolerance)
                           : classOfRgb(p[0] * p[3] / 255, p[1] * p[3] / 255, p[2] * p[3] / 255, tolerance);
                scan.greatest = std::max(scan.greatest, pageClass);
            }
        }
    }
}

} // namespace

PageClass classOfJpeg(std::span<const std::uint8_t> data, int tolerance, PageClass enough)
{
    Scan scan{};
    scan.info.err = jpeg_std_error(&scan.errors.base);
    scan.errors.base.error_exit = leave;
    scan.errors.base.emit_message = ignoreMessage;
    if (setjmp(scan.errors.exit) == 0) {
        jpeg_create_decompress(&scan.info);
        jpeg_mem_src(&scan.info, data.data(), static_cast<unsigned long>(data.size()));
        if (jpeg_read_header(&scan.info, TRUE) == JPEG_HEADER_OK)
            readRows(scan, tolerance, enough);
    }
    std::free(scan.row);
    jpeg_destroy_decompress(&scan.info);
    return scan.greatest;
}

} // namespace JobParser::Worker
