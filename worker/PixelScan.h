#pragma once

#include <cstddef>
#include <cstdint>

#include "worker/PageClass.h"

namespace JobParser::Worker
{

/// The greatest class of `count` pixels of three bytes each, red, green and blue.
PageClass classOfRgbRow(const std::uint8_t* row, std::size_t count, int tolerance);

} // namespace JobParser::Worker
