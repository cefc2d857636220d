#include "Torv/NoFactoryException.h"

namespace Torv
{

NoFactoryException::~NoFactoryException() = default;

} // namespace Torv
