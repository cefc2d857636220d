#pragma once

#include <csignal>

#include "Torv/Export.h"

namespace Torv::IO
{

/// While it lives, what the calling thread writes to a pipe without a reader, or behind the limit of a file's
/// size, is a failed write and no signal that ends the process. For a library, which does not own the
/// process's signals. Ends on the thread that made it.
class OutputSignals
{
public:
    OutputSignals();
    ~OutputSignals();
    OutputSignals(const OutputSignals&) = delete;
    OutputSignals& operator=(const OutputSignals&) = delete;

private:
    sigset_t m_formerMask;
    sigset_t m_blocked; ///< Those that were not pending before.
};

} // namespace Torv::IO
