#pragma once

#include "JobParser/Export.h"
#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

/// The last `startxref` of a PDF points to no trailer.
class JOBPARSER_EXPORT TrailerNotFoundException : public PdfParserException
{
public:
    explicit TrailerNotFoundException(int startxref);
    ~TrailerNotFoundException() override;
};

} // namespace Pdf::Parser
