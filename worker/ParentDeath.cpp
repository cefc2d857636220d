#include "worker/ParentDeath.h"

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace JobParser::Worker
{

void endWithParent(pid_t parent)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have ended between the fork and this.
    if (::getppid() != parent)
        ::_exit(0);
}

} // namespace JobParser::Worker
