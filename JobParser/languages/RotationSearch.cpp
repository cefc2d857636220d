// The stretch may be gigabytes, so that it is not read into memory for a pattern. Both operators hold a pair
// of digits that is rare; only where one stands the rest is compared. White space may be of any length, but a
// comparison ends at what is no white space, behind which the search goes on: no byte is compared more often
// than a few times.

#include "JobParser/languages/RotationSearch.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "JobParser/JobFile.h"
#include "JobParser/model/ChunkRawData.h"

#include "Torv/Ascii.h"
#include "Torv/BytePairs.h"

namespace JobParser::PostScript
{
namespace
{

constexpr std::array<Torv::BytePair, 2> operandStarts{{{'1', '8'}, {'-', '9'}}};
constexpr std::string_view halfTurn = "180";
constexpr std::string_view negated = "neg";
constexpr std::string_view rotate = "rotate";
constexpr std::string_view minusQuarterTurn = "-90 rotate";

/// Reads a stretch of the file and nothing behind it.
class Stretch
{
public:
    Stretch(JobFile& file, std::int64_t start, std::int64_t size)
        : m_file(file), m_start(start), m_end(start + size)
    {
        m_file.setPos(start);
    }

    /// Stops where an operand may begin. False at the end.
    bool seekOperand()
    {
        while (left() > 0) {
            m_file.peekChar();
            const auto window = m_file.window();
            const auto bytes = window.first(
                static_cast<std::size_t>(std::min(static_cast<std::int64_t>(window.size()), left())));
            const std::size_t size = Torv::findPair(bytes, operandStarts);
            if (size != 0)
                m_file.advancePos(static_cast<std::int64_t>(size));
            if (size != bytes.size())
                return true;
        }
        return false;
    }

    bool isHalfTurn()
    {
        const std::int64_t place = m_file.m_offset;
        const bool isSeparate = place == m_start || Torv::Ascii::isSpace(byteAhead());
        const bool matches = isSeparate && take(halfTurn) && takeSpaces() &&
                             (!take(negated) || takeSpaces()) && take(rotate) && takeSpace();
        m_file.setPos(place);
        return matches;
    }

    bool isMinusQuarterTurn()
    {
        const std::int64_t place = m_file.m_offset;
        const bool matches = place != m_start && byteAhead() == ' ' && take(minusQuarterTurn);
        m_file.setPos(place);
        return matches;
    }

    void pass() { m_file.getChar(); }

private:
    std::int64_t left() const { return m_end - m_file.m_offset; }

    std::uint8_t byteAhead()
    {
        m_file.returnChar(1);
        return m_file.getChar();
    }

    // What does not stand here stays unread, so that something else may be compared with it.
    bool take(std::string_view text)
    {
        const std::int64_t place = m_file.m_offset;
        for (const char wanted : text) {
            if (left() <= 0 || m_file.peekChar() != static_cast<std::uint8_t>(wanted)) {
                m_file.setPos(place);
                return false;
            }
            m_file.getChar();
        }
        return true;
    }

    bool takeSpace()
    {
        if (left() <= 0 || !Torv::Ascii::isSpace(m_file.peekChar()))
            return false;
        m_file.getChar();
        return true;
    }

    bool takeSpaces()
    {
        bool any = false;
        while (takeSpace())
            any = true;
        return any;
    }

    JobFile& m_file;
    std::int64_t m_start;
    std::int64_t m_end;
};

} // namespace

Rotation findRotation(JobFile& file, const ChunkRawData& raw)
{
    Stretch stretch(file, raw.offset, raw.size());
    Rotation found = Rotation::None;
    for (; stretch.seekOperand(); stretch.pass()) {
        if (stretch.isHalfTurn())
            return Rotation::HalfTurn;
        if (found == Rotation::None && stretch.isMinusQuarterTurn())
            found = Rotation::MinusQuarterTurn;
    }
    return found;
}

} // namespace JobParser::PostScript
