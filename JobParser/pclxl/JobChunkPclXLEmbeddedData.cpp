#include "JobParser/pclxl/JobChunkPclXLEmbeddedData.h"

#include <array>

#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"
#include "JobParser/pclxl/JobChunkPclXLRawWithData.h"
#include "JobParser/pclxl/PclXLTags.h"

#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

constexpr std::int64_t maxByteLength = 255;

} // namespace

JobChunkPclXLEmbeddedData::JobChunkPclXLEmbeddedData(UnserializationContext& context,
                                                     const Torv::Variant& dto)
    : data(context.unserializeChunk(dto["data"]))
{
}

void JobChunkPclXLEmbeddedData::setData(const std::shared_ptr<JobChunkPclXLRawWithData>& newData)
{
    data = std::dynamic_pointer_cast<IChunk>(newData);
    if (newData && !data)
        throw Torv::GenericException("Invalid conversion from CJobChunkPclXLRawWithData::Ptr to CChunkPtr.");
}

void JobChunkPclXLEmbeddedData::save(JobFile& file, Torv::IO::IStream& stream) const
{
    const std::int64_t length = dataSize();
    const auto byteOf = [length](int shift) { return static_cast<std::uint8_t>(length >> shift); };
    if (length > maxByteLength) {
        const std::array<std::uint8_t, 5> start{static_cast<std::uint8_t>(tag_t::EmbeddedData), byteOf(0),
                                                byteOf(8), byteOf(16), byteOf(24)};
        stream.write(start.data(), start.size());
    } else {
        const std::array<std::uint8_t, 2> start{static_cast<std::uint8_t>(tag_t::EmbeddedDataByte),
                                                byteOf(0)};
        stream.write(start.data(), start.size());
    }
    if (data)
        data->save(file, stream);
}

void JobChunkPclXLEmbeddedData::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("Embedded Data: %I64d", JobChunkPclXLEmbeddedData::size()),
              "", false, "", 0);
    if (data)
        data->dump(log);
}

std::string JobChunkPclXLEmbeddedData::toJson(SerializationContext& context) const
{
    Torv::Json::Object dto;
    dto.addJson("data", context.serializePart(data));
    return dto.take();
}

std::int64_t JobChunkPclXLEmbeddedData::size() const
{
    const std::uint64_t around = dataSize() > maxByteLength ? 5 : 2;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(dataSize()) + around);
}

} // namespace JobParser
