#pragma once

#include <cstdint>
#include <string>

#include "Torv/Export.h"

namespace Torv::Async::ProcessPool
{

/// How the processes of a pool are run.
struct TORV_EXPORT Options {
    std::int64_t processCount = 20; ///< Processes that run at a time. Below 1: none.
    std::int64_t poolInterval =
        600000;                   ///< Milliseconds after which an idle process is replaced. Below 1: never.
    std::string executable;       ///< Path of the program; it is not looked for anywhere.
    std::string arguments;        ///< Its command line, as splitArguments reads it.
    std::int32_t poolLimit = 500; ///< Requests after which a process is replaced. Below 1: never.
    std::int64_t stopWait = 5;    ///< Seconds from stopCommand to a kill.
    std::string stopCommand = "stop\n"; ///< Written to a process that is to end, before its input is closed.
    std::int64_t poolDeadline = 0; ///< Milliseconds that a request may take, waiting included. Below 1: any.
};

} // namespace Torv::Async::ProcessPool
