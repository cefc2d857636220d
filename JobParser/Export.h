#pragma once

#include "Torv/Export.h"

/// Marks the public classes and functions of the library.
#define JOBPARSER_EXPORT TORV_EXPORT
