#include "worker/StandardFonts.h"

#include <gtest/gtest.h>
#include <string>

#include "worker/FitzContext.h"

namespace JobParser::Worker
{
namespace
{

struct Row {
    const char* asked;
    const char* found;
};

TEST(StandardFonts, AreFoundByTheirNamesAndThoseOfTheirTwins)
{
    const FitzContext context;
    StandardFonts fonts(context.get());
    Fitz::protect(context.get(), [&] { fonts.open(); });
    const Row rows[] = {
        {"Courier", "Courier"},
        {"Courier-Bold", "Courier-Bold"},
        {"Courier-Oblique", "Courier-Oblique"},
        {"Courier-BoldOblique", "Courier-BoldOblique"},
        {"Helvetica", "Helvetica"},
        {"Helvetica-Bold", "Helvetica-Bold"},
        {"Helvetica-Oblique", "Helvetica-Oblique"},
        {"Helvetica-BoldOblique", "Helvetica-BoldOblique"},
        {"Times-Roman", "Times-Roman"},
        {"Times-Bold", "Times-Bold"},
        {"Times-Italic", "Times-Italic"},
        {"Times-BoldItalic", "Times-BoldItalic"},
        {"Symbol", "Symbol"},
        {"ZapfDingbats", "ZapfDingbats"},
        {"Arial", "Helvetica"},
        {"Arial,Bold", "Helvetica-Bold"},
        {"CourierNew", "Courier"},
        {"TimesNewRoman,Italic", "Times-Italic"},
    };

    for (const Row& row : rows) {
        fz_font* font = fonts.find(row.asked);
        ASSERT_NE(font, nullptr) << row.asked;
        EXPECT_EQ(font, fonts.find(row.found)) << row.asked;
        EXPECT_STREQ(fz_font_name(context.get(), font), row.found);
    }
}

TEST(StandardFonts, AreNoOthers)
{
    const FitzContext context;
    StandardFonts fonts(context.get());
    Fitz::protect(context.get(), [&] { fonts.open(); });

    for (const char* name : {"", "Nobody", "helvetica", "ABCDEF+Helvetica", "Helvetica-"})
        EXPECT_EQ(fonts.find(name), nullptr) << name;
}

TEST(StandardFonts, AreNotFoundBeforeTheyAreOpen)
{
    const FitzContext context;
    const StandardFonts fonts(context.get());

    EXPECT_EQ(fonts.find("Helvetica"), nullptr);
}

TEST(StandardFonts, AreWhatDocumentsOfTheContextGet)
{
    const FitzContext context;

    fz_font* first = fz_load_system_font(context.get(), "Helvetica", 0, 0, 1);
    fz_font* second = fz_load_system_font(context.get(), "Arial", 0, 0, 0);

    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(fz_load_system_font(context.get(), "Nobody", 0, 0, 0), nullptr);
    fz_drop_font(context.get(), first);
    fz_drop_font(context.get(), second);
}

} // namespace
} // namespace JobParser::Worker
