/* The C entry of the library. */
#ifndef JOBPARSER_PARSEJOBINFO_H
#define JOBPARSER_PARSEJOBINFO_H

#include "Torv/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Walks the job at `path` and gives its record as JSON text, terminated by a zero byte. The text belongs to
 * the library and stays valid for the life of the process; it must not be freed.
 *
 * C++ exceptions leave this function: for a file that cannot be opened, and whatever the library's classes
 * let pass. The caller runs in a frame that tolerates that.
 */
TORV_EXPORT const char* ParseJobInfo(const char* path);

#ifdef __cplusplus
}
#endif

#endif
