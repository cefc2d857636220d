#include "pdf/UnsupportedObjectStreamCompressionException.h"

#include "Torv/Format.h"

namespace Pdf::Parser
{

UnsupportedObjectStreamCompressionException::UnsupportedObjectStreamCompressionException(
    const std::string& compression)
    : PdfParserException(
          Torv::format("Unsupported object stream compression | compression=%s ", compression.c_str()))
{
}

UnsupportedObjectStreamCompressionException::~UnsupportedObjectStreamCompressionException() = default;

} // namespace Pdf::Parser
