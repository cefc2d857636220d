#include "JobParser/pclxl/PclXLAttributes.h"

#include <gtest/gtest.h>
#include <map>

namespace JobParser
{
namespace
{

std::string nameOf(int number)
{
    return attrName(static_cast<attribute_t>(number));
}

TEST(PclXLAttributes, HaveTheirPublishedNamesAndAllOthersHaveNone)
{
    const std::map<int, std::string> names{
        {2, "PALETTEDEPTH"},
        {3, "COLORSPACE"},
        {4, "NULLBRUSH"},
        {5, "NULLPEN"},
        {6, "PALETTEDATA"},
        {8, "PATTERNSELECTID"},
        {9, "GRAYLEVEL"},
        {11, "RGBCOLOR"},
        {12, "PATTERNORIGIN"},
        {13, "NEWDESTINATIONSIZE"},
        {14, "PRIMARYARRAY"},
        {15, "PRIMARYDEPTH"},
        {29, "ALLOBJECTTYPES"},
        {30, "TEXTOBJECTS"},
        {31, "VECTOROBJECTS"},
        {32, "RASTEROBJECTS"},
        {33, "DEVICEMATRIX"},
        {34, "DITHERMATRIXDATATYPE"},
        {35, "DITHERORIGIN"},
        {36, "MEDIADESTINATION"},
        {37, "MEDIASIZE"},
        {38, "MEDIASOURCE"},
        {39, "MEDIATYPE"},
        {40, "ORIENTATION"},
        {41, "PAGEANGLE"},
        {42, "PAGEORIGIN"},
        {43, "PAGESCALE"},
        {44, "ROP3"},
        {45, "TXMODE"},
        {47, "CUSTOMMEDIASIZE"},
        {48, "CUSTOMMEDIASIZEUNITS"},
        {49, "PAGECOPIES"},
        {50, "DITHERMATRIXSIZE"},
        {51, "DITHERMATRIXDEPTH"},
        {52, "SIMPLEXPAGEMODE"},
        {53, "DUPLEXPAGEMODE"},
        {54, "DUPLEXPAGESIDE"},
        {65, "ARCDIRECTION"},
        {66, "BOUNDINGBOX"},
        {67, "DASHOFFSET"},
        {68, "ELLIPSEDIMENSION"},
        {69, "ENDPOINT"},
        {70, "FILLMODE"},
        {71, "LINECAPSTYLE"},
        {72, "LINEJOINSTYLE"},
        {73, "MITERLENGTH"},
        {74, "LINEDASHSTYLE"},
        {75, "PENWIDTH"},
        {76, "POINT"},
        {77, "NUMBEROFPOINTS"},
        {78, "SOLIDLINE"},
        {79, "STARTPOINT"},
        {80, "POINTTYPE"},
        {81, "CONTROLPOINT1"},
        {82, "CONTROLPOINT2"},
        {83, "CLIPREGION"},
        {84, "CLIPMODE"},
        {98, "COLORDEPTH"},
        {99, "BLOCKHEIGHT"},
        {100, "COLORMAPPING"},
        {101, "COMPRESSMODE"},
        {102, "DESTINATIONBOX"},
        {103, "DESTINATIONSIZE"},
        {104, "PATTERNPERSISTENCE"},
        {105, "PATTERNDEFINEID"},
        {107, "SOURCEHEIGHT"},
        {108, "SOURCEWIDTH"},
        {109, "STARTLINE"},
        {110, "PADBYTESMULTIPLE"},
        {111, "BLOCKBYTELENGTH"},
        {115, "NUMBEROFSCANLINES"},
        {120, "COLORTREATMENT"},
        {122, "RESERVED1"},
        {129, "COMMENTDATA"},
        {130, "DATAORG"},
        {134, "MEASURE"},
        {136, "SOURCETYPE"},
        {137, "UNITSPERMEASURE"},
        {139, "STREAMNAME"},
        {140, "STREAMDATALENGTH"},
        {143, "ERRORREPORT"},
        {145, "RESERVED2"},
        {146, "RESERVED3"},
        {147, "RESERVED4"},
        {148, "RESERVED5"},
        {149, "RESERVED6"},
        {150, "RESERVED7"},
        {151, "RESERVED8"},
        {152, "RESERVED9"},
        {153, "RESERVED10"},
        {154, "RESERVED11"},
        {155, "RESERVED12"},
        {156, "RESERVED13"},
        {157, "RESERVED14"},
        {158, "RESERVED15"},
        {159, "RESERVED16"},
        {161, "CHARANGLE"},
        {162, "CHARCODE"},
        {163, "CHARDATASIZE"},
        {164, "CHARSCALE"},
        {165, "CHARSHEAR"},
        {166, "CHARSIZE"},
        {167, "FONTHEADERLENGTH"},
        {168, "FONTNAME"},
        {169, "FONTFORMAT"},
        {170, "SYMBOLSET"},
        {171, "TEXTDATA"},
        {172, "CHARSUBMODEARRAY"},
        {173, "PCLSELECTFONT"},
        {175, "XSPACINGDATA"},
        {176, "YSPACINGDATA"},
        {177, "CHARBOLDVALUE"},
    };

    for (int number = 0; number < 256; ++number) {
        const auto row = names.find(number);
        EXPECT_EQ(nameOf(number), row == names.end() ? "" : row->second) << number;
    }
    EXPECT_EQ(names.size(), 112U);
}

TEST(PclXLAttributes, AreNumberedAsPublished)
{
    EXPECT_EQ(static_cast<int>(attribute_t::MediaSize), 37);
    EXPECT_EQ(static_cast<int>(attribute_t::Orientation), 40);
    EXPECT_EQ(static_cast<int>(attribute_t::PageCopies), 49);
    EXPECT_EQ(static_cast<int>(attribute_t::SimplexPageMode), 52);
    EXPECT_EQ(static_cast<int>(attribute_t::DuplexPageMode), 53);
    EXPECT_EQ(static_cast<int>(attribute_t::CommentData), 129);
    EXPECT_EQ(static_cast<int>(attribute_t::ErrorReport), 143);
    EXPECT_EQ(static_cast<int>(attribute_t::FontName), 168);
}

} // namespace
} // namespace JobParser
