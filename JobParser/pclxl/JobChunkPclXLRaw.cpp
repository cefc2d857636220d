#include "JobParser/pclxl/JobChunkPclXLRaw.h"

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"

#include "Torv/Format.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

// Ranges of metadata may be anything, so that the distance wraps.
std::int64_t distance(std::int64_t from, std::int64_t to)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from));
}

} // namespace

JobChunkPclXLRaw::JobChunkPclXLRaw(UnserializationContext&, const Torv::Variant& dto)
    : start(dto["start"].toInt64()), end(dto["end"].toInt64())
{
    if (JobChunkPclXLRaw::size() < 0)
        throw JobParserException(
            Torv::format("Negative size of a PCL XL range | start=%I64d | end=%I64d", start, end));
}

void JobChunkPclXLRaw::save(JobFile& file, Torv::IO::IStream& stream) const
{
    file.copyToFile(stream, start, JobChunkPclXLRaw::size());
}

// Shows the distance of the two bytes, one less than the size.
void JobChunkPclXLRaw::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("Raw (%I64d bytes)", distance(start, end)), "", false, "",
              0);
}

std::string JobChunkPclXLRaw::toJson(SerializationContext&) const
{
    Torv::Json::Object dto;
    dto.add("start", start);
    dto.add("end", end);
    return dto.take();
}

std::int64_t JobChunkPclXLRaw::size() const
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(distance(start, end)) + 1);
}

} // namespace JobParser
