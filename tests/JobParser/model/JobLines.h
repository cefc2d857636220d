#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "JobParser/Job.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"

namespace JobParser
{

using Lines = std::vector<std::string>;

/// "UEL", "FF" and "!R!" are these chunks, "null" is none; anything else is a PJL command.
inline std::shared_ptr<IChunk> chunkOf(const std::string& line)
{
    if (line == "UEL")
        return std::make_shared<ChunkUel>();
    if (line == "FF")
        return std::make_shared<ChunkFormFeed>();
    if (line == "!R!")
        return std::make_shared<ChunkPrescribe>(0, 0);
    if (line == "null")
        return nullptr;
    const std::size_t blank = line.find(' ');
    return std::make_shared<ChunkPjlCmd>(line.substr(0, blank),
                                         blank == std::string::npos ? "" : line.substr(blank + 1));
}

/// A job that was not changed since it was made.
inline Job jobOf(const Lines& lines)
{
    Job job;
    for (const std::string& line : lines)
        job.appendChunk(chunkOf(line));
    job.modified = false;
    return job;
}

inline std::string lineOf(const IChunk* chunk)
{
    if (chunk == nullptr)
        return "null";
    if (const auto* const cmd = dynamic_cast<const ChunkPjlCmd*>(chunk))
        return cmd->cmd + (cmd->param.empty() ? "" : " " + cmd->param);
    if (const auto* const text = dynamic_cast<const ChunkText*>(chunk))
        return "text " + text->text;
    if (dynamic_cast<const ChunkPrescribe*>(chunk) != nullptr)
        return "!R!";
    return dynamic_cast<const ChunkUel*>(chunk) != nullptr ? "UEL" : "FF";
}

inline Lines linesOf(const Job& job)
{
    Lines lines;
    for (const auto& chunk : job.chunks)
        lines.push_back(lineOf(chunk.get()));
    return lines;
}

} // namespace JobParser
