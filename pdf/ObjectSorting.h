#pragma once

#include "pdf/Value.h"

namespace Pdf::Parser
{

class ValueTape;

/// Where an object of the file goes.
enum class Destination { Dropped, Embeddable, PageNodes, Pages, Catalog, Trailers };

/// Where the object with this value goes.
Destination destinationOf(const Value& value);

/// Whether an object may be kept. True in doubt; what is false need not even be built.
bool mayBeKept(const ValueTape& tape);

} // namespace Pdf::Parser
