#pragma once

#include <gtest/gtest.h>
#include <string>

#include "JobParser/languages/ChunkPclEsc.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/Pcl5Parser.h"
#include "JobParser/languages/PjlParser.h"
#include "JobParser/languages/PrescribeParser.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "tests/support/OpenJob.h"

namespace JobParser::Pcl5
{

/// The chunks of a job in words, as in "Raw 0+3, &l26A, FF, E".
inline std::string inWords(const Job& job)
{
    std::string words;
    for (const auto& chunk : job.chunks) {
        words += words.empty() ? "" : ", ";
        if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get())) {
            words += "Raw " + std::to_string(raw->offset) + "+" + std::to_string(raw->size());
        } else if (const auto* block = dynamic_cast<const ChunkPrescribe*>(chunk.get())) {
            words += "Prescribe " + std::to_string(block->ofs) + "+" + std::to_string(block->size());
        } else if (dynamic_cast<const ChunkFormFeed*>(chunk.get()) != nullptr) {
            words += "FF";
        } else if (const auto* esc = dynamic_cast<const ChunkPclEsc*>(chunk.get())) {
            words += static_cast<char>(esc->opGroupParam >> 16);
            if ((esc->opGroupParam & 0xFFFF) != 0) {
                words += static_cast<char>(esc->opGroupParam >> 8);
                words += esc->value.data();
                words += static_cast<char>(esc->opGroupParam);
            }
            if (esc->binSize != 0)
                words += "@" + std::to_string(esc->binOffset) + "+" + std::to_string(esc->binSize);
        } else {
            words += "?";
        }
    }
    return words;
}

struct Reading {
    explicit Reading(std::string_view bytes) : job(bytes), pjl(job.parent), prescribe(pjl), parser(prescribe)
    {
    }

    void parse() { parser.parse(info); }
    std::string chunks() const { return inWords(job.job); }

    OpenJob job;
    Pjl::Parser pjl;
    Prescribe::Parser prescribe;
    Parser parser;
    JobInfo info;
};

inline std::string parsed(std::string_view bytes)
{
    Reading reading(bytes);
    reading.parse();
    EXPECT_TRUE(reading.job.file.atEnd());
    return reading.chunks() + " | " + std::to_string(reading.parser.firstPageChunk);
}

} // namespace JobParser::Pcl5
