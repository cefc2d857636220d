#include "Torv/FileSystem/File.h"

#include <cerrno>
#include <sys/stat.h>

#include "Torv/GenericException.h"
#include "Torv/SystemError.h"

namespace Torv::FileSystem
{

std::int64_t File::fileSize(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        const std::string reason = systemError(errno);
        throw GenericException("Cannot get the file size | path=" + path + " | error=" + reason);
    }
    return status.st_size;
}

} // namespace Torv::FileSystem
