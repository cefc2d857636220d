#include "pdf/Name.h"

#include "pdf/Writer.h"

namespace Pdf
{

std::string Name::serialize() const
{
    std::string result;
    Writer(result).writeName(text);
    return result;
}

} // namespace Pdf
