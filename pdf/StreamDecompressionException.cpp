#include "pdf/StreamDecompressionException.h"

#include "Torv/Format.h"

namespace Pdf::Parser
{

StreamDecompressionException::StreamDecompressionException(int zlibCode, const std::string& message)
    : PdfParserException(
          Torv::format("Decompressing stream error | code=%i | message=%s", zlibCode, message.c_str()))
{
}

StreamDecompressionException::~StreamDecompressionException() = default;

} // namespace Pdf::Parser
