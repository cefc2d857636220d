#pragma once

#include <string>

#include "Torv/Export.h"

namespace Torv::Log
{

/// Levels in use; a higher number is less important.
enum Level : int { LevelDump = 0, LevelError = 1, LevelWarning = 3, LevelDebug = 4 };

/// Where messages go. An implementation takes any bytes; it may throw, but ours do not.
class TORV_EXPORT ILog
{
public:
    virtual ~ILog();

    /// Whether messages of this level are kept. Whoever builds a costly message asks first.
    virtual bool isEnabled(int level) const = 0;

    /// `details` is a longer text that belongs to the message, mostly empty. `flag` marks a message that
    /// deserves a look, a failed job for example. `sourceFile` is relative to the source root, empty with
    /// line 0 if the message names no source place.
    virtual void write(int level, const std::string& message, const std::string& details, bool flag,
                       const char* sourceFile, int line) = 0;
};

} // namespace Torv::Log
