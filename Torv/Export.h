#pragma once

/// Marks what the shared library shows to its host; everything else stays hidden.
#if defined(__GNUC__)
#define TORV_EXPORT __attribute__((visibility("default")))
#else
#define TORV_EXPORT
#endif
