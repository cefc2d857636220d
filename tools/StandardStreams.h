#pragma once

#include <string_view>

#include "Torv/IO/IStream.h"

namespace JobParser::Tool
{

/// Makes sure that whatever goes wrong with the standard streams is a failed write: a reader that went away
/// ends no process, and no file that is opened later takes the place of a stream that the caller closed.
void secureStandardStreams();

/// Writes a text of any length.
void writeText(Torv::IO::IStream& stream, std::string_view text);

} // namespace JobParser::Tool
