#include "Torv/Data/FileReader.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Torv/GenericException.h"
#include "Torv/SystemError.h"

namespace Torv::Data
{
namespace
{

/// Whoever parses the text wants some bytes behind it; with room for them it need not be moved.
constexpr std::size_t roomBehind = 64;

[[noreturn]] void rejectFile(const std::string& path, const std::string& reason)
{
    throw GenericException("FileReader: The file cannot be read | path=" + path + " | error=" + reason);
}

[[noreturn]] void rejectFile(const std::string& path)
{
    rejectFile(path, systemError(errno));
}

/// A file that is open for reading.
class OpenFile
{
public:
    /// Does not wait for a writer if the path is a pipe.
    explicit OpenFile(const std::string& path)
        : m_path(path), m_descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
    {
        if (m_descriptor < 0)
            rejectFile(m_path);
    }
    ~OpenFile() { close(m_descriptor); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    std::size_t size() const
    {
        struct stat status;
        if (fstat(m_descriptor, &status) != 0)
            rejectFile(m_path);
        if (!S_ISREG(status.st_mode))
            rejectFile(m_path, "not a regular file");
        return static_cast<std::size_t>(status.st_size);
    }

    /// How many bytes came; 0 at the end.
    std::size_t read(char* buffer, std::size_t size) const
    {
        for (;;) {
            const ssize_t count = ::read(m_descriptor, buffer, size);
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR)
                rejectFile(m_path);
        }
    }

private:
    const std::string& m_path;
    int m_descriptor;
};

} // namespace

std::string FileReader::load(const std::string& path)
{
    const OpenFile file(path);
    const std::size_t size = file.size();
    std::string bytes;
    bytes.reserve(size + roomBehind);
    bytes.resize(size);
    std::size_t filled = 0;
    while (filled < size) {
        const std::size_t count = file.read(bytes.data() + filled, size - filled);
        if (count == 0)
            break;
        filled += count;
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace Torv::Data
