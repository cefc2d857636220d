#include "Torv/Log/LogNull.h"

namespace Torv::Log
{

LogNull::~LogNull() = default;

bool LogNull::isEnabled(int) const
{
    return false;
}

void LogNull::write(int, const std::string&, const std::string&, bool, const char*, int) {}

} // namespace Torv::Log
