#include "pdf/RestrictedPdfNotAllowedException.h"

namespace Pdf::Parser
{

RestrictedPdfNotAllowedException::RestrictedPdfNotAllowedException()
    : PdfParserException("Restricted PDF is not allowed (Encrypt present)")
{
}

RestrictedPdfNotAllowedException::~RestrictedPdfNotAllowedException() = default;

} // namespace Pdf::Parser
