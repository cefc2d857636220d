#include "worker/BodyFinder.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/model/GlobalParser.h"
#include "JobParser/paper/PaperSizeManager.h"

#include "Torv/Ascii.h"
#include "Torv/BytePairs.h"

namespace JobParser::Worker
{
namespace
{

// A UEL, and a PRESCRIBE block.
constexpr std::array<Torv::BytePair, 2> events{{{0x1B, '%'}, {'!', 'R'}}};
// A UEL alone, where no block can be.
constexpr std::array<Torv::BytePair, 2> uels{{{0x1B, '%'}, {0x1B, '%'}}};

constexpr std::string_view pjlKeyword = "@PJL";
constexpr std::string_view prescribeStart = "!R!";

// Line ends and padding behind an envelope are no body. What is longer than this is not looked at.
constexpr std::int64_t longestFiller = 1024;

// Documents whose binary data may hold what looks like a PRESCRIBE block, and where none can stand.
bool isDocument(Pdl pdl)
{
    return pdl == Pdl::Pdf || pdl == Pdl::Xps || pdl == Pdl::PclXl;
}

bool isFillerByte(std::uint8_t byte)
{
    constexpr std::uint8_t endOfJob = 4; // What spoolers put around PostScript.
    return byte == 0 || byte == endOfJob || Torv::Ascii::isSpace(byte);
}

} // namespace

std::vector<Body> BodyFinder::find()
{
    Job envelope;
    PaperSizeManager papers;
    Global::Parser parser(envelope, m_file, papers);
    m_bodies.clear();
    m_body = {};
    m_told = Pdl::Unknown;
    walk(parser);
    m_copies = std::max(parser.pjl.jobInfo.copies, parser.prescribe.jobInfo.copies);
    return std::move(m_bodies);
}

void BodyFinder::walk(Global::Parser& parser)
{
    while (!m_file.atEnd()) {
        if (m_body.ranges.empty())
            m_body.pdl = languageHere(parser);
        takeStretch(parser);
        if (m_file.atEnd())
            break;
        if (!parser.matchUel()) {
            parser.prescribe.parse();
            continue;
        }
        endBody();
        m_told = parser.match(pjlKeyword, true, true) ? parser.pjl.parse() : Pdl::Unknown;
        // Behind PJL a block needs no guess.
        if (m_told == Pdl::Prescribe)
            parser.prescribe.parse();
    }
    endBody();
}

Pdl BodyFinder::languageHere(Global::Parser& parser) const
{
    const Pdl shown = parser.autoDetectPdl();
    if (shown != Pdl::Unknown && shown != Pdl::Prescribe)
        return shown;
    if (m_told != Pdl::Unknown && m_told != Pdl::Prescribe)
        return m_told;
    // Behind the job, where nobody announces anything, only what shows itself counts.
    return m_bodies.empty() ? m_expected : Pdl::Unknown;
}

// Adds what stands before the next UEL or PRESCRIBE block, at which it stops.
void BodyFinder::takeStretch(Global::Parser& parser)
{
    const std::int64_t start = m_file.m_offset;
    skipToEvent(parser);
    const Range range{start, m_file.m_offset - start};
    if (range.size > 0 && !(m_body.ranges.empty() && isFiller(range)))
        m_body.ranges.push_back(range);
}

void BodyFinder::skipToEvent(Global::Parser& parser)
{
    while (!m_file.atEnd()) {
        const bool isUelOnly = isDocument(m_body.pdl);
        auto bytes = m_file.window();
        // In PostScript a block may be of any length, so that guesses tell nothing of what follows.
        const bool isGuessed = m_body.pdl != Pdl::PostScript;
        const std::int64_t known = isGuessed ? parser.prescribe.noBlockBefore() - m_file.m_offset : 0;
        if (!isUelOnly && known > 0)
            bytes = bytes.first(std::min(bytes.size(), static_cast<std::size_t>(known)));
        const std::size_t count = Torv::findPair(bytes, isUelOnly || known > 0 ? uels : events);
        if (count != 0)
            m_file.advancePos(static_cast<std::int64_t>(count));
        if (count == bytes.size())
            continue;
        if (parser.match(uel, true, false) || (!isUelOnly && isBlockHere(parser)))
            return;
        m_file.getChar();
    }
}

bool BodyFinder::isBlockHere(Global::Parser& parser) const
{
    if (m_body.pdl != Pdl::PostScript || !parser.match(prescribeStart, true, false))
        return parser.prescribe.guessPrescribe();
    if (m_file.m_offset == 0)
        return true;
    m_file.returnChar(1);
    const std::uint8_t before = m_file.getChar();
    return before == '\n' || before == '\r' || parser.prescribe.guessPrescribe();
}

void BodyFinder::endBody()
{
    if (!m_body.ranges.empty())
        m_bodies.push_back(std::move(m_body));
    m_body = {};
}

bool BodyFinder::isFiller(const Range& range) const
{
    if (range.size > longestFiller)
        return false;
    const std::int64_t end = m_file.m_offset;
    m_file.setPos(range.offset);
    bool isFiller = true;
    while (isFiller && m_file.m_offset < end)
        isFiller = isFillerByte(m_file.getChar());
    m_file.setPos(end);
    return isFiller;
}

} // namespace JobParser::Worker
