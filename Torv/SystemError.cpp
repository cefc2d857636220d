#include "Torv/SystemError.h"

#include <string.h>

#include "Torv/CLocale.h"

namespace Torv
{

std::string systemError(int code)
{
    return ::strerror_l(code, cLocale());
}

} // namespace Torv
