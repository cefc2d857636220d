#pragma once

#include "Torv/GenericException.h"

namespace Torv
{

/// A factory was asked for a reference that nobody registered.
class TORV_EXPORT NoFactoryException : public GenericException
{
public:
    using GenericException::GenericException;
    ~NoFactoryException() override;
};

} // namespace Torv
