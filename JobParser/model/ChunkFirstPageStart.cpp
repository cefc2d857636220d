#include "JobParser/model/ChunkFirstPageStart.h"

#include "Torv/Log/ILog.h"

namespace JobParser
{

void ChunkFirstPageStart::save(JobFile&, Torv::IO::IStream&) const {}

void ChunkFirstPageStart::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, "First page start", "", false, "", 0);
}

std::string ChunkFirstPageStart::toJson(SerializationContext&) const
{
    return "{}";
}

std::int64_t ChunkFirstPageStart::size() const
{
    return 0;
}

} // namespace JobParser
