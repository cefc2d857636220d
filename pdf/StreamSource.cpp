#include "pdf/StreamSource.h"

#include <algorithm>
#include <limits>

#include "Torv/IO/IStream.h"

namespace Pdf::Parser
{
namespace
{

using Torv::IO::IStream;

constexpr std::uint32_t blockSize = 16384;

} // namespace

std::uint8_t StreamSource::next()
{
    std::uint8_t byte = 0;
    if (stream.read(&byte, 1) == 0) {
        m_window = {};
        throw EofException();
    }
    if (!m_window.empty())
        m_window = m_window.subspan(1);
    if (m_window.empty())
        lookAhead();
    return byte;
}

void StreamSource::skip(unsigned long long count)
{
    constexpr unsigned long long most = std::numeric_limits<std::int64_t>::max();

    for (unsigned long long left = count; left != 0;) {
        const unsigned long long step = std::min(left, most);
        stream.seek(static_cast<std::int64_t>(step), IStream::FromCurrent);
        left -= step;
    }
    m_window =
        m_window.subspan(static_cast<std::size_t>(std::min<unsigned long long>(count, m_window.size())));
    if (m_window.empty())
        lookAhead();
}

// Reads a block and goes back, so that the stream shows nothing of it.
void StreamSource::lookAhead()
{
    if ((stream.capabilities() & IStream::CanSeek) == 0)
        return;
    m_buffer.resize(blockSize);
    const std::uint32_t count = stream.read(m_buffer.data(), blockSize);
    if (count != 0)
        stream.seek(-static_cast<std::int64_t>(count), IStream::FromCurrent);
    m_window = {m_buffer.data(), count};
}

} // namespace Pdf::Parser
