#pragma once

#include <cstdint>

#include "JobParser/JobInfo.h"
#include "JobParser/model/BaseParser.h"

namespace JobParser
{
class ChunkPclEsc;
}

namespace JobParser::Prescribe
{
class Parser;
}

namespace JobParser::Pcl5
{

/// What Parser::getToken found.
enum class Pcl5Token : int { Text = 0, Uel = 1, EndOfFile = 2, Prescribe = 3, Escape = 4, FormFeed = 5 };

/// Cuts a PCL 5 body into chunks: escape sequences that a rewriter may want to touch, form feeds, and raw
/// data for all the rest. Paper, orientation, duplex and copies are read from the sequences; payloads are
/// stepped over.
///
/// Starts at the position of the file and ends at a UEL, which stays unread, or at the end of the data.
/// Belongs to the thread that parses the job.
class Parser : public BaseParser
{
public:
    /// `prescribeParser` reads the PRESCRIBE blocks of the body, and outlives this parser.
    explicit Parser(Prescribe::Parser& prescribeParser);

    /// Walks one body. Facts go to `info`. Throws JobParserException for a malformed sequence; then the
    /// chunks appended so far stay, and the raw data behind them is lost.
    void parse(JobInfo& info);

    /// Reads the next token. A UEL and a PRESCRIBE block stay unread. Throws as parse does.
    Pcl5Token getToken();

    /// Index in the job's chunks at which the first page of the last body starts; -1 if there was no body.
    std::int32_t firstPageChunk = -1;

    /// Whether the sequences of the Escape that was read last become chunks.
    bool isKept = false;

private:
    template <typename Visit> void readEscape(const Visit& visit);
    std::uint8_t readValue(ChunkPclEsc& sequence);
    void takePayload(ChunkPclEsc& sequence, std::uint8_t param);
    std::uint8_t nextOfEscape();
    void skipIdleTokens();
    void skipText();
    void takeEscapes(std::int64_t tokenStart, JobInfo& info);
    void processEsc(const ChunkPclEsc& sequence, JobInfo& info);
    void flushRawData(std::int64_t end);

    Prescribe::Parser* prescribe;
    std::int32_t textParsingMethod = 0;

    // Whether the Escape that was read last says something about the job.
    bool m_hasFacts = false;

    // Of the body being walked.
    std::int64_t m_rawStart = 0;
    bool m_firstPage = true;
};

} // namespace JobParser::Pcl5
