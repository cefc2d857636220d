#include "JobParser/pclxl/JobChunkPclXLRawWithData.h"

#include <algorithm>
#include <string>
#include <utility>

#include "Torv/Ascii.h"
#include "Torv/Encoding.h"
#include "Torv/Format.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

int hexDigit(char character)
{
    const auto byte = Torv::Ascii::toLower(static_cast<std::uint8_t>(character));
    if (Torv::Ascii::isDigit(byte))
        return byte - '0';
    return byte >= 'a' && byte <= 'f' ? byte - 'a' + 10 : 0;
}

} // namespace

JobChunkPclXLRawWithData::JobChunkPclXLRawWithData(UnserializationContext&, const Torv::Variant& dto)
{
    const std::string text = dto["rawData"].toString();
    data.reserve(text.size() / 2);
    for (std::size_t index = 0; index + 1 < text.size(); index += 2)
        data.push_back(static_cast<std::uint8_t>(hexDigit(text[index]) << 4 | hexDigit(text[index + 1])));
}

void JobChunkPclXLRawWithData::setData(std::vector<std::uint8_t>&& newData)
{
    data = std::move(newData);
}

void JobChunkPclXLRawWithData::save(JobFile&, Torv::IO::IStream& stream) const
{
    // A stream takes at most 4 GiB at a time.
    constexpr std::size_t limit = 0x40000000;
    for (std::size_t at = 0; at < data.size(); at += std::min(data.size() - at, limit))
        stream.write(&data[at], static_cast<std::uint32_t>(std::min(data.size() - at, limit)));
}

void JobChunkPclXLRawWithData::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, Torv::format("Raw with data (%zu bytes)", data.size()), "", false, "", 0);
}

std::string JobChunkPclXLRawWithData::toJson(SerializationContext&) const
{
    Torv::Json::Object dto;
    dto.add("rawData", Torv::Encoding::hexEncode(data));
    return dto.take();
}

} // namespace JobParser
