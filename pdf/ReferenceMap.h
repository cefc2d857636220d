#pragma once

#include <cstddef>
#include <unordered_map>

#include "JobParser/Export.h"
#include "pdf/Reference.h"

namespace Pdf
{

/// Hashes both numbers, in another way in every process. Files choose the numbers of their objects: with
/// those alone a small file makes a map one long list.
struct JOBPARSER_EXPORT ReferenceHash {
    std::size_t operator()(const Reference& reference) const noexcept;
};

template <typename Mapped> using ReferenceMap = std::unordered_map<Reference, Mapped, ReferenceHash>;

} // namespace Pdf
