#pragma once

#include "JobParser/Export.h"
#include "pdf/ISource.h"

namespace JobParser
{
class JobFile;
}

namespace Pdf::Parser
{

/// Reads a job file from its position on. Nobody else moves the position meanwhile.
class JOBPARSER_EXPORT JobFileSource final : public ISource
{
public:
    explicit JobFileSource(JobParser::JobFile& file) : jobFile(file) {}

    std::uint8_t next() override;
    void skip(unsigned long long count) override;

    JobParser::JobFile& jobFile;
};

} // namespace Pdf::Parser
