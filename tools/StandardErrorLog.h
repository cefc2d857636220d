#pragma once

#include <string>
#include <string_view>

#include "Torv/Log/ILog.h"

namespace JobParser::Tool
{

/// Writes one line to standard error, control bytes of the text as `?`.
void printError(std::string_view text);

/// Shows log messages on standard error, one a line and without their details.
class StandardErrorLog : public Torv::Log::ILog
{
public:
    /// Shows the levels 0 to `level`; -1 shows none.
    explicit StandardErrorLog(int level) : m_level(level) {}

    bool isEnabled(int level) const override;
    void write(int level, const std::string& message, const std::string& details, bool flag,
               const char* sourceFile, int line) override;

    /// Shows the errors that came while `level` was too low for them.
    void showHeldBackErrors();

private:
    int m_level;
    std::string m_heldBack; ///< Lines.
};

} // namespace JobParser::Tool
