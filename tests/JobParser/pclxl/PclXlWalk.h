#pragma once

#include <string>

#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/pclxl/Operator.h"
#include "JobParser/pclxl/PclXLParser.h"
#include "tests/support/OpenJob.h"
#include "tests/support/PclXlBytes.h"
#include "tests/support/ThrowingAssertions.h"

#include "Torv/GenericException.h"

namespace JobParser
{

inline constexpr int mediaSize = 37;
inline constexpr int pageCopies = 49;
inline constexpr int textData = 171;
inline constexpr std::int64_t viewSize = 4194304;

inline constexpr auto endOfFile = "Unexpected end of file";
inline constexpr auto assertion = "count > 0, JobFile, advancePos";

inline void ignoreBlock(const std::string&) {}

/// The chunks of a stream in words, as in "raw 0-3, C 4-8": a range, or an operator with the range of it. The
/// stream begins at `base`.
inline std::string inWords(const PclXLParser::Chunks& chunks, std::int64_t base = 0)
{
    std::string words;
    for (const auto& chunk : chunks) {
        const auto& range = dynamic_cast<const JobChunkPclXLRaw&>(*chunk);
        const auto* op = dynamic_cast<const JobChunkPclXLOperator*>(chunk.get());
        words += words.empty() ? "" : ", ";
        words += op == nullptr ? "raw" : std::string(1, static_cast<char>(op->m_operator));
        words += " " + std::to_string(range.start - base) + "-" + std::to_string(range.end - base);
    }
    return words;
}

/// The chunks, or what was thrown: the message and, if it is not 0, the number.
inline std::string walked(JobFile& file)
{
    const std::int64_t base = file.m_offset;
    PclXLParser parser(file, ignoreBlock);
    try {
        parser.parse();
        return inWords(parser.m_chunks, base);
    } catch (const Torv::GenericException& error) {
        return error.what() + (error.code() == 0 ? std::string() : " / " + std::to_string(error.code()));
    }
}

inline std::string walked(std::string_view bytes)
{
    const ThrowingAssertions throwing;
    // As behind a header line: an operator at the very start of a file would be counted to the range before
    // it.
    OpenJob job("\n" + std::string(bytes));
    job.file.setPos(1);
    return walked(job.file);
}

inline std::string walked(const PclXlBytes& bytes)
{
    return walked(std::string_view(bytes.str()));
}

} // namespace JobParser
