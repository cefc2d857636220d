#include "Torv/CLocale.h"

#include "Torv/GenericException.h"

namespace Torv
{
namespace
{

locale_t makeCLocale()
{
    const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    if (locale == nullptr)
        throw GenericException("cLocale(): The C locale is not available");
    return locale;
}

} // namespace

locale_t cLocale()
{
    static const locale_t locale = makeCLocale();
    return locale;
}

} // namespace Torv
