#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "Torv/Async/ProcessPool/Descriptor.h"

namespace Torv::Async::ProcessPool
{

/// A child process with pipes at its standard input and output.
///
/// It gets nothing else of the host: its standard error goes nowhere, all other descriptors are closed, and
/// signals are as in a new login. It has a process group of its own, which ends with it.
///
/// kill may be called on any thread; the rest belongs to one thread at a time.
class Process
{
public:
    /// Starts the program. Throws GenericException, with the path and the system's reason, if it does not
    /// start.
    Process(const std::string& executable, const std::vector<std::string>& arguments);
    /// Kills the process if it has not ended.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Takes what the process reads. Writing never blocks, and causes no signal, even if the process is dead.
    const Descriptor& input() const { return m_input; }
    const Descriptor& output() const { return m_output; } ///< Gives what the process writes; never blocks.
    const Descriptor& watch() const { return m_watch; }   ///< Becomes readable when the process ends.

    /// The process finds the end of its input.
    void closeInput() { m_input.close(); }

    /// Ends the process and its group at once. Does nothing if it has ended.
    void kill() const;

    /// How the process ended, as in ` | signal=9`; empty as long as it runs.
    std::string ending() const;
    /// Whether it ended by itself with status 0.
    bool hasSucceeded() const;

private:
    bool peekEnding(int& code, int& status) const;

    Descriptor m_input;
    Descriptor m_inputReader; ///< A pipe with a reader is never broken, whatever becomes of the process.
    Descriptor m_output;
    pid_t m_pid = -1;
    Descriptor m_watch;
};

} // namespace Torv::Async::ProcessPool
