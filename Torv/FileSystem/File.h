#pragma once

#include <cstdint>
#include <string>

namespace Torv::FileSystem
{

/// Questions about a file by its path.
class File
{
public:
    /// Size in bytes. Throws GenericException with the path and the system's reason.
    static std::int64_t fileSize(const std::string& path);
};

} // namespace Torv::FileSystem
