#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

PdfParserException::~PdfParserException() = default;

} // namespace Pdf::Parser
