#pragma once

#include "tools/CommandLine.h"
#include "tools/Subcommands.h"

namespace JobParser::Tool
{

/// Prints a line of JSON for every file that the options name, on as many threads as they ask for. Throws
/// Torv::GenericException if standard output takes nothing.
ExitStatus runScan(const Options& options);

} // namespace JobParser::Tool
