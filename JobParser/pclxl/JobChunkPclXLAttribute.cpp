#include "JobParser/pclxl/JobChunkPclXLAttribute.h"

#include <array>

#include "JobParser/JobParserException.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"
#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"

#include "Torv/Format.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{

JobChunkPclXLAttribute::JobChunkPclXLAttribute(attribute_t id, const JobChunkPclXLAttributeValue& value)
    : attribute(id), chunk(std::make_shared<JobChunkPclXLAttributeValue>(value))
{
}

JobChunkPclXLAttribute::JobChunkPclXLAttribute(attribute_t id, const JobChunkPclXLRaw& raw)
    : attribute(id), chunk(std::make_shared<JobChunkPclXLRaw>(raw))
{
}

JobChunkPclXLAttribute::JobChunkPclXLAttribute(UnserializationContext& context, const Torv::Variant& dto)
    : attribute(static_cast<attribute_t>(dto["attribute"].toInt())),
      chunk(context.unserializeChunk(dto["chunk"]))
{
    if (!chunk)
        throw JobParserException("Attribute without a value in metadata");
}

void JobChunkPclXLAttribute::save(JobFile& file, Torv::IO::IStream& stream) const
{
    chunk->save(file, stream);
    const std::array<std::uint8_t, 2> id{static_cast<std::uint8_t>(tag_t::AttributeId),
                                         static_cast<std::uint8_t>(attribute)};
    stream.write(id.data(), id.size());
}

void JobChunkPclXLAttribute::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("     Attr: %s", attrName(attribute).c_str()), "", false, "",
              0);
}

std::string JobChunkPclXLAttribute::toJson(SerializationContext& context) const
{
    Torv::Json::Object dto;
    dto.add("attribute", attribute);
    dto.addJson("chunk", context.serializePart(chunk));
    return dto.take();
}

std::int64_t JobChunkPclXLAttribute::size() const
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(chunk->size()) + 2);
}

} // namespace JobParser
