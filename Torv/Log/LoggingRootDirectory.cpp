#include "Torv/Log/LoggingRootDirectory.h"

#include <string_view>

namespace Torv::Log
{
namespace
{

std::string_view rootOf(std::string_view knownFile, std::string_view relative)
{
    if (!knownFile.ends_with(relative))
        return {};
    const std::string_view root = knownFile.substr(0, knownFile.size() - relative.size());
    return root.ends_with('/') ? root : std::string_view();
}

} // namespace

LoggingRootDirectory::LoggingRootDirectory(const char* knownFile, const char* relative)
    : m_root(rootOf(knownFile, relative))
{
}

const char* LoggingRootDirectory::makeRelative(const char* path) const
{
    return std::string_view(path).starts_with(m_root) ? path + m_root.size() : path;
}

const char* makeLoggingRootRelative(const char* path)
{
    // The build may give absolute paths, relative ones or mapped ones: the own path shows what stands before
    // all of them.
    static const LoggingRootDirectory root(__FILE__, "Torv/Log/LoggingRootDirectory.cpp");

    return root.makeRelative(path);
}

} // namespace Torv::Log
