#include "JobParser/languages/PaperOrientationParser.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <typeinfo>

#include "JobParser/IChunk.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/languages/ChunkPsComment.h"
#include "JobParser/languages/MatrixSearch.h"
#include "JobParser/languages/OrientationMatrix.h"
#include "JobParser/languages/RotationSearch.h"
#include "JobParser/model/ChunkRawData.h"

#include "Torv/Text.h"

namespace JobParser::PostScript
{
namespace
{

using MatrixCounts = std::map<OrientationMatrix, std::int64_t>;

constexpr std::string_view viewingOrientation = "%%ViewingOrientation:";
constexpr std::string_view pageSetupEnd = "%%EndPageSetup";
constexpr std::string_view pageComment = "%%Page";

constexpr OrientationMatrix upright{1, 0, 0, -1};
constexpr std::int32_t noOrientation = -1;

template <typename Chunk> const Chunk* exactly(const IChunk* chunk)
{
    return chunk != nullptr && typeid(*chunk) == typeid(Chunk) ? static_cast<const Chunk*>(chunk) : nullptr;
}

// What the matrix of a comment says; nothing if it is upright or none that is known.
std::optional<Orientation> orientationOfComment(std::string_view matrix)
{
    const auto numbers = Torv::explode(matrix, " ", 3, true);
    if (numbers.empty())
        return std::nullopt;
    if (numbers[0].front() == '-')
        return Orientation::ReversePortrait;
    if (numbers[0].front() != '0' || numbers.size() < 2)
        return std::nullopt;
    switch (numbers[1].front()) {
    case '1': return Orientation::Landscape;
    case '-': return Orientation::ReverseLandscape;
    default: return std::nullopt;
    }
}

// Of equal counts the first in order wins.
OrientationMatrix mostFrequent(const MatrixCounts& counts)
{
    const auto best = std::ranges::max_element(counts, {}, &MatrixCounts::value_type::second);
    return best == counts.end() ? upright : best->first;
}

Orientation composed(OrientationMatrix page, OrientationMatrix setup)
{
    const auto p = static_cast<std::int8_t>(page.a * setup.a + page.b * setup.c);
    const auto q = static_cast<std::int8_t>(page.a * setup.b + page.b * setup.d);
    if (p != 0)
        return p == -1 ? Orientation::ReversePortrait : Orientation::Portrait;
    return q == 1 ? Orientation::Landscape : Orientation::ReverseLandscape;
}

} // namespace

/// The matrices of the KX driver: the one of the setup, and those from there to the end of the first page.
/// That end is only known when the next page begins; until then the page grows with the chunks of the job.
class PaperOrientationParser::FirstPage
{
public:
    FirstPage(JobFile& file, const ChunkRawData& setup, std::size_t behindSetup)
        : m_start(setup.offset), m_end(setup.offset + setup.size()), m_next(behindSetup),
          m_search(file, setup.offset, pageFrame())
    {
        MatrixSearch(file, m_start, setupFrame())
            .run(setup.size(), MatrixSearch::Overdraft::Granted, [this](OrientationMatrix matrix) {
                m_setup = matrix;
                m_isFound = true;
                return false;
            });
    }

    std::int32_t orientation(const std::vector<std::shared_ptr<IChunk>>& chunks)
    {
        extend(chunks);
        if (!m_orientation)
            m_orientation = search();
        return *m_orientation;
    }

private:
    static const MatrixFrame& setupFrame()
    {
        static const MatrixFrame frame{{""}, {" + G"}};
        return frame;
    }

    static const MatrixFrame& pageFrame()
    {
        static const MatrixFrame frame{{"q", ""}, {"cm", "msf"}};
        return frame;
    }

    void extend(const std::vector<std::shared_ptr<IChunk>>& chunks)
    {
        for (; !m_isComplete && m_next < chunks.size(); ++m_next) {
            const IChunk* const chunk = chunks[m_next].get();
            if (const auto* const comment = exactly<ChunkPsComment>(chunk)) {
                m_isComplete = comment->comment.starts_with(pageComment);
            } else if (const auto* const raw = exactly<ChunkRawData>(chunk)) {
                m_end = raw->offset + raw->size();
                m_orientation.reset();
            }
        }
    }

    // The array at the end of a page that may still grow is counted for this answer only.
    std::int32_t search()
    {
        const std::int64_t size = m_end - m_start;
        const auto countIn = [](MatrixCounts& counts) {
            return [&counts](OrientationMatrix matrix) {
                ++counts[matrix];
                return true;
            };
        };
        m_search.run(size, MatrixSearch::Overdraft::Refused, countIn(m_counts));
        MatrixSearch rest = m_search;
        MatrixCounts counts = m_counts;
        rest.run(size, MatrixSearch::Overdraft::Granted, countIn(counts));
        if (!m_isFound && counts.empty())
            return noOrientation;
        return static_cast<std::int32_t>(composed(mostFrequent(counts), m_setup));
    }

    std::int64_t m_start;
    std::int64_t m_end;
    std::size_t m_next;
    bool m_isComplete = false;
    bool m_isFound = false;
    OrientationMatrix m_setup = upright;
    MatrixSearch m_search;
    MatrixCounts m_counts;
    std::optional<std::int32_t> m_orientation;
};

/// How far the chunks were looked at, and what came of it.
struct PaperOrientationParser::Walk {
    std::size_t next = 0;
    bool isEnded = false;
    Orientation orientation = Orientation::Portrait;
    std::optional<FirstPage> firstPage; ///< If the matrices decide.
};

PaperOrientationParser::PaperOrientationParser(const BaseParser& parent)
    : BaseParser(parent), m_walk(std::make_unique<Walk>())
{
}

PaperOrientationParser::~PaperOrientationParser() = default;

void PaperOrientationParser::parse(JobInfo& info)
{
    const std::int64_t position = file.m_offset;
    info.setOrientation(go(*m_walk));
    file.setPos(position);
}

Orientation PaperOrientationParser::findPaperOrientation()
{
    Walk walk;
    return go(walk);
}

std::int32_t PaperOrientationParser::orientationByKXdriver(int chunkIndex)
{
    const auto index = static_cast<std::size_t>(chunkIndex);
    const auto* const raw = exactly<ChunkRawData>(job.chunks[index].get());
    return raw == nullptr ? noOrientation : FirstPage(file, *raw, index + 2).orientation(job.chunks);
}

Orientation PaperOrientationParser::go(Walk& walk)
{
    for (; !walk.isEnded && walk.next < job.chunks.size(); ++walk.next)
        look(walk, walk.next);
    if (!walk.firstPage)
        return walk.orientation;
    const std::int32_t found = walk.firstPage->orientation(job.chunks);
    return found == noOrientation ? walk.orientation : static_cast<Orientation>(found);
}

void PaperOrientationParser::look(Walk& walk, std::size_t index)
{
    const auto* const chunk = exactly<ChunkPsComment>(job.chunks[index].get());
    if (chunk == nullptr)
        return;
    const std::string_view comment = chunk->comment;
    if (comment.starts_with(viewingOrientation)) {
        const auto found = orientationOfComment(comment.substr(viewingOrientation.size()));
        walk.orientation = found.value_or(walk.orientation);
    } else if (comment.starts_with(pageSetupEnd)) {
        endWalk(walk, index);
    }
}

void PaperOrientationParser::endWalk(Walk& walk, std::size_t index)
{
    constexpr int halfTurn = 2;

    walk.isEnded = true;
    const auto* const raw = index == 0 ? nullptr : exactly<ChunkRawData>(job.chunks[index - 1].get());
    if (raw == nullptr)
        return;
    switch (findRotation(file, *raw)) {
    case Rotation::HalfTurn:
        walk.orientation = static_cast<Orientation>(static_cast<int>(walk.orientation) ^ halfTurn);
        break;
    case Rotation::MinusQuarterTurn: walk.orientation = Orientation::ReverseLandscape; break;
    case Rotation::None: walk.firstPage.emplace(file, *raw, index + 1); break;
    }
}

} // namespace JobParser::PostScript
