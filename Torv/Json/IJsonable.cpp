#include "Torv/Json/IJsonable.h"

namespace Torv::Json
{

IJsonable::~IJsonable() = default;

} // namespace Torv::Json
