#include "Torv/ScopeGuard.h"

namespace Torv
{

ScopeGuard::~ScopeGuard()
{
    if (!m_armed)
        return;
    try {
        m_function();
    } catch (...) {
        // A handler that throws ends the process too: nothing may leave a destructor.
        assertFailed("ScopeGuard function does not throw", "ScopeGuard", "~ScopeGuard");
    }
}

} // namespace Torv
