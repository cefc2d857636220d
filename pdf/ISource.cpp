#include "pdf/ISource.h"

namespace Pdf::Parser
{

ISource::EofException::EofException() : PdfParserException("") {}

ISource::EofException::~EofException() = default;

} // namespace Pdf::Parser
