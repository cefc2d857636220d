#include "Torv/IO/FileStream.h"

#include <cerrno>
#include <unistd.h>
#include <utility>

#include "Torv/GenericException.h"
#include "Torv/SystemError.h"

namespace Torv::IO
{
namespace
{

constexpr std::size_t bufferSize = 64 * 1024;

} // namespace

FileStream::FileStream(int descriptor, std::string name) : m_descriptor(descriptor), m_name(std::move(name))
{
    m_buffer.reserve(bufferSize);
}

FileStream::~FileStream()
{
    writeThrough(m_buffer.data(), m_buffer.size());
}

std::uint32_t FileStream::read(void*, std::uint32_t)
{
    throw GenericException("Cannot read from a stream for writing | path=" + m_name);
}

void FileStream::write(const void* data, std::uint32_t size)
{
    throwIfFailed();
    if (size > bufferSize - m_buffer.size())
        flush();
    if (size < bufferSize) {
        m_buffer.append(static_cast<const char*>(data), size);
        return;
    }
    writeThrough(static_cast<const char*>(data), size);
    throwIfFailed();
}

std::int64_t FileStream::seek(std::int64_t, int)
{
    throw GenericException("Cannot seek in a stream for writing | path=" + m_name);
}

unsigned FileStream::capabilities() const
{
    return CanWrite;
}

void FileStream::flush()
{
    writeThrough(m_buffer.data(), m_buffer.size());
    m_buffer.clear();
    throwIfFailed();
}

void FileStream::writeThrough(const char* data, std::size_t size) noexcept
{
    while (size != 0 && m_error == 0) {
        const ssize_t written = ::write(m_descriptor, data, size);
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        } else if (written == 0) {
            m_error = EIO; // A descriptor that takes nothing would be asked forever.
        } else if (errno != EINTR) {
            m_error = errno;
        }
    }
}

void FileStream::throwIfFailed() const
{
    if (m_error != 0)
        throw GenericException("Cannot write file | path=" + m_name + " | error=" + systemError(m_error));
}

} // namespace Torv::IO
