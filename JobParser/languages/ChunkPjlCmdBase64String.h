#pragma once

#include "JobParser/Export.h"
#include "JobParser/languages/ChunkPjlCmd.h"

namespace JobParser
{

/// A PJL command line whose parameter stands in metadata as base 64. Only metadata brings it; parsing makes
/// ChunkPjlCmd.
class JOBPARSER_EXPORT ChunkPjlCmdBase64String : public ChunkPjlCmd
{
public:
    /// Reads "cmd", and "param" as base 64, up to the first byte that is none. Throws
    /// Torv::VariantInvalidOperationException if one is missing or no string.
    ChunkPjlCmdBase64String(UnserializationContext& context, const Torv::Variant& dto);

    std::string toJson(SerializationContext& context) const override;
};

} // namespace JobParser
