#include "pdf/HexString.h"

namespace Pdf
{

std::string HexString::serialize() const
{
    return std::string("<").append(text.view()).append(">");
}

} // namespace Pdf
