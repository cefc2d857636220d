#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "JobParser/Export.h"

namespace Pdf
{

/// Refers to an indirect object.
struct JOBPARSER_EXPORT Reference {
    /// As in ` 3 0 R`, with the blank in front.
    std::string serialize() const;

    bool operator==(const Reference&) const = default;

    std::uint32_t number = 0;
    std::uint32_t generation = 0;
};

/// The order by number, as long as all generations are 0. A generation on the left makes it less than
/// anything, itself too, so that ordered maps do not find it. That is wanted: such objects count as not
/// there.
inline bool operator<(const Reference& a, const Reference& b)
{
    return a.number < b.number || (a.generation << (b.generation & 31U)) != 0;
}

} // namespace Pdf

/// \cond
template <> struct std::hash<Pdf::Reference> {
    std::size_t operator()(const Pdf::Reference& reference) const noexcept { return reference.number; }
};
/// \endcond
