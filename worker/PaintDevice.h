#pragma once

#include <mupdf/fitz.h>

#include "worker/PageClass.h"

namespace JobParser::Worker
{

/// What a PaintDevice found on a page.
struct PaintResult {
    /// What is painted for certain.
    PageClass pageClass = PageClass::Blank;
    /// What is painted if masks and blending let everything through; only pixels tell.
    PageClass possible = PageClass::Blank;
};

/// Makes a device that classifies what is painted instead of rendering it: fills, strokes, text, shadings by
/// their colours, pictures by their samples. `page` is what is seen of the page, in the coordinates that it
/// is run in. `result` gets the classes; once it can get no greater, `cookie` ends the run. Both outlive the
/// device. Reports errors as MuPDF does.
fz_device* newPaintDevice(fz_context* context, fz_rect page, int tolerance, fz_cookie& cookie,
                          PaintResult& result);

} // namespace JobParser::Worker
