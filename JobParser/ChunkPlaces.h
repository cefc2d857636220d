#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "JobParser/Export.h"

namespace JobParser
{

class IChunk;
class Job;

/// A stretch of a job's file, in bytes.
struct FileRange {
    std::int64_t offset;
    std::int64_t size;
};

/// The stretch that a chunk stands for. Nothing for a chunk that is kept by meaning, such as a PJL line, and
/// for classes of a host's own. Ranges of metadata may be anything.
JOBPARSER_EXPORT std::optional<FileRange> fileRange(const IChunk& chunk);

/// Where a chunk stands in the job's file.
struct ChunkPlace {
    FileRange range;
    bool isExact; ///< False if the place was reckoned from the chunks around it, and their sizes do not add
                  ///< up.
};

/// The places of all chunks of a job that was parsed from a file of that size, within the file. Chunks that
/// are kept by meaning share what lies between those with a range, each by the size that it is saved with.
JOBPARSER_EXPORT std::vector<ChunkPlace> chunkPlaces(const Job& job, std::int64_t fileSize);

} // namespace JobParser
