#pragma once

#include <cstddef>
#include <cstdint>
#include <mupdf/fitz.h>

#include "worker/PageClass.h"

namespace JobParser::Worker
{

/// Finds the class of a picture in its decoded samples, row by row, and stops as soon as nothing greater can
/// come.
///
/// Holds nothing that needs a destructor, since MuPDF leaves by jumps. Reports errors as MuPDF does.
class ImageClassifier
{
public:
    ImageClassifier(fz_context* context, int tolerance) : m_context(context), m_tolerance(tolerance) {}

    /// The class of a picture.
    PageClass classify(fz_image* image);
    /// Whether a stencil lets anything through.
    bool paints(fz_image* mask);

private:
    enum class Form : std::uint8_t { Gray8, Rgb8, Cmyk8, OneComponent, General };

    bool hasRows(fz_image* image) const;
    void readRows(fz_image* image, bool isMask);
    Form formOf(const fz_image* image) const;
    bool usesPlainValues(const fz_image* image) const;
    void prepareStencil(const fz_image* mask);
    void prepareTable(const fz_image* image);
    PageClass classOfEntry(const fz_image* image, unsigned value) const;
    void takeRow(const fz_image* image, const std::uint8_t* row, Form form);
    void takeGrays(const std::uint8_t* row, int count);
    void takeRgb(const std::uint8_t* row, int count);
    void takeCmyk(const std::uint8_t* row, int count);
    void takeTable(const fz_image* image, const std::uint8_t* row);
    void takeGeneral(const fz_image* image, const std::uint8_t* row);
    bool isKeyedOut(const fz_image* image, const unsigned* values) const;
    void takePixmap(fz_image* image);
    void raise(PageClass pageClass);

    fz_context* m_context;
    int m_tolerance;
    PageClass m_class = PageClass::Blank;
    PageClass m_greatest = PageClass::Color; ///< What the space of the picture can show at most.
    PageClass m_table[256] = {};             ///< Classes of the values of pictures of one component.
};

} // namespace JobParser::Worker
