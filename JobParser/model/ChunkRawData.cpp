#include "JobParser/model/ChunkRawData.h"

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"

#include "Torv/Format.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{

ChunkRawData::ChunkRawData(UnserializationContext&, const Torv::Variant& dto)
    : offset(dto["offset"].toInt64()), m_size(dto["size"].toInt64())
{
    if (m_size < 0)
        throw JobParserException(Torv::format("Negative size of raw data | size=%I64d", m_size));
}

void ChunkRawData::save(JobFile& file, Torv::IO::IStream& stream) const
{
    file.copyToFile(stream, offset, m_size);
}

void ChunkRawData::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("Raw (%I64d bytes)", m_size), "", false, "", 0);
}

std::string ChunkRawData::toJson(SerializationContext& context) const
{
    std::string json;
    appendJson(json, context);
    return json;
}

void ChunkRawData::appendJson(std::string& json, SerializationContext&) const
{
    json += R"({"offset":)";
    Torv::Json::appendNumber(json, offset);
    json += R"(,"size":)";
    Torv::Json::appendNumber(json, m_size);
    json += '}';
}

} // namespace JobParser
