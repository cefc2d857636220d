#pragma once

#include <cstdint>
#include <span>

#include "worker/PageClass.h"

namespace JobParser::Worker
{

/// The class of a JPEG picture, row by row up to the first pixel of the class `enough`. What is no JPEG, or
/// cut off, shows as far as it can be read.
PageClass classOfJpeg(std::span<const std::uint8_t> data, int tolerance, PageClass enough);

} // namespace JobParser::Worker
