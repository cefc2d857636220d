#pragma once

#include <cstdint>
#include <string>

#include "tests/support/Children.h"

#include "Torv/Async/ProcessPool/ProcessPool.h"

namespace Torv::Async::ProcessPool
{

/// Options for `count` processes of the worker of the tests.
inline Options workers(std::int64_t count, const std::string& arguments = {})
{
    Options options;
    options.processCount = count;
    options.executable = testWorkerPath;
    options.arguments = arguments;
    return options;
}

} // namespace Torv::Async::ProcessPool
