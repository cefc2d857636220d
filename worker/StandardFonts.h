#pragma once

#include <array>
#include <mupdf/fitz.h>

namespace JobParser::Worker
{

/// The fonts that documents use without having them in, opened once for all documents. MuPDF by itself opens
/// them anew for each document that names one, which takes longer than everything else of a small one.
class StandardFonts
{
public:
    /// The context outlives the object. Reports errors as MuPDF does, from `open`.
    explicit StandardFonts(fz_context* context) : m_context(context) {}
    ~StandardFonts();
    StandardFonts(const StandardFonts&) = delete;
    StandardFonts& operator=(const StandardFonts&) = delete;

    /// Opens the fonts, and has documents of the context get them.
    void open();

    /// The font that MuPDF has for this name of a document; null if it is none of the standard ones.
    fz_font* find(const char* name) const;

private:
    fz_context* m_context;
    std::array<fz_font*, 14> m_fonts{};
};

} // namespace JobParser::Worker
