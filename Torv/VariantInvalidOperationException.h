#pragma once

#include "Torv/GenericException.h"

namespace Torv
{

/// A Variant was used as a kind that it does not hold, or asked for a key that it does not have.
class TORV_EXPORT VariantInvalidOperationException : public GenericException
{
public:
    using GenericException::GenericException;
    ~VariantInvalidOperationException() override;
};

} // namespace Torv
