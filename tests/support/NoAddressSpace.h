#pragma once

#include <sys/resource.h>

// Sanitizers map memory of their own all the time, and look at it through pipes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define NEEDS_SHADOW_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define NEEDS_SHADOW_MEMORY
#endif
#endif

/// From here on the system refuses every mapping of this process.
inline void refuseAddresses()
{
    constexpr rlimit nothing{0, 0};
    ::setrlimit(RLIMIT_AS, &nothing);
}
