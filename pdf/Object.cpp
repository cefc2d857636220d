#include "pdf/Object.h"

#include "pdf/Writer.h"

namespace Pdf
{

void Object::setStream(std::string_view bytes)
{
    Value& length = value["Length"];
    stream = bytes;
    length = static_cast<double>(stream.size());
}

void Object::append2Stream(std::string_view bytes)
{
    Value& length = value["Length"];
    stream += bytes;
    length = static_cast<double>(stream.size());
}

std::string Object::serialize() const
{
    std::string result;
    Writer(result).write(*this);
    return result;
}

} // namespace Pdf
