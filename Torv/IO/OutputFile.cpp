#include "Torv/IO/OutputFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "Torv/GenericException.h"

namespace Torv::IO
{
namespace
{

constexpr mode_t newFileMode = 0666; // The system takes the umask off.
constexpr mode_t permissionBits = 0777;
constexpr int maxLinks = 40; // As many as the kernel follows.
constexpr int maxTemporaryNames = 1000;

std::string folderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

/// What the link at the path says; nothing if there is no link.
std::optional<std::string> readLink(const std::string& path)
{
    std::string target(4096, '\0');
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0)
        return std::nullopt;
    target.resize(static_cast<std::size_t>(length));
    return target;
}

/// The path that a chain of links ends at, whether or not something stands there.
std::string followLinks(std::string path)
{
    for (int i = 0; i < maxLinks; ++i) {
        const std::optional<std::string> target = readLink(path);
        if (!target)
            break;
        path = target->starts_with('/') ? *target : folderOf(path) + *target;
    }
    return path;
}

bool isStandardOutput(const struct stat& status)
{
    struct stat output = {};
    return ::fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == status.st_dev &&
           output.st_ino == status.st_ino;
}

/// Calls `take` with one name after the other in the folder of the path, until it succeeds or fails for
/// another reason than that the name is taken. The name, or an empty one.
template <typename Take> std::string takeTemporaryName(const std::string& path, Take take)
{
    const std::string stem = folderOf(path) + ".jobparser-" + std::to_string(::getpid()) + "-";
    for (int i = 0; i < maxTemporaryNames; ++i) {
        std::string name = stem + std::to_string(i) + ".tmp";
        if (take(name))
            return name;
        if (errno != EEXIST)
            break;
    }
    return {};
}

/// The name by which the kernel knows an open file.
std::string kernelName(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

} // namespace

bool OutputFile::isStraight(const std::string& path, StandardOutput standardOutput)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    return !S_ISREG(status.st_mode) ||
           (standardOutput == StandardOutput::IsWrittenStraight && isStandardOutput(status));
}

OutputFile::OutputFile(const std::string& path, StandardOutput standardOutput) : m_path(path)
{
    struct stat status = {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && standardOutput == StandardOutput::IsWrittenStraight && isStandardOutput(status)) {
        // Opened anew by its path, a file would be written from its start, over what stands there.
        m_descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    } else if (exists && !S_ISREG(status.st_mode)) {
        m_descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    } else {
        m_path = followLinks(path);
        openTemporary(exists ? status.st_mode & permissionBits : newFileMode, exists);
    }
    if (m_descriptor < 0)
        fail(errno);
    m_stream.emplace(m_descriptor, path);
}

OutputFile::~OutputFile()
{
    m_stream.reset();
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (!m_temporary.empty())
        ::unlink(m_temporary.c_str());
}

void OutputFile::commit()
{
    m_stream->flush();
    m_stream.reset();
    if (m_isUnnamed)
        nameUnnamed();
    closeDescriptor();
    if (m_temporary.empty())
        return;
    if (::rename(m_temporary.c_str(), m_path.c_str()) != 0)
        fail(errno);
    m_temporary.clear();
}

void OutputFile::openTemporary(unsigned mode, bool replaces)
{
    if (!openUnnamed(mode))
        openNamed(mode);
    if (m_descriptor >= 0 && replaces && ::fchmod(m_descriptor, mode) != 0) {
        const int error = errno;
        ::close(m_descriptor);
        m_descriptor = -1;
        ::unlink(m_temporary.c_str());
        errno = error;
    }
}

/// False where files without a name cannot be had, or not be named later.
bool OutputFile::openUnnamed(unsigned mode)
{
    const std::string folder = folderOf(m_path);
    m_descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    if (m_descriptor < 0)
        return false;
    m_isUnnamed = ::access(kernelName(m_descriptor).c_str(), F_OK) == 0;
    if (!m_isUnnamed) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
    return m_isUnnamed;
}

void OutputFile::openNamed(unsigned mode)
{
    // Nobody may read a private job's bytes before the file has the permissions of the one it replaces.
    m_temporary = takeTemporaryName(m_path, [&](const std::string& name) {
        m_descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        return m_descriptor >= 0;
    });
}

void OutputFile::nameUnnamed()
{
    const std::string unnamed = kernelName(m_descriptor);
    m_temporary = takeTemporaryName(m_path, [&](const std::string& name) {
        return ::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    });
    if (m_temporary.empty())
        fail(errno);
}

void OutputFile::closeDescriptor()
{
    const int descriptor = m_descriptor;
    m_descriptor = -1;
    if (::close(descriptor) != 0 && errno != EINTR)
        fail(errno);
}

void OutputFile::fail(int error) const
{
    throw GenericException("Cannot write file | path=" + m_path +
                           " | error=" + std::generic_category().message(error));
}

} // namespace Torv::IO
