#pragma once

#include "JobParser/Export.h"
#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

/// A PDF is encrypted, and such are not to be taken.
class JOBPARSER_EXPORT RestrictedPdfNotAllowedException : public PdfParserException
{
public:
    RestrictedPdfNotAllowedException();
    ~RestrictedPdfNotAllowedException() override;
};

} // namespace Pdf::Parser
