#pragma once

#include "JobParser/Export.h"

#include "Torv/GenericException.h"

namespace JobParser
{

/// A job, or metadata of a job, is malformed.
class JOBPARSER_EXPORT JobParserException : public Torv::GenericException
{
public:
    using Torv::GenericException::GenericException;
    ~JobParserException() override;
};

} // namespace JobParser
