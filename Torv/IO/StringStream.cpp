#include "Torv/IO/StringStream.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Torv/GenericException.h"

namespace Torv::IO
{
namespace
{

constexpr std::int64_t maxPosition = std::numeric_limits<std::int64_t>::max();

} // namespace

StringStream::StringStream() = default;

StringStream::StringStream(std::string text) : m_text(std::move(text)) {}

StringStream::~StringStream() = default;

std::uint32_t StringStream::read(void* buffer, std::uint32_t size)
{
    if (size == 0 || m_position >= m_text.size())
        return 0;
    const std::size_t count = std::min<std::size_t>(size, m_text.size() - m_position);
    m_text.copy(static_cast<char*>(buffer), count, m_position);
    m_position += count;
    return static_cast<std::uint32_t>(count);
}

void StringStream::write(const void* data, std::uint32_t size)
{
    if (size == 0)
        return;
    if (m_position > m_text.max_size() - size)
        throw GenericException("Cannot write to a string stream | error=Position too large");
    if (m_position > m_text.size())
        m_text.resize(m_position, '\0');
    const std::size_t overwritten = std::min<std::size_t>(size, m_text.size() - m_position);
    m_text.replace(m_position, overwritten, static_cast<const char*>(data), size);
    m_position += size;
}

std::int64_t StringStream::seek(std::int64_t offset, int origin)
{
    if (origin != FromStart && origin != FromCurrent)
        throw GenericException("Cannot seek in a string stream | error=Unknown origin");
    const std::int64_t base = origin == FromStart ? 0 : static_cast<std::int64_t>(m_position);
    if (offset < -base)
        throw GenericException("Cannot seek in a string stream | error=Position before the start");
    if (offset > maxPosition - base)
        throw GenericException("Cannot seek in a string stream | error=Position too large");
    m_position = static_cast<std::size_t>(base + offset);
    return base + offset;
}

unsigned StringStream::capabilities() const
{
    return CanRead | CanWrite | CanSeek;
}

} // namespace Torv::IO
