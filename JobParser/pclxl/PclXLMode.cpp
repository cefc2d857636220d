// How a PCL XL stream is reached from the raw stream, and what it contributes to the record.

#include <array>
#include <cstring>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/model/GlobalParser.h"
#include "JobParser/paper/PclXlUtils.h"
#include "JobParser/pclxl/JobChunkPclXLRaw.h"
#include "JobParser/pclxl/PclXLParser.h"

#include "Torv/BytePairs.h"
#include "Torv/Format.h"

namespace JobParser::Global
{
namespace
{

// The binding with the least significant byte first; no other one is read.
constexpr std::string_view streamHeader = ") HP-PCL XL;";
constexpr std::string_view blockStart = "!R!";
constexpr std::uint8_t lineFeed = 10;

// Passes what can begin neither a header nor a UEL nor a PRESCRIBE block.
void skipToCandidate(JobFile& file)
{
    static constexpr std::array<std::uint8_t, 2> singles{')', 0x1B};
    static constexpr Torv::BytePair blockPair{'!', 'R'};

    while (!file.atEnd()) {
        const auto bytes = file.window();
        const std::size_t count = Torv::findByteOrPair(bytes, singles, blockPair);
        if (count != 0)
            file.advancePos(static_cast<std::int64_t>(count));
        if (count != bytes.size())
            return;
    }
}

void skipLine(JobFile& file)
{
    while (!file.atEnd()) {
        const auto bytes = file.window();
        const void* const found = std::memchr(bytes.data(), lineFeed, bytes.size());
        if (found != nullptr) {
            file.advancePos(static_cast<const std::uint8_t*>(found) - bytes.data() + 1);
            return;
        }
        file.advancePos(std::ssize(bytes));
    }
}

Duplex exchanged(Duplex duplex)
{
    if (duplex == Duplex::LongEdge)
        return Duplex::ShortEdge;
    return duplex == Duplex::ShortEdge ? Duplex::LongEdge : duplex;
}

void parseStream(PclXLParser& stream)
{
    try {
        stream.parse();
    } catch (const std::exception& error) {
        throw JobParserException(Torv::format("PCL XL parser error: %s", error.what()));
    } catch (...) {
        throw JobParserException("PCL XL parser error");
    }
}

// The two values name an edge of the page as it is read, so that a page on its side exchanges them; a driver
// of Lexmark has it the other way round.
Duplex duplexOf(const PclXLParser& stream)
{
    const bool isLandscape = (stream.m_orientation & 1) != 0;
    return stream.m_swapBinding != isLandscape ? exchanged(stream.m_duplex) : stream.m_duplex;
}

} // namespace

void Parser::pcl6Mode()
{
    std::int64_t start = file.m_offset;
    for (skipToCandidate(file); !file.atEnd(); skipToCandidate(file)) {
        if (match(streamHeader, true, false))
            break;
        if (match(blockStart, true, false)) {
            if (file.m_offset != start)
                job.appendChunk(std::make_shared<JobChunkPclXLRaw>(start, file.m_offset - 1));
            prescribe.parse();
            start = file.m_offset;
        } else if (matchUel()) {
            file.returnChar(static_cast<std::int64_t>(uel.size()));
            return;
        } else {
            file.getChar();
        }
    }
    skipLine(file);
    job.appendChunk(std::make_shared<JobChunkPclXLRaw>(start, file.m_offset - 1));
    if (file.atEnd())
        throw JobParserException("PCL XL stream is empty");
    parsePclXl();
}

void Parser::parsePclXl()
{
    // Chunks of blocks in comments are dropped: the comments are chunks of the stream themselves.
    PclXLParser stream(file, [this](const std::string& block) { prescribe.getChunks(block); });
    parseStream(stream);
    for (auto& chunk : stream.m_chunks)
        job.appendChunk(std::move(chunk));
    pdlJobInfo.setCopies(static_cast<int>(stream.m_copies));
    pdlJobInfo.setDuplex(duplexOf(stream));
    pdlJobInfo.setOrientation(stream.m_orientation);
    if (!stream.m_mediaSizes.empty())
        pdlJobInfo.setPaper(PclXlUtils::getLargestPaper(stream.m_mediaSizes, paperList));
    pdlJobInfo.addFonts(stream.m_fonts);
}

} // namespace JobParser::Global
