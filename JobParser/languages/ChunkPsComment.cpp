#include "JobParser/languages/ChunkPsComment.h"

#include <algorithm>
#include <limits>

#include "Torv/IO/IStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/ILog.h"
#include "Torv/Text.h"
#include "Torv/Variant.h"

namespace JobParser
{

ChunkPsComment::ChunkPsComment(UnserializationContext&, const Torv::Variant& dto)
    : comment(dto["comment"].toString())
{
}

void ChunkPsComment::save(JobFile&, Torv::IO::IStream& stream) const
{
    constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
    const std::size_t end = std::min(comment.find('\0'), comment.size());
    for (std::size_t written = 0; written < end; written += most)
        stream.write(comment.data() + written, static_cast<std::uint32_t>(std::min(most, end - written)));
}

void ChunkPsComment::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, std::string(Torv::trim(comment)), "", false, "", 0);
}

std::string ChunkPsComment::toJson(SerializationContext& context) const
{
    std::string json;
    appendJson(json, context);
    return json;
}

void ChunkPsComment::appendJson(std::string& json, SerializationContext&) const
{
    json += R"({"comment":")";
    Torv::Json::appendCharacters(json, comment);
    json += '"';
    json += '}';
}

} // namespace JobParser
