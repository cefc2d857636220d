#pragma once

#include <string>

#include "JobParser/Export.h"
#include "pdf/PdfParserException.h"

namespace Pdf::Parser
{

/// An object stream is compressed in another way than by deflate, or not at all.
class JOBPARSER_EXPORT UnsupportedObjectStreamCompressionException : public PdfParserException
{
public:
    explicit UnsupportedObjectStreamCompressionException(const std::string& compression);
    ~UnsupportedObjectStreamCompressionException() override;
};

} // namespace Pdf::Parser
