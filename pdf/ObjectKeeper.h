#pragma once

#include <map>
#include <utility>
#include <vector>

#include "pdf/Object.h"
#include "pdf/Reference.h"

namespace Pdf::Parser
{

/// Puts objects into maps by their references.
///
/// A reference with a generation is less than all others, and never found. A map in which such ones stand
/// loses others, if it compares anything with them while it grows; so they come to it last.
class ObjectKeeper
{
public:
    using Objects = std::map<Reference, Object>;

    /// Replaces what stands in the map under the object's reference. With a generation, it is set aside until
    /// finish(); the map lives until then.
    void put(Objects& objects, Object&& object);

    /// Puts what was set aside in front of the others, in the order in which it came.
    void finish();

    /// Drops what was set aside.
    void clear() { m_aside.clear(); }

private:
    void setAside(Objects& objects);

    std::vector<std::pair<Objects*, Object>> m_aside;
};

} // namespace Pdf::Parser
