#include "JobParser/languages/ChunkPrescribe.h"

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"

#include "Torv/Format.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{

ChunkPrescribe::ChunkPrescribe(UnserializationContext&, const Torv::Variant& dto)
    : ofs(dto["ofs"].toInt64()), m_size(dto["size"].toInt64())
{
    if (m_size < 0)
        throw JobParserException(Torv::format("Negative size of a PRESCRIBE block | size=%I64d", m_size));
}

void ChunkPrescribe::save(JobFile& file, Torv::IO::IStream& stream) const
{
    file.copyToFile(stream, ofs, m_size);
}

void ChunkPrescribe::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("Prescribe (%I64d bytes)", m_size), "", false, "", 0);
}

std::string ChunkPrescribe::toJson(SerializationContext&) const
{
    Torv::Json::Object dto;
    dto.add("ofs", ofs);
    dto.add("size", m_size);
    return dto.take();
}

} // namespace JobParser
