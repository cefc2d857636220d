#pragma once

#include <sys/types.h>

namespace JobParser::Worker
{

/// Has this process killed when its parent ends, of which `parent` is the number that was read before the
/// fork. Ends it at once if the parent is gone already: then nobody would.
void endWithParent(pid_t parent);

} // namespace JobParser::Worker
