#pragma once

#include <string>

namespace Torv::Log
{

/// The directory that source paths in log messages are relative to.
class LoggingRootDirectory
{
public:
    /// `knownFile` is the compile-time path of a source, and `relative` the same path from the root, such as
    /// "JobParser/Parser.cpp". The root is what stands before it; without that ending there is no root.
    LoggingRootDirectory(const char* knownFile, const char* relative);

    /// The path behind the root, as a pointer into `path`; a path outside the root comes back whole.
    const char* makeRelative(const char* path) const;

private:
    std::string m_root;
};

/// A source path, as __FILE__ gives it, relative to the root of our sources: no message ever names a
/// directory of the machine that built the library.
const char* makeLoggingRootRelative(const char* path);

} // namespace Torv::Log
