#pragma once

#include <array>

#include "pdf/Name.h"

namespace Pdf::Parser
{

/// Which bytes divide tokens. A percent sign is one of them, since a comment is white space.
inline constexpr std::array<bool, 256> isWsCharacter =
    Detail::flagsOf(std::string_view("\0\t\n\f\r %", 7), true);

} // namespace Pdf::Parser
