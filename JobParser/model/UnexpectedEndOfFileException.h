#pragma once

#include "JobParser/Export.h"
#include "JobParser/JobParserException.h"

namespace JobParser
{

/// The job ends where more of it was expected.
class JOBPARSER_EXPORT UnexpectedEndOfFileException : public JobParserException
{
public:
    UnexpectedEndOfFileException();
    ~UnexpectedEndOfFileException() override;
};

} // namespace JobParser
