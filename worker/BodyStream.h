#pragma once

#include <mupdf/fitz.h>

namespace JobParser::Worker
{

class BodyReader;

/// The body as a stream of MuPDF, which reads it where it is mapped. `reader` outlives the stream. Reports
/// errors as MuPDF does.
fz_stream* openBodyStream(fz_context* context, BodyReader& reader);

} // namespace JobParser::Worker
