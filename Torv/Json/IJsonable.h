#pragma once

#include <string>

#include "Torv/Export.h"

namespace Torv::Json
{

/// Something that has a form in JSON.
class TORV_EXPORT IJsonable
{
public:
    virtual ~IJsonable();
    virtual std::string toJson() const = 0;
};

} // namespace Torv::Json
