#pragma once

#include <string_view>

namespace JobParser::Tool
{

// The page of tools/show as far as the place where the job's data go in, and from there on.
extern const std::string_view showPageHead;
extern const std::string_view showPageTail;

} // namespace JobParser::Tool
