#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "JobParser/JobInfo.h"
#include "JobParser/model/BaseParser.h"

namespace JobParser
{
class IChunk;
}

namespace JobParser::PostScript
{

/// Infers how the pages of a PostScript job lie, from the chunks that the job was cut into: from
/// `%%ViewingOrientation:` comments, from what the driver wrote just before the first `%%EndPageSetup`, and
/// for the KX driver from the matrices there and in the first page.
///
/// Belongs to the thread that parses the job.
class PaperOrientationParser : public BaseParser
{
public:
    explicit PaperOrientationParser(const BaseParser& parent);
    ~PaperOrientationParser();
    PaperOrientationParser(const PaperOrientationParser&) = delete;
    PaperOrientationParser& operator=(const PaperOrientationParser&) = delete;

    /// Sets the orientation, which is portrait if nothing says otherwise. The position of the file stays
    /// unless it throws, as findPaperOrientation does.
    ///
    /// A job may hold any number of PostScript bodies, each of which asks anew: between the calls chunks may
    /// only be appended, and what was seen is not looked at again.
    void parse(JobInfo& info);

    /// The orientation by all chunks of the job. The file stands anywhere afterwards. Throws
    /// std::invalid_argument or std::out_of_range for matrices of words that are no numbers, and
    /// UnexpectedEndOfFileException for a job that ends just behind a matrix.
    Orientation findPaperOrientation();

    /// The orientation by the matrices in the raw chunk at the index, which stands before `%%EndPageSetup`,
    /// and in the first page behind it; -1 if there are none. Otherwise as findPaperOrientation.
    std::int32_t orientationByKXdriver(int chunkIndex);

private:
    class FirstPage;
    struct Walk;

    Orientation go(Walk& walk);
    void look(Walk& walk, std::size_t index);
    void endWalk(Walk& walk, std::size_t index);

    std::unique_ptr<Walk> m_walk;
};

} // namespace JobParser::PostScript
