#pragma once

#include <locale.h>

namespace Torv
{

/// The C locale, for conversions that must not follow the host's. Lives for the whole process. Throws
/// GenericException if the system does not give it.
locale_t cLocale();

} // namespace Torv
