#pragma once

#include "tools/CommandLine.h"

namespace JobParser::Tool
{

/// What the process ends with.
enum ExitStatus : int { StatusDone = 0, StatusFailed = 1, StatusWrongCommandLine = 2, StatusNotParsed = 3 };

/// Does what the options ask for; failures are reported on standard error.
ExitStatus run(const Options& options);

} // namespace JobParser::Tool
