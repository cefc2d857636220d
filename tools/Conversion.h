#pragma once

#include "JobParser/ExtJobProcessor.h"

namespace JobParser::Tool
{

/// Has a worker process convert a job. Workers make files and move them to their place, so that what goes to
/// a device, a pipe or standard output is made in the folder for temporary files and copied from there.
///
/// Throws what ExtJobProcessor::convert throws, and Torv::GenericException if the output cannot be written.
void convert(ConvertParams params);

} // namespace JobParser::Tool
