#pragma once

#include <string>

namespace Torv::FileSystem
{

/// Well-known paths.
class Path
{
public:
    /// The path of the running executable. Throws GenericException if the system does not tell it.
    static std::string stdExePath();
};

} // namespace Torv::FileSystem
