#include "Torv/Log/ILog.h"

namespace Torv::Log
{

ILog::~ILog() = default;

} // namespace Torv::Log
