#pragma once

#include "Torv/Log/ILog.h"

namespace Torv::Log
{

/// Collects all messages, one a line, with their details behind them if there are any.
class TORV_EXPORT LogString : public ILog
{
public:
    ~LogString() override;

    bool isEnabled(int level) const override;
    void write(int level, const std::string& message, const std::string& details, bool flag,
               const char* sourceFile, int line) override;

    /// What was collected so far; the log is empty afterwards.
    std::string getAndClear();

private:
    std::string m_text;
};

} // namespace Torv::Log
