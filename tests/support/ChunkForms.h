#pragma once

#include <memory>
#include <string>

#include "JobParser/IChunk.h"
#include "JobParser/JobFile.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"
#include "Torv/Variant.h"

/// The forms that a chunk takes: bytes, a line of the log, data.
namespace ChunkForms
{

/// `file` may be closed for a chunk that refers to no bytes of it.
inline std::string saved(const JobParser::IChunk& chunk, JobParser::JobFile& file)
{
    Torv::IO::StringStream stream;
    chunk.save(file, stream);
    return stream.str();
}

inline std::string saved(const JobParser::IChunk& chunk)
{
    JobParser::JobFile closed;
    return saved(chunk, closed);
}

inline std::string dumped(JobParser::IChunk& chunk)
{
    Torv::Log::LogString log;
    chunk.dump(log);
    return log.getAndClear();
}

inline std::string json(const JobParser::IChunk& chunk)
{
    JobParser::SerializationContext context;
    return chunk.toJson(context);
}

/// Made from the text of its data.
template <typename Chunk> std::shared_ptr<Chunk> made(const std::string& dto)
{
    JobParser::UnserializationContext context;
    return std::make_shared<Chunk>(context, Torv::Json::parse(dto));
}

} // namespace ChunkForms
