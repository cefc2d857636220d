#pragma once

#include "Torv/Export.h"

namespace Torv
{

/// What happens when an assertion fails. The three texts live for the whole process.
///
/// A handler may throw, so that a host outlives a job that breaks an assertion: the code that
/// asserted has changed nothing yet. It may end the process. It must not return: if it does, the
/// process aborts. It is called on the thread that failed, possibly on several at once.
using AssertionHandler = void (*)(const char* expression, const char* file, const char* function);

/// Installs a handler for the whole process, to be done before parsing begins. Null brings back the
/// default, which prints the three texts to standard error and aborts. Gives the former handler.
TORV_EXPORT AssertionHandler setAssertionHandler(AssertionHandler handler) noexcept;

/// Gives the thread that makes it a handler of its own while it lives, before that of the process: for a host
/// that owns neither the process nor its other threads. They may be nested, and end in the reverse order.
class TORV_EXPORT ScopedAssertionHandler
{
public:
    /// Null has the thread use the handler of the process.
    explicit ScopedAssertionHandler(AssertionHandler handler) noexcept;
    ~ScopedAssertionHandler();
    ScopedAssertionHandler(const ScopedAssertionHandler&) = delete;
    ScopedAssertionHandler& operator=(const ScopedAssertionHandler&) = delete;

private:
    AssertionHandler m_former;
};

/// Reports a failed assertion to the handler of the thread or, where it has none, of the process. Does not
/// return; throws what the handler throws.
[[noreturn]] TORV_EXPORT void assertFailed(const char* expression, const char* file, const char* function);

} // namespace Torv

/// Tests a condition in every build, release builds too. `file` is the name of the source without path
/// and ending.
#define TORV_ASSERT(condition, file)                                                                         \
    do {                                                                                                     \
        if (!(condition)) [[unlikely]]                                                                       \
            ::Torv::assertFailed(#condition, file, __func__);                                                \
    } while (false)
