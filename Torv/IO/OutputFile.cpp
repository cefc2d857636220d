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

} // namespace

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
        openTemporary(folderOf(m_path), exists ? status.st_mode & permissionBits : newFileMode, exists);
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
    closeDescriptor();
    if (m_temporary.empty())
        return;
    if (::rename(m_temporary.c_str(), m_path.c_str()) != 0)
        fail(errno);
    m_temporary.clear();
}

void OutputFile::openTemporary(const std::string& folder, unsigned mode, bool replaces)
{
    const std::string stem = folder + ".jobparser-" + std::to_string(::getpid()) + "-";
    for (int i = 0; i < maxTemporaryNames; ++i) {
        const std::string name = stem + std::to_string(i) + ".tmp";
        // Nobody may read a private job's bytes before the file has the permissions of the one it replaces.
        m_descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (m_descriptor >= 0) {
            m_temporary = name;
            break;
        }
        if (errno != EEXIST)
            return;
    }
    if (m_descriptor >= 0 && replaces && ::fchmod(m_descriptor, mode) != 0) {
        const int error = errno;
        ::close(m_descriptor);
        m_descriptor = -1;
        ::unlink(m_temporary.c_str());
        errno = error;
    }
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
