#pragma once

#include <gtest/gtest.h>
#include <string>

#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/ChunkPsComment.h"
#include "JobParser/languages/PjlParser.h"
#include "JobParser/languages/PostScriptParser.h"
#include "JobParser/languages/PrescribeParser.h"
#include "JobParser/model/ChunkRawData.h"
#include "tests/support/OpenJob.h"

namespace JobParser::PostScript
{

inline constexpr std::string_view exitLanguage = "\x1B%-12345X";

/// The chunks of a job in words, as in "Raw 0+3, %%EOF\n".
inline std::string inWords(const Job& job)
{
    std::string words;
    for (const auto& chunk : job.chunks) {
        words += words.empty() ? "" : ", ";
        if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get()))
            words += "Raw " + std::to_string(raw->offset) + "+" + std::to_string(raw->size());
        else if (const auto* block = dynamic_cast<const ChunkPrescribe*>(chunk.get()))
            words += "Prescribe " + std::to_string(block->ofs) + "+" + std::to_string(block->size());
        else if (const auto* comment = dynamic_cast<const ChunkPsComment*>(chunk.get()))
            words += comment->comment;
        else
            words += "?";
    }
    return words;
}

struct Reading {
    explicit Reading(std::string_view bytes) : job(bytes), pjl(job.parent), prescribe(pjl) {}

    void parse() { parser.parse(info); }
    std::string chunks() const { return inWords(job.job); }

    OpenJob job;
    Pjl::Parser pjl;
    Prescribe::Parser prescribe;
    Parser parser{job.parent, &prescribe, &pjl, PaperOrientationParser(job.parent), {}, {}, 0};
    JobInfo info;
};

inline std::string parsed(std::string_view bytes)
{
    Reading reading(bytes);
    reading.parse();
    EXPECT_TRUE(reading.job.file.atEnd());
    return reading.chunks();
}

inline JobInfo facts(std::string_view bytes)
{
    Reading reading(bytes);
    reading.parse();
    return reading.info;
}

} // namespace JobParser::PostScript
