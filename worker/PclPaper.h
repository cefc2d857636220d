#pragma once

#include <string_view>

#include "worker/JobFacts.h"

namespace JobParser::Worker
{

/// The upright sheet of a number of `ESC & l # A`; 0 by 0 for a number that is not known.
PageSize pclPaper(int code);

/// The upright sheet of a number of the media sizes of PCL XL, and of one of its names, in any case; 0 by 0
/// if it is not known.
PageSize pclXlPaper(int number);
PageSize pclXlPaper(std::string_view name);

/// The sheet as it lies: turned for the odd quarter turns.
PageSize turned(PageSize sheet, int orientation);

} // namespace JobParser::Worker
