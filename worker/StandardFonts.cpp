#include "worker/StandardFonts.h"

#include <mupdf/pdf.h>
#include <string_view>

#include "worker/GlyphNames.h"

namespace JobParser::Worker
{
namespace
{

constexpr std::array<const char*, 14> names{
    "Courier",     "Courier-Bold",   "Courier-Oblique",   "Courier-BoldOblique",
    "Helvetica",   "Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique",
    "Times-Roman", "Times-Bold",     "Times-Italic",      "Times-BoldItalic",
    "Symbol",      "ZapfDingbats",
};

fz_font* loadFont(fz_context* context, const char* name, int, int, int)
{
    fz_font* font = static_cast<const StandardFonts*>(fz_user_context(context))->find(name);
    return font == nullptr ? nullptr : fz_keep_font(context, font);
}

} // namespace

StandardFonts::~StandardFonts()
{
    fz_install_load_system_font_funcs(m_context, nullptr, nullptr, nullptr);
    for (fz_font* font : m_fonts)
        fz_drop_font(m_context, font);
}

void StandardFonts::open()
{
    for (std::size_t i = 0; i < names.size(); ++i) {
        m_fonts[i] = fz_new_base14_font(m_context, names[i]);
        sortGlyphNames(static_cast<FT_Face>(fz_font_ft_face(m_context, m_fonts[i])));
    }
    fz_set_user_context(m_context, this);
    fz_install_load_system_font_funcs(m_context, loadFont, nullptr, nullptr);
}

fz_font* StandardFonts::find(const char* name) const
{
    // Other names of the same fonts, such as Arial, are theirs, too; any further name stays as it is.
    const std::string_view clean = pdf_clean_font_name(name);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (clean == names[i])
            return m_fonts[i];
    }
    return nullptr;
}

} // namespace JobParser::Worker
