#include "Torv/VariantInvalidOperationException.h"

namespace Torv
{

VariantInvalidOperationException::~VariantInvalidOperationException() = default;

} // namespace Torv
