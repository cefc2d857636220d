#include "JobParser/model/ChunkUel.h"

#include "JobParser/model/BaseParser.h"

#include "Torv/IO/IStream.h"
#include "Torv/Log/ILog.h"

namespace JobParser
{

void ChunkUel::save(JobFile&, Torv::IO::IStream& stream) const
{
    stream.write(uel.data(), uel.size());
}

void ChunkUel::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, "UEL", "", false, "", 0);
}

std::string ChunkUel::toJson(SerializationContext&) const
{
    return "{}";
}

std::int64_t ChunkUel::size() const
{
    return uel.size();
}

} // namespace JobParser
