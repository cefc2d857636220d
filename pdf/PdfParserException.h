#pragma once

#include "JobParser/Export.h"
#include "JobParser/JobParserException.h"

namespace Pdf::Parser
{

/// A PDF is malformed, or not to be read.
class JOBPARSER_EXPORT PdfParserException : public JobParser::JobParserException
{
public:
    using JobParser::JobParserException::JobParserException;
    ~PdfParserException() override;
};

} // namespace Pdf::Parser
