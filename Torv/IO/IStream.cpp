#include "Torv/IO/IStream.h"

namespace Torv::IO
{

IStream::~IStream() = default;

} // namespace Torv::IO
