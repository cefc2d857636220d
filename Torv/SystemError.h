#pragma once

#include <string>

namespace Torv
{

/// The system's text for a value of errno, such as "No such file or directory". English whatever the host's
/// locale; callable on any thread.
std::string systemError(int code);

} // namespace Torv
