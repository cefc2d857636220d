#include "worker/Descriptor.h"

#include <cerrno>
#include <unistd.h>

namespace JobParser::Worker
{

void Descriptor::close()
{
    if (m_number >= 0)
        ::close(m_number);
    m_number = -1;
}

bool writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool readAll(int descriptor, char* bytes, std::size_t size)
{
    while (size > 0) {
        const ssize_t count = ::read(descriptor, bytes, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace JobParser::Worker
