#pragma once

#include <cstdint>
#include <string>

#include "JobParser/Export.h"

namespace Torv::IO
{
class IStream;
}
namespace Torv::Log
{
class ILog;
}

namespace JobParser
{

class JobFile;
class SerializationContext;

/// One stretch of a job, which knows how to write itself again.
///
/// The law of the interface: size() is the number of bytes that save() writes.
class JOBPARSER_EXPORT IChunk
{
public:
    virtual ~IChunk();

    /// Writes the chunk's bytes. `file` is open on the job that the chunk was parsed from. Throws what the
    /// stream throws, and what JobFile::copyToFile does.
    virtual void save(JobFile& file, Torv::IO::IStream& stream) const = 0;

    /// Writes one line about the chunk to the log, at level 0.
    virtual void dump(Torv::Log::ILog& log) = 0;

    /// The chunk's data as a JSON object, from which the chunk can be made again.
    virtual std::string toJson(SerializationContext& context) const = 0;

    /// How many bytes save writes.
    virtual std::int64_t size() const = 0;
};

} // namespace JobParser
