#include "worker/Converter.h"

#include <gtest/gtest.h>

#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/FileText.h"
#include "tests/support/JobBytes.h"
#include "tests/worker/InChild.h"
#include "tests/worker/PdfBytes.h"
#include "tests/worker/XpsBytes.h"
#include "worker/FitzContext.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

class ConverterTest : public testing::Test
{
protected:
    /// The number of files that are told, and what stands in the folder.
    int convert(const std::string& bytes, ConversionFormat format, const ConvertRequest& wishes = {})
    {
        ConvertRequest request = wishes;
        request.jobPath = directory.file("job", bytes);
        request.format = format;
        return std::stoi(inChild([&] {
            const FitzContext context;
            return std::to_string(
                Converter(context.get(), directory.path("")).convert(request, std::nullopt));
        }));
    }

    std::string output(const std::string& suffix = "") const
    {
        return fileText(directory.path("output" + suffix));
    }

    Torv::Test::TemporaryDirectory directory;
};

const std::string document = pdfOf({"1 0 0 rg 0 0 100 150 re f", "0 0 9 9 re f"});

TEST_F(ConverterTest, TellsHowManyFilesThereAre)
{
    EXPECT_EQ(convert(document, ConversionFormat::Pdf), 0);
    EXPECT_EQ(convert(document, ConversionFormat::Tiff), 0);
    EXPECT_EQ(convert(document, ConversionFormat::Text), 0);
    EXPECT_EQ(convert(document, ConversionFormat::PostScript), 0);
    EXPECT_EQ(convert(document, ConversionFormat::Png), 2);
    EXPECT_EQ(convert(document, ConversionFormat::Jpeg), 2);
}

/// The color of a pixel of a PNG of one byte or three a pixel, as hexadecimal digits.
std::string pixel(const std::string& path, int x, int y)
{
    const FitzContext context;
    std::string text;
    Fitz::protect(context.get(), [&] {
        fz_image* image = fz_new_image_from_file(context.get(), path.c_str());
        fz_pixmap* pixmap =
            fz_get_pixmap_from_image(context.get(), image, nullptr, nullptr, nullptr, nullptr);
        const unsigned char* at = pixmap->samples + y * pixmap->stride + x * pixmap->n;
        for (int i = 0; i < pixmap->n; ++i) {
            constexpr std::string_view digits = "0123456789ABCDEF";
            text += digits[at[i] >> 4];
            text += digits[at[i] & 15];
        }
        fz_drop_pixmap(context.get(), pixmap);
        fz_drop_image(context.get(), image);
    });
    return text;
}

TEST_F(ConverterTest, PaintsPicturesInColorOrShadesOfGray)
{
    ConvertRequest mono;
    mono.forceMono = true;

    convert(document, ConversionFormat::Png);
    EXPECT_EQ(pixel(directory.path("output-1"), 10, 600), "FF0000");
    EXPECT_EQ(pixel(directory.path("output-1"), 400, 10), "FFFFFF");
    EXPECT_EQ(pixel(directory.path("output-2"), 2, 620), "000000");

    convert(document, ConversionFormat::Png, mono);
    EXPECT_EQ(pixel(directory.path("output-1"), 10, 600), "4C");
    EXPECT_EQ(pixel(directory.path("output-1"), 400, 10), "FF");
}

TEST_F(ConverterTest, KeepsTheAspectWithinABoxOfEitherSide)
{
    ConvertRequest wide;
    wide.boxWidth = 40;
    ConvertRequest high;
    high.boxHeight = 30;
    ConvertRequest both;
    both.boxWidth = 10;
    both.boxHeight = 1000;
    const auto sizeOf = [&](const ConvertRequest& request) {
        convert(document, ConversionFormat::Png, request);
        const std::string bytes = output("-1");
        // Less than 256 pixels each way.
        return std::pair<int, int>(static_cast<std::uint8_t>(bytes.at(19)),
                                   static_cast<std::uint8_t>(bytes.at(23)));
    };

    EXPECT_EQ(sizeOf(wide), std::pair(40, 60));
    EXPECT_EQ(sizeOf(high), std::pair(20, 30));
    EXPECT_EQ(sizeOf(both), std::pair(10, 15));
}

TEST_F(ConverterTest, TakesTheFirstPagesOnly)
{
    ConvertRequest one;
    one.pageCount = 1;

    EXPECT_EQ(convert(document, ConversionFormat::Png, one), 1);
    EXPECT_EQ(convert(document, ConversionFormat::Text, one), 0);
    EXPECT_EQ(output().find('\f'), std::string::npos);
}

TEST_F(ConverterTest, PutsAllPagesIntoOneTiff)
{
    convert(document, ConversionFormat::Tiff);

    const std::string bytes = output();
    const auto number = [&](std::size_t at, std::size_t size) {
        std::size_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value |= std::size_t{static_cast<std::uint8_t>(bytes.at(at + i))} << (8 * i);
        return value;
    };
    int pages = 0;
    for (std::size_t at = number(4, 4); at != 0; at = number(at + 2 + 12 * number(at, 2), 4))
        ++pages;
    EXPECT_EQ(pages, 2);
}

TEST_F(ConverterTest, WritesTextAsUtf8)
{
    const std::string font = "/Font << /F << /Type /Font /Subtype /Type1 /BaseFont /Helvetica "
                             "/Encoding /WinAnsiEncoding >> >>";

    convert(pdfOf({"BT /F 12 Tf 9 9 Td (Gr\\374n) Tj ET"}, font), ConversionFormat::Text);

    EXPECT_EQ(output(), "Gr\xC3\xBCn\n\n");
}

TEST_F(ConverterTest, ReadsAllBodiesAndDocumentsBehindJunk)
{
    const JobBytes job = JobBytes()
                             .uel()
                             .pjl("ENTER LANGUAGE=PDF")
                             .raw(document)
                             .uel()
                             .pjl("ENTER LANGUAGE=POSTSCRIPT")
                             .raw("%!PS\nshowpage\n")
                             .uel();

    EXPECT_EQ(convert(job.str(), ConversionFormat::Png), 3);
    EXPECT_EQ(convert("junk\n" + document, ConversionFormat::Png), 2);
}

TEST_F(ConverterTest, ReadsXps)
{
    const std::string xps = xpsOf({"<Path Fill=\"#FF0000\" Data=\"M 0,0 L 480,0 480,960 0,960 Z\"/>", ""});

    EXPECT_EQ(convert(xps, ConversionFormat::Png), 2);
    EXPECT_EQ(pixel(directory.path("output-1"), 100, 100), "FF0000");
    EXPECT_EQ(pixel(directory.path("output-2"), 100, 100), "FFFFFF");

    EXPECT_EQ(convert(xps, ConversionFormat::Pdf), 0);
    EXPECT_TRUE(output().starts_with("%PDF-"));
    EXPECT_EQ(convert(output(), ConversionFormat::Png), 2);
    EXPECT_EQ(pixel(directory.path("output-1"), 100, 100), "FF0000");

    EXPECT_EQ(convert(xps, ConversionFormat::Text), 0);
    EXPECT_EQ(output(), "\f");
}

TEST_F(ConverterTest, FindsNothingToConvertInOtherLanguages)
{
    try {
        convert("neither", ConversionFormat::Pdf);
        ADD_FAILURE();
    } catch (const WorkerException& error) {
        EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::NoBody));
    }
}

} // namespace
} // namespace JobParser::Worker
