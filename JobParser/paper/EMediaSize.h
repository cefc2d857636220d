#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "JobParser/Export.h"

namespace JobParser
{

/// The number of a medium in PCL XL: the published ones, and those that drivers use besides. They have no
/// names here, since most mean nothing to us.
enum class EMediaSize : std::uint8_t {};

/// Stands for a name that mediaSizes does not know.
inline constexpr auto unknownMedia = EMediaSize{231};

/// The names that drivers give in place of a number, built at the first call.
JOBPARSER_EXPORT const std::unordered_map<std::string, EMediaSize>& mediaSizes();

} // namespace JobParser
