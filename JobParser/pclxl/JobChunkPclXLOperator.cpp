#include "JobParser/pclxl/JobChunkPclXLOperator.h"

#include "JobParser/JobParserException.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"
#include "JobParser/pclxl/JobChunkPclXLAttribute.h"

#include "Torv/Format.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Array.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"
#include "Torv/VariantIterator.h"

namespace JobParser
{
namespace
{

const char* nameOf(tag_t op)
{
    if (op == tag_t::EndPage)
        return "( EndPage )";
    return op == tag_t::BeginPage ? "( BeginPage )" : "";
}

} // namespace

JobChunkPclXLOperator::JobChunkPclXLOperator(tag_t op, std::int64_t rangeStart, std::int64_t rangeEnd)
    : JobChunkPclXLRaw(rangeStart, rangeEnd), m_operator(op)
{
}

// The range only tells where the operator stood, so that it may be anything.
JobChunkPclXLOperator::JobChunkPclXLOperator(UnserializationContext& context, const Torv::Variant& dto)
    : JobChunkPclXLRaw(dto["start"].toInt64(), dto["end"].toInt64()),
      m_operator(static_cast<tag_t>(dto["operator"].toInt()))
{
    const Torv::Variant list = dto["attributes"];
    if (!list.isArray())
        throw Torv::VariantInvalidOperationException("The attributes of a PCL XL operator are no array");
    attributes.reserve(list.size());
    for (Torv::VariantIterator it = list.begin(), last = list.end(); !(it == last); ++it) {
        auto attribute = std::dynamic_pointer_cast<JobChunkPclXLAttribute>(context.unserializeChunk(*it));
        if (!attribute)
            throw JobParserException("Invalid chunk class. CJobChunkPclXLAttribute expected.");
        attributes.push_back(std::move(attribute));
    }
}

void JobChunkPclXLOperator::save(JobFile& file, Torv::IO::IStream& stream) const
{
    for (const auto& attribute : attributes)
        attribute->save(file, stream);
    stream.write(&m_operator, 1);
}

void JobChunkPclXLOperator::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("PCL XL operator %s", nameOf(m_operator)), "", false, "", 0);
    for (const auto& attribute : attributes)
        attribute->dump(log);
}

std::string JobChunkPclXLOperator::toJson(SerializationContext& context) const
{
    Torv::Json::Array list;
    for (const auto& attribute : attributes)
        list.addJson(context.serializePart(attribute));
    Torv::Json::Object dto;
    dto.add("operator", m_operator);
    dto.add("start", start);
    dto.add("end", end);
    dto.add("attributes", list);
    return dto.take();
}

std::int64_t JobChunkPclXLOperator::size() const
{
    std::uint64_t sum = 1;
    for (const auto& attribute : attributes)
        sum += static_cast<std::uint64_t>(attribute->size());
    return static_cast<std::int64_t>(sum);
}

} // namespace JobParser
