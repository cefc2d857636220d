#include "worker/PictureWriter.h"

#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>
#include <tiffio.h>

#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

constexpr int jpegQuality = 85;

/// libjpeg reports an error by not coming back.
struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf exit;
};

[[noreturn]] void leave(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<ErrorManager*>(info->err)->exit, 1);
}

void writeRows(jpeg_compress_struct& info, const Picture& picture, std::FILE* file)
{
    jpeg_stdio_dest(&info, file);
    info.image_width = static_cast<JDIMENSION>(picture.width);
    info.image_height = static_cast<JDIMENSION>(picture.height);
    info.input_components = picture.components;
    info.in_color_space = picture.components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, jpegQuality, TRUE);
    info.density_unit = 1;
    info.X_density = static_cast<UINT16>(picture.dpi);
    info.Y_density = static_cast<UINT16>(picture.dpi);
    jpeg_start_compress(&info, TRUE);
    const std::size_t stride =
        static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.components);
    while (info.next_scanline < info.image_height) {
        // libjpeg only reads through this pointer.
        JSAMPROW row = const_cast<JSAMPROW>(picture.pixels + info.next_scanline * stride);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
}

bool writeJpegTo(std::FILE* file, const Picture& picture)
{
    jpeg_compress_struct info{};
    ErrorManager errors{};
    info.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = leave;
    volatile bool isWritten = false;
    if (setjmp(errors.exit) == 0) {
        jpeg_create_compress(&info);
        writeRows(info, picture, file);
        isWritten = true;
    }
    jpeg_destroy_compress(&info);
    return isWritten;
}

[[noreturn]] void fail(const std::string& path)
{
    throw WorkerException(ErrorCode::NoFile, "Cannot write picture | path=" + path);
}

} // namespace

void writeJpeg(const Picture& picture, const std::string& path)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        fail(path);
    const bool isWritten = writeJpegTo(file, picture);
    if (std::fclose(file) != 0 || !isWritten)
        fail(path);
}

TiffWriter::TiffWriter(const std::string& path)
{
    // Failures are told by exceptions alone.
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    m_file = TIFFOpen(path.c_str(), "w");
    if (m_file == nullptr)
        fail(path);
}

TiffWriter::~TiffWriter()
{
    if (m_file != nullptr)
        TIFFClose(static_cast<TIFF*>(m_file));
}

void TiffWriter::add(const Picture& page)
{
    auto* file = static_cast<TIFF*>(m_file);
    TIFFSetField(file, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(page.width));
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(page.height));
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, page.components);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, page.components == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(file, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(file, TIFFTAG_XRESOLUTION, static_cast<float>(page.dpi));
    TIFFSetField(file, TIFFTAG_YRESOLUTION, static_cast<float>(page.dpi));
    TIFFSetField(file, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file, 0));
    const std::size_t stride =
        static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.components);
    std::vector<std::uint8_t> row(stride);
    for (int y = 0; y < page.height; ++y) {
        const std::uint8_t* source = page.pixels + static_cast<std::size_t>(y) * stride;
        row.assign(source, source + stride);
        if (TIFFWriteScanline(file, row.data(), static_cast<std::uint32_t>(y), 0) < 0)
            fail(TIFFFileName(file));
    }
    if (TIFFWriteDirectory(file) == 0)
        fail(TIFFFileName(file));
}

void TiffWriter::close()
{
    auto* file = static_cast<TIFF*>(m_file);
    m_file = nullptr;
    const bool isWritten = TIFFFlush(file) != 0;
    const std::string path = TIFFFileName(file);
    TIFFClose(file);
    if (!isWritten)
        fail(path);
}

} // namespace JobParser::Worker
