#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "Torv/Log/ILog.h"

namespace JobParser::Tool
{

/// Writes one line to standard error, control bytes of the text as `?`.
void printError(std::string_view text);

/// Shows log messages on standard error, one a line and without their details. Any thread may write.
class StandardErrorLog : public Torv::Log::ILog
{
public:
    /// Whether errors are kept that come while `level` is too low for them.
    enum class Hidden { Kept, Dropped };

    /// Shows the levels 0 to `level`; -1 shows none.
    explicit StandardErrorLog(int level, Hidden hidden = Hidden::Kept) : m_level(level), m_hidden(hidden) {}

    bool isEnabled(int level) const override;
    void write(int level, const std::string& message, const std::string& details, bool flag,
               const char* sourceFile, int line) override;

    /// Shows the errors that were kept.
    void showHeldBackErrors();

    /// The last error, shown or not; empty if there was none.
    const std::string& lastError() const { return m_lastError; }

private:
    int m_level;
    Hidden m_hidden;
    std::mutex m_mutex;     ///< Guards what follows.
    std::string m_heldBack; ///< Lines.
    std::string m_lastError;
};

} // namespace JobParser::Tool
