#pragma once

#include <string_view>

namespace Fuzz
{

/// Makes a job from metadata, stores it again, dumps it and saves it over the bytes of the job that it is
/// said to belong to. Ends the process if one of them breaks its promise.
void readMetadataAndCheck(std::string_view metadata, std::string_view jobBytes);

} // namespace Fuzz
