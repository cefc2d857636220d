#pragma once

#include <string>

#include "Torv/Export.h"

namespace Torv::Data
{

/// Reads whole files.
class TORV_EXPORT FileReader
{
public:
    /// The bytes of a regular file. Throws GenericException with the path and the system's reason if it
    /// cannot be read.
    static std::string load(const std::string& path);
};

} // namespace Torv::Data
