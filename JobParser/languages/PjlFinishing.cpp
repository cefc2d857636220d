#include <array>

#include "JobParser/languages/PjlParser.h"
#include "JobParser/model/OriginalBrand.h"

#include "Torv/Regex.h"
#include "Torv/Text.h"

namespace JobParser::Pjl
{
namespace
{

using Zem::Printer::OriginalBrand;

/// A stapling word of HP drivers, in any case. A word that names a side also tells how far that side is
/// turned from the left one.
struct HpStaple {
    std::string_view word;
    Staple staple;
    std::optional<std::int32_t> rotation = {};
};

constexpr std::array hpStaples{
    HpStaple{"NONE", Staple::None},
    HpStaple{"ONE_STAPLE", Staple::LeftTop},
    HpStaple{"ANGLED_STAPLE", Staple::LeftTop},
    HpStaple{"LEFT_1PT", Staple::LeftTop, 0},
    HpStaple{"LEFT_1PT_ANGLED", Staple::LeftTop, 0},
    HpStaple{"RIGHT_1PT", Staple::RightTop, 0},
    HpStaple{"RIGHT_1PT_ANGLED", Staple::RightTop, 0},
    HpStaple{"TWO_STAPLES", Staple::Two},
    HpStaple{"LEFT_2PT", Staple::Two, 0},
    HpStaple{"RIGHT_2PT", Staple::Two, 2},
    HpStaple{"TOP_2PT", Staple::Two, 1},
    HpStaple{"BT_2T", Staple::Two, 3},
};

/// The number of holes; a single one stands for words that tell none.
constexpr std::string_view hpHolesPattern = "([2-4])(?:PT|HOLE)";
constexpr int noHoleCount = 1;

/// The side that a punching word of HP drivers begins with, case as written.
struct HpPunchSide {
    std::string_view prefix;
    std::int32_t rotation;
};

constexpr std::array hpPunchSides{
    HpPunchSide{"LEFT_", 0},
    HpPunchSide{"RIGHT_", 2},
    HpPunchSide{"TOP_", 1},
    HpPunchSide{"BT_", 3},
};

/// Where a staple of the KX driver gets to, by orientation (rows) and staple 1 to 3 (columns).
using KxStaples = std::array<std::array<Staple, 3>, 4>;

constexpr Staple lost = Staple::UnknownPosition;

constexpr KxStaples kxLongEdgeStaples{{
    {Staple::LeftTop, lost, Staple::Two},
    {Staple::RightTop, Staple::LeftTop, Staple::Two},
    {lost, Staple::RightTop, lost},
    {lost, lost, lost},
}};

constexpr KxStaples kxShortEdgeStaples{{
    {Staple::LeftTop, lost, lost},
    {Staple::RightTop, Staple::LeftTop, lost},
    {lost, Staple::RightTop, lost},
    {lost, lost, lost},
}};

Punch punchOfHoles(int holes)
{
    switch (holes) {
    case 2: return Punch::TwoHoles;
    case 3: return Punch::ThreeHoles;
    case 4: return Punch::FourHoles;
    default: return Punch::UnknownKind;
    }
}

bool isDefinite(Staple staple)
{
    return staple != Staple::None && staple != Staple::UnknownPosition;
}

bool isDefinite(Punch punch)
{
    return punch != Punch::None && punch != Punch::UnknownKind;
}

/// What devices do by default.
Staple orDefault(Staple staple)
{
    return staple == Staple::DeviceDefault ? Staple::LeftTop : staple;
}

Punch orDefault(Punch punch)
{
    return punch == Punch::DriverDefault ? Punch::TwoHoles : punch;
}

bool isUpright(Orientation orientation)
{
    return orientation == Orientation::Portrait || orientation == Orientation::Landscape;
}

Orientation turnedBack(Orientation orientation, std::int32_t quarterTurns)
{
    return rotate90(orientation, -(quarterTurns % 4));
}

/// A single staple moves to the other corner of the turned page; a pair along an edge still is one.
Staple onLandscape(Staple staple)
{
    if (staple == Staple::LeftTop)
        return Staple::RightTop;
    return staple == Staple::Two ? Staple::Two : Staple::UnknownPosition;
}

} // namespace

void Parser::parseHpStapling(std::string_view word)
{
    HpStaple found{{}, Staple::UnknownPosition};
    for (const HpStaple& row : hpStaples) {
        if (Torv::iequals(word, row.word)) {
            found = row;
            break;
        }
    }
    jobInfo.setStapling(found.staple, true);
    if (found.rotation)
        stapleRotation = found.rotation;
    jobInfo.setOriginalBrand(OriginalBrand::Hp);
}

void Parser::parseHpPunching(std::string_view word)
{
    if (word == "NONE")
        jobInfo.setPunching(Punch::None, true);
    else
        jobInfo.setPunching(punchOfHoles(Torv::Regex::search<hpHolesPattern, int>(word, noHoleCount, 1)),
                            true);
    for (const HpPunchSide& side : hpPunchSides) {
        if (word.starts_with(side.prefix))
            punchRotation = side.rotation;
    }
    jobInfo.setOriginalBrand(OriginalBrand::Hp);
}

Staple Parser::hpStapleByOrientation(Orientation orientation) const
{
    if (!isDefinite(jobInfo.stapling))
        return jobInfo.stapling;
    const Staple staple = orDefault(jobInfo.stapling);
    const Orientation seen = stapleRotation ? turnedBack(orientation, *stapleRotation) : orientation;
    if (seen == Orientation::Portrait)
        return staple;
    if (seen != Orientation::Landscape)
        return Staple::UnknownPosition;
    if (!stapleRotation)
        return onLandscape(staple);
    return staple == Staple::Two ? Staple::UnknownPosition : staple;
}

Punch Parser::hpPunchByOrientation(Orientation orientation) const
{
    if (!isDefinite(jobInfo.punching))
        return jobInfo.punching;
    const bool known = punchRotation ? turnedBack(orientation, *punchRotation) == Orientation::Portrait
                                     : isUpright(orientation);
    return known ? orDefault(jobInfo.punching) : Punch::UnknownKind;
}

Staple Parser::kxTransformStapleByOrientation(Staple staple, Orientation orientation) const
{
    if (!isDefinite(staple))
        return staple;
    const KxStaples& table = jobInfo.kfeedShortEdge ? kxShortEdgeStaples : kxLongEdgeStaples;
    const Orientation seen = jobInfo.kfeedShortEdge ? rotate90(orientation, 1) : orientation;
    // Records read from metadata bring any number; one below the first wraps around and lies behind the last.
    const auto row = static_cast<std::uint32_t>(seen);
    const auto column = static_cast<std::uint32_t>(orDefault(staple)) - 1U;
    if (row >= table.size() || column >= table[0].size())
        return Staple::UnknownPosition;
    return table[row][column];
}

Punch Parser::kxTransformPunchByOrientation(Punch punch, Orientation orientation) const
{
    if (!isDefinite(punch))
        return punch;
    const bool kept = punch == Punch::DriverDefault && !jobInfo.kfeedShortEdge && isUpright(orientation);
    return kept ? Punch::DriverDefault : Punch::UnknownKind;
}

} // namespace JobParser::Pjl
