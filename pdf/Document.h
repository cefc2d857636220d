#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "JobParser/Export.h"
#include "pdf/Object.h"
#include "pdf/Reference.h"

namespace Pdf
{

/// The objects of a PDF that is being put together. Nothing fills one yet: ChunkPdf holds an empty one, so
/// that its place in the interface is taken.
class JOBPARSER_EXPORT Document
{
public:
    std::vector<Reference> order;
    std::map<std::uint8_t, Reference> slots;
    int nextNumber = 1;
    std::map<Reference, Object> objects;
};

} // namespace Pdf
