#include "JobParser/JobInfo.h"

#include <algorithm>

#include "JobParser/paper/PaperUtils.h"

#include "Torv/Format.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

constexpr int minCopies = 1;
constexpr int maxCopies = 10000;

int clampCopies(int value)
{
    return std::clamp(value, minCopies, maxCopies);
}

// Counts come from jobs, so that a sum may overflow; it wraps.
std::int32_t wrappingSum(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

// A statement that says nothing definite gives way to any other.
template <typename Value> bool isIndefinite(Value value)
{
    return static_cast<std::int32_t>(value) == 0 || static_cast<std::int32_t>(value) == 100;
}

/// Reads the fields of a record from metadata, with their bits.
class FieldReader
{
public:
    FieldReader(const Torv::Variant& record, std::uint32_t& flags) : m_record(record), m_flags(flags) {}

    template <typename T> void read(const char* key, T& field, std::uint32_t flag)
    {
        Torv::Variant value;
        if (!m_record.contains(key, value) || value.isNull())
            return;
        if constexpr (std::is_same_v<T, bool>)
            field = value.toBool();
        else
            field = static_cast<T>(value.toInt());
        m_flags |= flag;
    }

private:
    const Torv::Variant& m_record;
    std::uint32_t& m_flags;
};

const char* yesNo(bool value)
{
    return value ? "yes" : "no";
}

} // namespace

JobInfo::JobInfo(const Torv::Variant& variant)
{
    if (!variant.isObject())
        return;
    FieldReader reader(variant, m_flags);
    reader.read("pdl", pdl, FlagPdl);
    reader.read("paper", paper, FlagPaper);
    reader.read("monoCount", monoCount, FlagPageCount);
    reader.read("grayCount", grayCount, FlagPageCount);
    reader.read("colorCount", colorCount, FlagPageCount);
    reader.read("duplex", duplex, FlagDuplex);
    reader.read("stapling", stapling, FlagStapling);
    reader.read("punching", punching, FlagPunching);
    reader.read("orientation", orientation, FlagOrientation);
    reader.read("copies", copies, FlagCopies);
    reader.read("forceMono", forceMono, FlagForceMono);
    if (Torv::Variant names; variant.contains("fonts", names)) {
        const auto list = names.toVector();
        fonts = {list.begin(), list.end()};
    }
    reader.read("ecoMode", ecoMode, FlagEcoMode);
    reader.read("pagesPerSheet", pagesPerSheet, FlagPagesPerSheet);
    reader.read("originalBrand", originalBrand, FlagOriginalBrand);
    reader.read("pjl", pjl, 0);
    reader.read("kfeedShortEdge", kfeedShortEdge, 0);
}

void JobInfo::reset(int mask)
{
    const auto groups = static_cast<std::uint32_t>(mask);
    const JobInfo defaults;
    if (groups & FlagPageCount) {
        monoCount = defaults.monoCount;
        grayCount = defaults.grayCount;
        colorCount = defaults.colorCount;
    }
    if (groups & FlagCopies)
        copies = defaults.copies;
    if (groups & FlagPaper)
        paper = defaults.paper;
    if (groups & FlagDuplex)
        duplex = defaults.duplex;
    if (groups & FlagPdl)
        pdl = defaults.pdl;
    if (groups & FlagForceMono)
        forceMono = defaults.forceMono;
    if (groups & FlagStapling)
        stapling = defaults.stapling;
    if (groups & FlagPunching)
        punching = defaults.punching;
    if (groups & FlagEcoMode)
        ecoMode = defaults.ecoMode;
    if (groups & FlagOrientation)
        orientation = defaults.orientation;
    if (groups & FlagPagesPerSheet)
        pagesPerSheet = defaults.pagesPerSheet;
    if (groups & FlagOriginalBrand)
        originalBrand = defaults.originalBrand;
    if (groups == AllFlags) {
        fonts.clear();
        pjl = false;
        kfeedShortEdge = false;
    }
    m_flags &= ~groups;
}

void JobInfo::setPdl(Pdl value)
{
    pdl = value;
    m_flags |= FlagPdl;
}

void JobInfo::setPaper(Paper value)
{
    paper = value;
    m_flags |= FlagPaper;
}

void JobInfo::setDuplex(Duplex value)
{
    duplex = value;
    m_flags |= FlagDuplex;
}

void JobInfo::setOrientation(Orientation value)
{
    orientation = value;
    m_flags |= FlagOrientation;
}

void JobInfo::setOrientation(int width, int height)
{
    if (width != 0 && height != 0)
        setOrientation(width > height ? Orientation::Landscape : Orientation::Portrait);
}

void JobInfo::setEcoMode(bool value)
{
    ecoMode = value;
    m_flags |= FlagEcoMode;
}

void JobInfo::setPagesPerSheet(int value)
{
    pagesPerSheet = value;
    m_flags |= FlagPagesPerSheet;
}

void JobInfo::setOriginalBrand(Zem::Printer::OriginalBrand value)
{
    originalBrand = value;
    m_flags |= FlagOriginalBrand;
}

void JobInfo::setCopies(int value)
{
    copies = clampCopies(value);
    m_flags |= FlagCopies;
}

void JobInfo::setCopiesMax(int value)
{
    if (flags(FlagCopies) == 0 || clampCopies(value) > copies)
        setCopies(value);
}

void JobInfo::setPageCount(int mono, int gray, int color)
{
    monoCount = mono;
    grayCount = gray;
    colorCount = color;
    m_flags |= FlagPageCount;
    if (forceMono)
        foldIntoMono();
}

void JobInfo::incMonoCount()
{
    monoCount = wrappingSum(monoCount, 1);
    m_flags |= FlagPageCount;
}

void JobInfo::incGrayCount()
{
    std::int32_t& count = forceMono ? monoCount : grayCount;
    count = wrappingSum(count, 1);
    m_flags |= FlagPageCount;
}

void JobInfo::incColorCount()
{
    std::int32_t& count = forceMono ? monoCount : colorCount;
    count = wrappingSum(count, 1);
    m_flags |= FlagPageCount;
}

void JobInfo::setForceMono(bool value)
{
    forceMono = value;
    m_flags |= FlagForceMono;
    if (forceMono)
        foldIntoMono();
}

void JobInfo::setStapling(Staple value, bool force)
{
    if (!force && !isIndefinite(stapling))
        return;
    stapling = value;
    m_flags |= FlagStapling;
}

void JobInfo::setPunching(Punch value, bool force)
{
    if (!force && !isIndefinite(punching))
        return;
    punching = value;
    m_flags |= FlagPunching;
}

void JobInfo::addFonts(const std::set<std::string>& names)
{
    fonts.insert(names.begin(), names.end());
}

void JobInfo::combineWith(const JobInfo& other, int mask)
{
    pjl = pjl || other.pjl;
    kfeedShortEdge = kfeedShortEdge || other.kfeedShortEdge;
    const auto taken = static_cast<std::uint32_t>(other.flags(mask));
    if (taken & FlagPageCount)
        setPageCount(other.monoCount, other.grayCount, other.colorCount);
    if (taken & FlagCopies)
        setCopiesMax(other.copies);
    if (taken & FlagPaper)
        setPaper(other.paper);
    // A source that says one-sided makes the group known but cannot undo a duplex.
    if (taken & FlagDuplex)
        setDuplex(other.duplex != Duplex::OneSided ? other.duplex : duplex);
    if (taken & FlagPdl)
        setPdl(other.pdl);
    if (taken & FlagForceMono)
        setForceMono((flags(FlagForceMono) != 0 && forceMono) || other.forceMono);
    if (taken & FlagStapling)
        setStapling(other.stapling, true);
    if (taken & FlagPunching)
        setPunching(other.punching, true);
    if (taken & FlagOrientation)
        setOrientation(other.orientation);
    if (taken & FlagEcoMode)
        setEcoMode(other.ecoMode);
    if (taken & FlagPagesPerSheet)
        setPagesPerSheet(other.pagesPerSheet);
    if (taken & FlagOriginalBrand)
        setOriginalBrand(other.originalBrand);
    addFonts(other.fonts);
}

void JobInfo::foldIntoMono()
{
    monoCount = wrappingSum(monoCount, wrappingSum(grayCount, colorCount));
    grayCount = 0;
    colorCount = 0;
}

Torv::Json::Object JobInfo::json() const
{
    Torv::Json::Object object;
    const auto add = [&](const char* key, auto value, Flag flag) {
        if (m_flags & flag)
            object.add(key, value);
        else
            object.add(key, nullptr);
    };
    object.add("version", CurrentVersion);
    object.add("pjl", pjl);
    add("pdl", pdl, FlagPdl);
    add("paper", paper, FlagPaper);
    add("monoCount", monoCount, FlagPageCount);
    add("grayCount", grayCount, FlagPageCount);
    add("colorCount", colorCount, FlagPageCount);
    add("duplex", duplex, FlagDuplex);
    add("copies", copies, FlagCopies);
    add("forceMono", forceMono, FlagForceMono);
    add("stapling", stapling, FlagStapling);
    add("punching", punching, FlagPunching);
    add("orientation", orientation, FlagOrientation);
    // Hosts read this text by position too: the second one has always been there.
    add("ecoMode", ecoMode, FlagEcoMode);
    add("ecoMode", ecoMode, FlagEcoMode);
    add("pagesPerSheet", pagesPerSheet, FlagPagesPerSheet);
    add("originalBrand", originalBrand, FlagOriginalBrand);
    if (kfeedShortEdge)
        object.add("kfeedShortEdge", true);
    return object;
}

std::string JobInfo::toJson() const
{
    return json().take();
}

std::string JobInfo::toJsonFull() const
{
    Torv::Json::Object object = json();
    if (!fonts.empty())
        object.add("fonts", fonts);
    return object.take();
}

std::string JobInfo::toString() const
{
    const auto known = [&](Flag flag, const std::string& text) { return m_flags & flag ? text : "-"; };
    const auto number = [&](Flag flag, auto value) {
        return known(flag, Torv::format("%d", static_cast<int>(value)));
    };
    const auto answer = [&](Flag flag, auto value) {
        return known(flag, yesNo(static_cast<int>(value) != 0));
    };
    const std::string language = known(FlagPdl, pdl == Pdl::Unknown ? "-" : PdlUtils::displayName(pdl));
    return Torv::format(
        "pdl=%s | mono=%s | gray=%s | color=%s | paper=%s | orientation=%s | duplex=%s | copies=%s | "
        "forceMono=%s | stapling=%s | punching=%s | tonerSaving=%s | pagesPerSheet=%s | originalBrand=%s | "
        "pjl=%s ",
        language.c_str(), number(FlagPageCount, monoCount).c_str(), number(FlagPageCount, grayCount).c_str(),
        number(FlagPageCount, colorCount).c_str(), known(FlagPaper, PaperUtils::formatPaper(paper)).c_str(),
        number(FlagOrientation, orientation).c_str(), answer(FlagDuplex, duplex).c_str(),
        number(FlagCopies, copies).c_str(), answer(FlagForceMono, forceMono).c_str(),
        answer(FlagStapling, stapling).c_str(), answer(FlagPunching, punching).c_str(),
        answer(FlagEcoMode, ecoMode).c_str(), number(FlagPagesPerSheet, pagesPerSheet).c_str(),
        number(FlagOriginalBrand, originalBrand).c_str(), yesNo(pjl));
}

} // namespace JobParser
