#include "JobParser/model/ChunkText.h"

#include <algorithm>
#include <limits>

#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{

ChunkText::ChunkText(UnserializationContext&, const Torv::Variant& dto) : text(dto["text"].toString()) {}

void ChunkText::save(JobFile&, Torv::IO::IStream& stream) const
{
    constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t written = 0; written < text.size(); written += most)
        stream.write(text.data() + written,
                     static_cast<std::uint32_t>(std::min(most, text.size() - written)));
}

void ChunkText::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, "Text", "", false, "", 0);
}

std::string ChunkText::toJson(SerializationContext&) const
{
    Torv::Json::Object dto;
    dto.add("text", text);
    return dto.take();
}

} // namespace JobParser
