#include "Torv/FileSystem/Path.h"

#include <cerrno>
#include <cstddef>
#include <unistd.h>

#include "Torv/GenericException.h"
#include "Torv/SystemError.h"

namespace Torv::FileSystem
{
namespace
{

constexpr const char* selfLink = "/proc/self/exe";
constexpr std::size_t firstSize = 256;

} // namespace

std::string Path::stdExePath()
{
    // readlink cuts without a word what does not fit, so only a shorter answer is known to be whole.
    for (std::string path(firstSize, '\0');; path.resize(path.size() * 2)) {
        const ssize_t length = ::readlink(selfLink, path.data(), path.size());
        if (length < 0)
            throw GenericException("Cannot get the path of the executable | error=" + systemError(errno));
        if (static_cast<std::size_t>(length) < path.size()) {
            path.resize(static_cast<std::size_t>(length));
            return path;
        }
    }
}

} // namespace Torv::FileSystem
