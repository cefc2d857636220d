#include "Torv/Log/LogString.h"

#include <utility>

namespace Torv::Log
{

LogString::~LogString() = default;

bool LogString::isEnabled(int) const
{
    return true;
}

void LogString::write(int, const std::string& message, const std::string& details, bool, const char*, int)
{
    m_text.append(message).append(1, '\n');
    if (!details.empty())
        m_text.append(details).append(1, '\n');
}

std::string LogString::getAndClear()
{
    return std::exchange(m_text, std::string());
}

} // namespace Torv::Log
