#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "JobParser/languages/OrientationMatrix.h"

namespace JobParser
{
class ChunkRawData;
class JobFile;
} // namespace JobParser

namespace JobParser::PostScript
{

/// Is given each matrix that is found; false ends the search.
using MatrixFunction = std::function<bool(OrientationMatrix)>;

/// Words that frame an array: the ones just ahead of its `[`, and at the same indices those just behind its
/// `]`. An empty word fits anything.
struct MatrixFrame {
    std::vector<std::string> before;
    std::vector<std::string> after;
};

/// Looks in a stretch of a job file for arrays of six numbers, `[a b c d e f]`, between the words of a frame.
///
/// The stretch may turn out to be longer than thought: a search that came to its end goes on where it was,
/// with the results of one over the whole.
///
/// The bytes that are looked at behind an array and twice those ahead of one are charged to the length of the
/// stretch, so that a stretch with many brackets is not searched to its end. Where this takes more than there
/// is left, the array in hand is still read, even beyond the stretch.
///
/// A value: a copy goes on by itself. File and frame outlive it.
class MatrixSearch
{
public:
    /// Searches from the offset `start` of the file.
    MatrixSearch(JobFile& file, std::int64_t start, const MatrixFrame& frame);

    /// What to do with an array that takes more than is left. It comes out otherwise in a longer stretch.
    enum class Overdraft { Refused, Granted };

    /// Goes on to the end of a stretch of `size` bytes from the start, which is not shorter than at the last
    /// call. The file stands anywhere afterwards.
    ///
    /// Throws std::invalid_argument or std::out_of_range for an array of six words in the right frame that
    /// are not all numbers, and UnexpectedEndOfFileException if the file ends where the words behind an
    /// array, or the rest of one beyond the stretch, are to be read.
    void run(std::int64_t size, Overdraft overdraft, const MatrixFunction& function);

private:
    enum class Place { Outside, Inside };
    enum class Bracket { None, Opening, Closing };

    std::int64_t left() const { return m_size - m_charged; }
    std::span<const std::uint8_t> bytesAhead(std::int64_t most) const;
    bool seekOpening(Overdraft overdraft);
    bool isFramedAhead() const;
    bool isFramed();
    Bracket seekBracket();
    bool takeArray(const MatrixFunction& function);
    std::string textAheadOf(std::int64_t opening) const;
    void advance(std::int64_t count);

    JobFile* m_file;
    const MatrixFrame* m_frame;
    std::int64_t m_longestBefore;
    std::int64_t m_longestAfter;
    bool m_anythingFitsAhead;

    Place m_place = Place::Outside;
    std::int64_t m_position;
    std::int64_t m_size = 0;
    std::int64_t m_charged = 0;   ///< Of the size; more than it after an overdraft.
    std::int64_t m_textStart = 0; ///< Inside: behind the `[`.
};

/// Searches a whole raw stretch once, as MatrixSearch does, with overdraft. The file stands anywhere
/// afterwards. Throws as MatrixSearch::run does, and what `fn` throws.
void searchOrientations(JobFile& file, ChunkRawData& raw, std::function<bool(OrientationMatrix)> fn,
                        const std::vector<std::string>& before, const std::vector<std::string>& after);

} // namespace JobParser::PostScript
