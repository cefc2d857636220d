#include "JobParser/xps/ChunkXps.h"

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"

#include "Torv/Format.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{

ChunkXps::ChunkXps(UnserializationContext&, const Torv::Variant& dto)
    : offset(dto["offset"].toInt64()), m_size(dto["size"].toInt64())
{
    if (m_size < 0)
        throw JobParserException(Torv::format("Negative size of an XPS package | size=%I64d", m_size));
}

void ChunkXps::save(JobFile& file, Torv::IO::IStream& stream) const
{
    file.copyToFile(stream, offset, m_size);
}

void ChunkXps::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("XPS Raw (%I64d bytes)", m_size), "", false, "", 0);
}

std::string ChunkXps::toJson(SerializationContext&) const
{
    Torv::Json::Object dto;
    dto.add("offset", offset);
    dto.add("size", m_size);
    return dto.take();
}

} // namespace JobParser
