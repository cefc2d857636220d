#include "worker/DocumentAnalyzer.h"

#include <gtest/gtest.h>

#include "tests/worker/PdfBytes.h"
#include "tests/worker/WalkerSupport.h"
#include "tests/worker/XpsBytes.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

JobFacts analyze(const std::string& bytes, int tolerance = 0, Pdl pdl = Pdl::Pdf)
{
    const FitzContext context;
    OpenBody open(bytes);
    return DocumentAnalyzer(context.get(), tolerance).analyze(*open.reader, pdl);
}

/// The only page of a document.
PageClass classOf(const std::string& bytes, int tolerance = 0)
{
    const JobFacts facts = analyze(bytes, tolerance);
    EXPECT_EQ(facts.pageCount(), 1);
    for (const PageClass pageClass : {PageClass::Color, PageClass::Gray, PageClass::Mono}) {
        if (facts.count(pageClass) != 0)
            return pageClass;
    }
    return PageClass::Blank;
}

struct Row {
    const char* name;
    std::string_view content;
    PageClass pageClass;
};

constexpr std::string_view resources =
    "/Font << /F << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> "
    "/ColorSpace << /Spot [/Separation /Orange /DeviceRGB 8 0 R] /Black [/Separation /Black /DeviceCMYK 9 0 "
    "R] "
    "/Lab [/Lab << /WhitePoint [0.95 1 1.09] >>] >> "
    "/ExtGState << /Half << /ca 0.5 >> /None << /ca 0 >> /Luminosity << /BM /Luminosity >> "
    "/Multiply << /BM /Multiply >> >> "
    "/Shading << /RedToBlue << /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 200 0] "
    "/Function << /FunctionType 2 /Domain [0 1] /C0 [1 0 0] /C1 [0 0 1] /N 1 >> >> "
    "/BlackToWhite << /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 200 0] "
    "/Function << /FunctionType 2 /Domain [0 1] /C0 [0 0 0] /C1 [1 1 1] /N 1 >> >> >> "
    "/Pattern << /Red 7 0 R >>";

constexpr std::string_view objects =
    "7 0 obj << /Type /Pattern /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 10 10] /XStep 10 /YStep "
    "10 "
    "/Resources << >> /Length 21 >> stream\n1 0 0 rg 0 0 5 5 re f\nendstream endobj\n"
    "8 0 obj << /FunctionType 2 /Domain [0 1] /C0 [1 1 1] /C1 [1 0.5 0] /N 1 >> endobj\n"
    "9 0 obj << /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [0 0 0 1] /N 1 >> endobj\n";

class Painting : public testing::TestWithParam<Row>
{
};

TEST_P(Painting, IsOfItsClass)
{
    EXPECT_EQ(classOf(pdfOf({GetParam().content}, resources, objects)), GetParam().pageClass);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Painting,
    testing::Values(
        Row{"Nothing", "", PageClass::Blank}, Row{"Black", "0 0 10 10 re f", PageClass::Mono},
        Row{"White", "1 g 0 0 10 10 re f", PageClass::Blank},
        Row{"Gray", "0.5 g 0 0 10 10 re f", PageClass::Gray},
        Row{"EqualChannels", "0.5 0.5 0.5 rg 0 0 10 10 re f", PageClass::Gray},
        Row{"Red", "1 0 0 rg 0 0 10 10 re f", PageClass::Color},
        Row{"BlackInk", "0 0 0 1 k 0 0 10 10 re f", PageClass::Mono},
        Row{"GrayInk", "0 0 0 0.5 k 0 0 10 10 re f", PageClass::Gray},
        Row{"AllInks", "1 1 1 0 k 0 0 10 10 re f", PageClass::Mono},
        Row{"Cyan", "1 0 0 0 k 0 0 10 10 re f", PageClass::Color},
        Row{"CyanUnderBlack", "1 0 0 1 k 0 0 10 10 re f", PageClass::Mono},
        Row{"Spot", "/Spot cs 1 scn 0 0 10 10 re f", PageClass::Color},
        Row{"SpotOfBlack", "/Black cs 1 scn 0 0 10 10 re f", PageClass::Mono},
        Row{"NeutralLab", "/Lab cs 50 0 0 scn 0 0 10 10 re f", PageClass::Gray},
        Row{"Lab", "/Lab cs 50 60 0 scn 0 0 10 10 re f", PageClass::Color},
        Row{"Stroke", "1 0 0 RG 0 0 m 10 10 l S", PageClass::Color},
        Row{"BesideThePage", "1 0 0 rg 300 0 10 10 re f", PageClass::Blank},
        Row{"OutsideTheClip", "0 0 10 10 re W n 1 0 0 rg 50 50 10 10 re f", PageClass::Blank},
        Row{"InsideTheClip", "0 0 10 10 re W n 1 0 0 rg 5 5 10 10 re f", PageClass::Color},
        Row{"BehindTheClip", "q 0 0 10 10 re W n Q 1 0 0 rg 50 50 10 10 re f", PageClass::Color},
        Row{"Text", "BT /F 12 Tf 10 10 Td (a) Tj ET", PageClass::Mono},
        Row{"ColoredText", "BT /F 12 Tf 0 0 1 rg 10 10 Td (a) Tj ET", PageClass::Color},
        Row{"TextOfBlanks", "BT /F 12 Tf 10 10 Td (   ) Tj ET", PageClass::Blank},
        Row{"InvisibleText", "BT /F 12 Tf 3 Tr 10 10 Td (a) Tj ET", PageClass::Blank},
        Row{"TextBesideThePage", "BT /F 12 Tf 500 10 Td (a) Tj ET", PageClass::Blank},
        Row{"StrokedText", "BT /F 12 Tf 1 Tr 1 0 0 RG 10 10 Td (a) Tj ET", PageClass::Color},
        Row{"BlackThatShinesThrough", "/Half gs 0 0 10 10 re f", PageClass::Gray},
        Row{"Transparent", "/None gs 1 0 0 rg 0 0 10 10 re f", PageClass::Blank},
        Row{"ShadingOfColors", "/RedToBlue sh", PageClass::Color},
        Row{"ShadingOfGrays", "/BlackToWhite sh", PageClass::Gray},
        Row{"Tiles", "/Pattern cs /Red scn 0 0 100 100 re f", PageClass::Color},
        Row{"PictureOfColor", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /RGB /F /AHx ID FF0000> EI Q",
            PageClass::Color},
        Row{"PictureOfGray", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /RGB /F /AHx ID 808080> EI Q",
            PageClass::Gray},
        Row{"PictureOfWhite", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /RGB /F /AHx ID FFFFFF> EI Q",
            PageClass::Blank},
        Row{"PictureOfBits", "q 10 0 0 10 0 0 cm BI /W 9 /H 1 /BPC 1 /CS /G /F /AHx ID FF00> EI Q",
            PageClass::Mono},
        Row{"PictureOfWhiteBits", "q 10 0 0 10 0 0 cm BI /W 9 /H 1 /BPC 1 /CS /G /F /AHx ID FF80> EI Q",
            PageClass::Blank},
        Row{"PictureTurnedByItsDecoding",
            "q 10 0 0 10 0 0 cm BI /W 8 /H 1 /BPC 1 /CS /G /D [1 0] /F /AHx ID FF> EI Q", PageClass::Mono},
        Row{"PictureOfAPalette",
            "q 10 0 0 10 0 0 cm BI /W 8 /H 1 /BPC 1 /CS [/I /RGB 1 <FFFFFFFF0000>] /F /AHx ID 01> EI Q",
            PageClass::Color},
        Row{"PictureThatUsesNoColorOfItsPalette",
            "q 10 0 0 10 0 0 cm BI /W 8 /H 1 /BPC 1 /CS [/I /RGB 1 <000000FF0000>] /F /AHx ID 00> EI Q",
            PageClass::Mono},
        Row{"PictureOfInks", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /CMYK /F /AHx ID 000000FF> EI Q",
            PageClass::Mono},
        Row{"PictureOfNeutralLab", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /Lab /F /AHx ID 808080> EI Q",
            PageClass::Gray},
        Row{"PictureOfWhiteLab", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /Lab /F /AHx ID FF8080> EI Q",
            PageClass::Blank},
        Row{"PictureOfLab", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /Lab /F /AHx ID 80C080> EI Q",
            PageClass::Color},
        Row{"PictureOfFourBits", "q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 4 /CS /RGB /F /AHx ID F000> EI Q",
            PageClass::Color},
        Row{"PictureBesideThePage",
            "q 10 0 0 10 500 0 cm BI /W 1 /H 1 /BPC 8 /CS /RGB /F /AHx ID FF0000> EI Q", PageClass::Blank},
        Row{"Stencil", "1 0 0 rg q 10 0 0 10 0 0 cm BI /W 8 /H 1 /IM true /F /AHx ID FE> EI Q",
            PageClass::Color},
        Row{"StencilWithoutHoles", "1 0 0 rg q 10 0 0 10 0 0 cm BI /W 8 /H 1 /IM true /F /AHx ID FF> EI Q",
            PageClass::Blank},
        Row{"BlendedToGray", "0.9 g 0 0 50 50 re f /Luminosity gs 1 0 0 rg 0 0 10 10 re f", PageClass::Gray},
        Row{"MultipliedColor", "/Multiply gs 1 0 0 rg 0 0 10 10 re f", PageClass::Color},
        Row{"ClippedToText", "BT /F 40 Tf 7 Tr 10 10 Td (a) Tj ET 1 0 0 rg 0 0 100 100 re f",
            PageClass::Color}),
    [](const auto& row) { return row.param.name; });

TEST(DocumentAnalyzer, CountsPagesByClass)
{
    const JobFacts facts =
        analyze(pdfOf({"", "0 0 9 9 re f", "0.5 g 0 0 9 9 re f", "1 0 0 rg 0 0 9 9 re f"}));

    EXPECT_EQ(pagesOf(facts), (Pages{1, 1, 1, 1}));
    EXPECT_EQ(facts.size().width, 706);
    EXPECT_EQ(facts.size().height, 1058);
}

TEST(DocumentAnalyzer, CountsPagesOfXps)
{
    const std::string document = xpsOf({"", "<Path Fill=\"#000000\" Data=\"M 0,0 L 9,0 9,9 Z\"/>",
                                        "<Path Fill=\"#808080\" Data=\"M 0,0 L 9,0 9,9 Z\"/>",
                                        "<Path Fill=\"#FF0000\" Data=\"M 0,0 L 9,0 9,9 Z\"/>",
                                        "<Path Fill=\"#FF0000\" Data=\"M 900,0 L 909,0 909,9 Z\"/>"});

    const JobFacts facts = analyze(document, 0, Pdl::Xps);

    EXPECT_EQ(pagesOf(facts), (Pages{2, 1, 1, 1}));
    EXPECT_EQ(facts.size().width, 1270);
    EXPECT_EQ(facts.size().height, 2540);
}

TEST(DocumentAnalyzer, TakesWhatDiffersWithinTheToleranceForGray)
{
    const std::string document = pdfOf({"0.5 0.5 0.52 rg 0 0 9 9 re f"});

    EXPECT_EQ(classOf(document, 4), PageClass::Color);
    EXPECT_EQ(classOf(document, 5), PageClass::Gray);
}

TEST(DocumentAnalyzer, LooksThroughASoftMask)
{
    constexpr std::string_view masks = "/ExtGState << /Hides << /SMask << /S /Luminosity /G 5 0 R >> >> "
                                       "/Shows << /SMask << /S /Luminosity /G "
                                       "6 0 R >> >> >>";
    constexpr std::string_view groups =
        "5 0 obj << /Type /XObject /Subtype /Form /BBox [0 0 200 300] /Group << /S /Transparency /CS "
        "/DeviceGray >> /Length 20 >> stream\n0 g 0 0 200 300 re f\nendstream endobj\n"
        "6 0 obj << /Type /XObject /Subtype /Form /BBox [0 0 200 300] /Group << /S /Transparency /CS "
        "/DeviceGray >> /Length 20 >> stream\n1 g 0 0 200 300 re f\nendstream endobj\n";

    EXPECT_EQ(classOf(pdfOf({"/Hides gs 1 0 0 rg 0 0 99 99 re f"}, masks, groups)), PageClass::Blank);
    EXPECT_EQ(classOf(pdfOf({"/Shows gs 1 0 0 rg 0 0 99 99 re f"}, masks, groups)), PageClass::Color);
}

TEST(DocumentAnalyzer, ReadsADocumentBehindJunk)
{
    EXPECT_EQ(classOf("junk\n" + pdfOf({"0 0 9 9 re f"})), PageClass::Mono);
}

TEST(DocumentAnalyzer, PrintsAPageUpToWhereItIsMalformed)
{
    EXPECT_EQ(classOf(pdfOf({"0 0 9 9 re f ) ] >> 1 0 0"})), PageClass::Mono);
}

TEST(DocumentAnalyzer, RejectsWhatIsNoDocument)
{
    EXPECT_THROW(analyze("neither"), WorkerException);
    EXPECT_THROW(analyze(""), WorkerException);
    EXPECT_THROW(analyze("%PDF-1.7\ntrailer << >>\n%%EOF\n"), WorkerException);
}

TEST(DocumentAnalyzer, EndsATreeOfPagesThatClaimsTooMany)
{
    std::string document = pdfOf({"0 0 9 9 re f"});
    document.replace(document.find("/Count 1"), 8, "/Count 9999999");

    EXPECT_LE(analyze(document).pageCount(), 1);
}

} // namespace
} // namespace JobParser::Worker
