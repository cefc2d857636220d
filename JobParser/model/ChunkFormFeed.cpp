#include "JobParser/model/ChunkFormFeed.h"

#include "Torv/IO/IStream.h"
#include "Torv/Log/ILog.h"

namespace JobParser
{

void ChunkFormFeed::save(JobFile&, Torv::IO::IStream& stream) const
{
    constexpr char formFeed = 12;
    stream.write(&formFeed, 1);
}

void ChunkFormFeed::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, "Form Feed", "", false, "", 0);
}

std::string ChunkFormFeed::toJson(SerializationContext&) const
{
    return "{}";
}

std::int64_t ChunkFormFeed::size() const
{
    return 1;
}

} // namespace JobParser
