#include "JobParser/languages/ChunkPclEsc.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"

#include "Torv/Assert.h"
#include "Torv/Format.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Number.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

constexpr char escape = 0x1B;
// ESC, op, group and parameter.
constexpr std::int64_t bytesAroundValue = 4;

} // namespace

ChunkPclEsc::ChunkPclEsc(UnserializationContext&, const Torv::Variant& dto)
    : opGroupParam(static_cast<std::int32_t>(dto["opGroupParam"].toInt64())),
      binOffset(dto["binOffset"].toInt64()), binSize(dto["binSize"].toInt64())
{
    if (binSize < 0)
        throw JobParserException("PCL: Negative binary data size");
    const std::string text = dto["value"].toString();
    // The value ends at a zero byte, so that what fills all of its room has no end.
    const std::size_t length = std::min(text.find('\0'), text.size());
    if (length < value.size())
        std::copy_n(text.begin(), length, value.begin());
}

void ChunkPclEsc::process()
{
    if (!hasPayload(opGroupParam))
        return;
    binSize = Torv::atoi(value.data());
    if (binSize < 0)
        throw JobParserException("PCL: Negative binary data size");
}

void ChunkPclEsc::setValue(int number)
{
    value.fill('\0');
    std::to_chars(value.data(), value.data() + maxValueLength, number);
}

void ChunkPclEsc::save(JobFile& file, Torv::IO::IStream& stream) const
{
    const std::array<char, 3> start{escape, op(), group()};
    if (isTwoByte()) {
        stream.write(start.data(), 2);
        return;
    }
    stream.write(start.data(), 3);
    stream.write(value.data(), static_cast<std::uint32_t>(std::strlen(value.data())));
    const char last = param();
    stream.write(&last, 1);
    if (binSize != 0)
        file.copyToFile(stream, binOffset, binSize);
}

std::int64_t ChunkPclEsc::size() const
{
    if (isTwoByte())
        return 2;
    const auto valueLength = static_cast<std::uint64_t>(std::strlen(value.data()));
    return static_cast<std::int64_t>(valueLength + static_cast<std::uint64_t>(binSize) + bytesAroundValue);
}

void ChunkPclEsc::dump(Torv::Log::ILog& log)
{
    const char m_group = group();
    std::string line = Torv::format("ESC %c", op());
    if (binSize != 0)
        TORV_ASSERT(m_group, "ChunkPclEsc");
    if (!isTwoByte())
        line += Torv::format(" %c %s %c", m_group, value.data(), param());
    if (binSize != 0)
        line += Torv::format(" - binary at 0x%I64X, size 0x%I64X", binOffset, binSize);
    log.write(Torv::Log::LevelDump, line, "", false, "", 0);
}

std::string ChunkPclEsc::toJson(SerializationContext&) const
{
    Torv::Json::Object dto;
    dto.add("opGroupParam", opGroupParam);
    dto.add("binOffset", binOffset);
    dto.add("binSize", binSize);
    dto.add("value", value.data());
    return dto.take();
}

} // namespace JobParser
