#include "worker/GlyphNames.h"

#include <array>
#include <gtest/gtest.h>
#include <mupdf/fitz.h>
#include <string>
#include <vector>

#include "worker/FitzContext.h"

namespace JobParser::Worker
{
namespace
{

/// A face of its own of a standard font, which nobody has sorted.
class Face
{
public:
    Face(fz_context* context, const char* name) : m_context(context)
    {
        int size = 0;
        const unsigned char* data = fz_lookup_base14_font(context, name, &size);
        m_font = fz_new_font_from_memory(context, name, data, size, 0, 0);
    }
    ~Face() { fz_drop_font(m_context, m_font); }
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    FT_Face get() const { return static_cast<FT_Face>(fz_font_ft_face(m_context, m_font)); }

private:
    fz_context* m_context;
    fz_font* m_font = nullptr;
};

FT_UInt glyph(const Face& face, const char* name)
{
    return FT_Get_Name_Index(face.get(), name);
}

constexpr std::array<const char*, 14> standardFonts{
    "Courier",     "Courier-Bold",   "Courier-Oblique",   "Courier-BoldOblique",
    "Helvetica",   "Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique",
    "Times-Roman", "Times-Bold",     "Times-Italic",      "Times-BoldItalic",
    "Symbol",      "ZapfDingbats",
};

TEST(GlyphNames, LeadToTheSameGlyphsAsWithoutATable)
{
    const FitzContext context;
    for (const char* font : standardFonts) {
        const Face plain(context.get(), font);
        const Face sorted(context.get(), font);
        sortGlyphNames(sorted.get());
        ASSERT_NE(sorted.get()->generic.data, nullptr) << font;

        for (FT_UInt i = 0; i < static_cast<FT_UInt>(plain.get()->num_glyphs); ++i) {
            std::array<char, 128> name{};
            FT_Get_Glyph_Name(plain.get(), i, name.data(), name.size());
            EXPECT_EQ(glyph(sorted, name.data()), glyph(plain, name.data())) << font << ' ' << name.data();
        }
        for (const char* name :
             {"", ".notdef", "A", "a1", "space", "Space", "eacute", "nobody", "uni0041", "zz"})
            EXPECT_EQ(glyph(sorted, name), glyph(plain, name)) << font << ' ' << name;
    }
}

TEST(GlyphNames, AreFoundInATableOnceSorted)
{
    const FitzContext context;
    const Face face(context.get(), "Helvetica");
    EXPECT_EQ(face.get()->generic.data, nullptr);

    sortGlyphNames(face.get());
    void* table = face.get()->generic.data;
    sortGlyphNames(face.get());

    EXPECT_NE(table, nullptr);
    EXPECT_EQ(face.get()->generic.data, table);
    EXPECT_NE(glyph(face, "A"), 0U);
    EXPECT_EQ(glyph(face, "no such glyph"), 0U);
}

TEST(GlyphNames, LeaveAloneWhatOthersKeepWithAFace)
{
    const FitzContext context;
    const Face face(context.get(), "Helvetica");
    int others = 0;
    face.get()->generic.data = &others;

    sortGlyphNames(face.get());

    EXPECT_EQ(face.get()->generic.data, &others);
    EXPECT_NE(glyph(face, "A"), 0U);
    face.get()->generic.data = nullptr;
}

} // namespace
} // namespace JobParser::Worker
