#pragma once

#include <functional>
#include <string>

#include "worker/Sandbox.h"

namespace JobParser::Worker
{

/// Gives what `work` gives, which is done in a child process: Ghostscript changes the environment, and is
/// there once in a process. Throws WorkerException as Sandbox does.
inline std::string inChild(const std::function<std::string()>& work)
{
    Sandbox sandbox(Limits(), [&](const std::string&) { return work(); });
    return sandbox.run("");
}

} // namespace JobParser::Worker
