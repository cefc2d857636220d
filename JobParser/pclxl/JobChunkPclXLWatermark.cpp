#include "JobParser/pclxl/JobChunkPclXLWatermark.h"

#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/Format.h"
#include "Torv/Json/Array.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"
#include "Torv/VariantIterator.h"

namespace JobParser
{

JobChunkPclXLWatermark::JobChunkPclXLWatermark(UnserializationContext& context, const Torv::Variant& dto)
    : m_size(dto["size"].toInt64())
{
    const Torv::Variant list = dto["chunks"];
    if (!list.isArray())
        throw Torv::VariantInvalidOperationException("The chunks of a PCL XL watermark are no array");
    chunks.reserve(list.size());
    for (Torv::VariantIterator it = list.begin(), end = list.end(); !(it == end); ++it)
        chunks.push_back(context.unserializeChunk(*it));
}

void JobChunkPclXLWatermark::addChunk(const std::shared_ptr<IChunk>& chunk)
{
    // Sizes of metadata may add up to anything, so that the sum wraps.
    const auto added = static_cast<std::uint64_t>(chunk ? chunk->size() : 0);
    m_size = static_cast<std::int64_t>(static_cast<std::uint64_t>(m_size) + added);
    chunks.push_back(chunk);
}

void JobChunkPclXLWatermark::save(JobFile& file, Torv::IO::IStream& stream) const
{
    for (const auto& chunk : chunks) {
        if (chunk)
            chunk->save(file, stream);
    }
}

void JobChunkPclXLWatermark::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("Watermark: chunk count %zu", chunks.size()), "", false, "",
              0);
    for (const auto& chunk : chunks) {
        if (chunk)
            chunk->dump(log);
    }
}

std::string JobChunkPclXLWatermark::toJson(SerializationContext& context) const
{
    Torv::Json::Array list;
    for (const auto& chunk : chunks)
        list.addJson(context.serializePart(chunk));
    Torv::Json::Object dto;
    dto.add("size", m_size);
    dto.add("chunks", list);
    return dto.take();
}

} // namespace JobParser
