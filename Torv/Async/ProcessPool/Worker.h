#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Torv/Async/ProcessPool/Process.h"

namespace Torv::Async::ProcessPool
{

using Clock = std::chrono::steady_clock;
/// When waiting ends; nothing for never.
using Deadline = std::optional<Clock::time_point>;

/// A process that answers requests, one at a time.
///
/// A request is one line on its standard input. The answer is all that it writes up to and including the
/// first line that begins with `{`, or up to the end of its output if it ends in order.
///
/// kill may be called on any thread; the rest belongs to one thread at a time.
class Worker
{
public:
    static constexpr std::size_t maxAnswerSize = 16777216; ///< Bytes, chatter included.

    /// Starts the program. Throws GenericException if it does not start.
    Worker(const std::string& executable, const std::vector<std::string>& arguments);

    /// Sends a request, which ends with its line feed, and gives the answer. Nothing comes back if the
    /// process has not begun to read it: it had ended, or was about to end, or has talked out of turn; then
    /// another one may be asked. After anything but an answer the process is not to be asked again.
    ///
    /// Throws GenericException if the process dies before it has answered, says too much, or is not done at
    /// the deadline; it is killed then.
    std::optional<std::string> ask(std::string_view request, const Deadline& deadline);

    /// Writes the text to the process as far as it takes it at once, and closes its input.
    void dismiss(std::string_view stopCommand);

    /// Whether the answer given last was the end of its output.
    bool isOver() const { return m_isOver; }

    void kill() const { m_process.kill(); }
    std::string ending() const { return m_process.ending(); } ///< As Process::ending.
    int watch() const { return m_process.watch().number(); }  ///< As Process::watch.

private:
    enum class Received { Bytes, NothingYet, End };

    bool isInStep();
    void send(std::string_view& unsent);
    Received receive();
    bool findAnswer();
    std::string takeAnswer();
    std::string takeAll();
    std::string takeLastWords(const Deadline& deadline);
    bool hasReadNothingOf(std::size_t written) const;
    bool waitFor(bool isSending, const Deadline& deadline) const;
    [[noreturn]] void fail(const std::string& message) const;

    Process m_process;
    bool m_isOver = false;
    std::string m_received;      ///< Not yet given as an answer.
    std::size_t m_lineStart = 0; ///< Of the line in m_received that has no end yet.
    std::size_t m_scanned = 0;   ///< How far m_received has been searched for a line feed.
};

} // namespace Torv::Async::ProcessPool
