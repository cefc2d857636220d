#pragma once

#include "Torv/Log/ILog.h"

namespace Torv::Log
{

/// Discards everything and enables no level.
class TORV_EXPORT LogNull : public ILog
{
public:
    ~LogNull() override;

    bool isEnabled(int level) const override;
    void write(int level, const std::string& message, const std::string& details, bool flag,
               const char* sourceFile, int line) override;
};

} // namespace Torv::Log
