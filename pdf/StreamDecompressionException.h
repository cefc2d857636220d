#pragma once

#include <string>

#include "JobParser/Export.h"
#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

/// zlib cannot inflate an object stream.
class JOBPARSER_EXPORT StreamDecompressionException : public PdfParserException
{
public:
    /// The code is zlib's.
    StreamDecompressionException(int zlibCode, const std::string& message);
    ~StreamDecompressionException() override;
};

} // namespace Pdf::Parser
