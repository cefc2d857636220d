#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "JobParser/IChunk.h"
#include "JobParser/JobInfo.h"
#include "JobParser/languages/PrescribeCmd.h"
#include "JobParser/model/BaseParser.h"

#include "Torv/BytePairs.h"

namespace JobParser::Pjl
{
class Parser;
}

namespace JobParser::Prescribe
{

/// Reads PRESCRIBE blocks, from `!R!` to `EXIT;`, wherever they stand in a job: copies, duplex, paper, and
/// the page counts that the KX driver reports in `CMNT` commands.
///
/// A block begins at the position of the file and is left behind its end. One parser serves all blocks of a
/// job, so that their counts add up. Belongs to the thread that parses the job.
class Parser : public BaseParser
{
public:
    /// `pjlParser` knows the copies that PJL asked for, and outlives this parser.
    explicit Parser(Pjl::Parser& pjlParser);

    /// Whether a block begins at the position, which stays: `!R!` with an `EXIT;`, in any case, among the
    /// hundred bytes from the `!` on.
    bool guessPrescribe();

    /// The offset up to which, from the position on, no block can begin, as far as former guesses have
    /// looked; the position itself if nothing is known.
    std::int64_t noBlockBefore() const;

    /// Reads the block at the position and appends its chunk to the job. Throws JobParserException if the
    /// block is malformed; then there is no chunk, but the record keeps what the block said so far.
    void parse();

    /// Reads a block that is held in a string. The chunks refer to the place in the job file where the caller
    /// stands, not to the text. Throws as parse does.
    std::vector<std::shared_ptr<IChunk>> getChunks(const std::string& text);

    JobInfo jobInfo; ///< What PRESCRIBE contributed.

private:
    using Chunks = std::vector<std::shared_ptr<IChunk>>;
    /// What getToken found: a command, now in `cmd`, or the end of the source.
    enum class ETokens { Command = 0, EndOfSource = 1 };

    template <typename AtEnd, typename Next, typename Back>
    ETokens getToken(const AtEnd& atEnd, const Next& next, const Back& back);
    bool processToken(ETokens token, std::int64_t start, Chunks& chunks, JobInfo& info);
    void kxDrvComment(const PrescribeCmd& comment, JobInfo& info);
    bool findExit(std::int64_t first, std::int64_t last);
    void skipTo(const std::array<Torv::BytePair, 2>& pairs, std::int64_t limit);

    bool kxPageCountSet = false; ///< The summary of the driver has fixed the counts.
    PrescribeCmd cmd;            ///< The command being read.
    Pjl::Parser* pjl;

    // From the first of these offsets of the file up to the second no `EXIT;` begins.
    std::int64_t m_noExitFrom = 0;
    std::int64_t m_noExitBefore = 0;
};

} // namespace JobParser::Prescribe
