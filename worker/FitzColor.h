#pragma once

#include <mupdf/fitz.h>

#include "worker/PageClass.h"

namespace JobParser::Worker
{

/// The class of a colour in the terms of its space. Reports errors as MuPDF does.
PageClass classOfColor(fz_context* context, fz_colorspace* space, const float* components, int tolerance);

/// The class of process colours, 0 for no ink to 1.
PageClass classOfCmyk(float cyan, float magenta, float yellow, float black, int tolerance);

/// The class that pictures drawn with this opacity have: black that shines through is gray.
PageClass withAlpha(PageClass pageClass, float alpha);

} // namespace JobParser::Worker
