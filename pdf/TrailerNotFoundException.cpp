#include "pdf/TrailerNotFoundException.h"

#include "Torv/Format.h"

namespace Pdf::Parser
{

TrailerNotFoundException::TrailerNotFoundException(int startxref)
    : PdfParserException(Torv::format("Document trailer not found | startxref=%d", startxref))
{
}

TrailerNotFoundException::~TrailerNotFoundException() = default;

} // namespace Pdf::Parser
