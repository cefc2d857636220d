#include "pdf/Reference.h"

#include "pdf/Writer.h"

namespace Pdf
{

std::string Reference::serialize() const
{
    std::string result;
    Writer(result).writeReference(*this);
    return result;
}

} // namespace Pdf
