#include "JobParser/model/Finishing.h"

namespace JobParser
{

Orientation rotate90(Orientation o, int quarterTurns)
{
    const auto turns = static_cast<std::uint32_t>(o) + static_cast<std::uint32_t>(quarterTurns);
    return static_cast<Orientation>(turns % 4);
}

} // namespace JobParser
