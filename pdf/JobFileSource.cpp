#include "pdf/JobFileSource.h"

#include <limits>

#include "JobParser/JobFile.h"

namespace Pdf::Parser
{

std::uint8_t JobFileSource::next()
{
    if (jobFile.atEnd())
        throw EofException();
    const std::uint8_t byte = jobFile.getChar();
    m_window = jobFile.window();
    return byte;
}

void JobFileSource::skip(unsigned long long count)
{
    constexpr unsigned long long most = std::numeric_limits<std::int64_t>::max();

    if (count == 0)
        return;
    if (count > most || !jobFile.advancePos(static_cast<std::int64_t>(count)))
        throw EofException();
    m_window = jobFile.window();
}

} // namespace Pdf::Parser
