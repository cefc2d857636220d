#include "JobParser/paper/PaperSizeManager.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <exception>
#include <limits>
#include <map>
#include <stdexcept>
#include <string_view>

#include "Torv/Data/IniFile.h"
#include "Torv/Format.h"
#include "Torv/Number.h"
#include "Torv/Regex.h"
#include "Torv/Text.h"

namespace JobParser
{
namespace
{

// A sheet as narrow as the tolerance divides by zero, and a box of huge corners overflows; both have to give
// an infinity that no comparison accepts.
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559);

// Jobs choose the texts that are cached, so both their number and their length have a limit.
constexpr std::size_t maxCachedTexts = 4096;
constexpr std::size_t maxCachedTextSize = 256;

constexpr float millimetresPerPoint = 0.35277778F;

struct NamedPaper {
    std::string_view name;
    Paper paper;
};

// The last three are literal media names of one driver, not instances of a pattern. No row is a size.
constexpr std::array<NamedPaper, 30> defaultPapers{{
    {"A5", PaperA5},
    {"A4", PaperA4},
    {"A3", PaperA3},
    {"B4", PaperB4},
    {"B5", PaperB5},
    {"FOLIO", PaperFolio},
    {"LEDGER", PaperLedger},
    {"LEGAL", PaperLegal},
    {"LETTER", PaperLetter},
    {"STATEMENT", PaperStatement},
    {"PaperOther", PaperOther},
    {"JISB4", PaperB4},
    {"JISB5", PaperB5},
    {"B5 (JIS)", PaperB5},
    {"B5 (ISO)", PaperB5},
    {"EA4PAPER", PaperA4},
    {"ELETTERPAPER", PaperLetter},
    {"LEDGER (11 X 17)", PaperLedger},
    {"EA3PAPER", PaperA3},
    {"EJDOUBLEPOSTCARD", PaperA5},
    {"EJB4PAPER", PaperB4},
    {"EJB5PAPER", PaperB5},
    {"ELEGALPAPER", PaperLegal},
    {"JIS8K", PaperStatement},
    {"EA5PAPER", PaperA5},
    {"ELEDGERPAPER", PaperLedger},
    {"EB5ENVELOPE", PaperB5},
    {"UNKNOWN PAPER SIZE (2000)", PaperA5},
    {"UNKNOWN PAPER SIZE (46)", PaperB4},
    {"UNKNOWN PAPER SIZE (15)", PaperStatement},
}};

struct Series {
    std::string_view prefix;
    int width; ///< Of size 0, in millimetres.
    int height;
    int highestIndex;
};

// The first match wins: the small sizes of B and of JIS B lie within the usual tolerance of each other.
constexpr std::array<Series, 4> seriesTable{{
    {"A", 841, 1189, 10},
    {"B", 1000, 1414, 10},
    {"C", 917, 1297, 10},
    {"JISB", 1030, 1456, 12},
}};

struct FixedSize {
    double shortSide;
    double longSide;
    const char* name;
};

constexpr std::array<FixedSize, 3> fixedSizes{{
    {139.7, 215.9, "STATEMENT"},
    {203.2, 330.2, "FOLIO"},
    {209.9, 329.8, "FOLIO"},
}};

constexpr double letterWidth = 215.9;

struct LetterWideSize {
    double longSide;
    const char* name;
};

constexpr std::array<LetterWideSize, 4> letterWideSizes{{
    {279.4, "LETTER"},
    {342.9, "FOLIO"},
    {330.2, "FOLIO"},
    {355.6, "LEGAL"},
}};

template <typename Real> bool isNear(Real value, Real nominal, Real tolerance)
{
    return std::abs(value - nominal) <= tolerance;
}

/// Whether a sheet can have the aspect ratio of the series, given what its sides may be off by.
bool canHaveSeriesRatio(float shortSide, float longSide, float tolerance)
{
    constexpr float sqrt2 = 1.41421354F;
    return (longSide - tolerance) / (shortSide + tolerance) < sqrt2 &&
           (longSide + tolerance) / (shortSide - tolerance) > sqrt2;
}

std::optional<int> indexInSeries(const Series& series, float shortSide, float longSide, float tolerance)
{
    int width = series.width;
    int height = series.height;
    int index = 0;
    // A negative sum of side and tolerance is below every width, so the index has to end the walk too.
    while (index <= series.highestIndex && static_cast<float>(width) > shortSide + tolerance) {
        const int halved = height / 2;
        height = width;
        width = halved;
        ++index;
    }
    const bool matches = index <= series.highestIndex &&
                         isNear(static_cast<float>(width), shortSide, tolerance) &&
                         isNear(static_cast<float>(height), longSide, tolerance);
    return matches ? std::optional<int>(index) : std::nullopt;
}

std::string nameBySeries(float shortSide, float longSide, float tolerance)
{
    if (!canHaveSeriesRatio(shortSide, longSide, tolerance))
        return {};
    for (const Series& series : seriesTable) {
        if (const auto index = indexInSeries(series, shortSide, longSide, tolerance))
            return std::string(series.prefix) + std::to_string(*index);
    }
    return {};
}

std::string nameByLetterWideSize(float longSide, float tolerance)
{
    for (const LetterWideSize& size : letterWideSizes) {
        if (isNear<double>(longSide, size.longSide, tolerance))
            return size.name;
    }
    return {};
}

std::string nameByFixedSize(float shortSide, float longSide, float tolerance)
{
    const auto isNearBoth = [&](double nominalShort, double nominalLong) {
        return isNear<double>(shortSide, nominalShort, tolerance) &&
               isNear<double>(longSide, nominalLong, tolerance);
    };
    for (const FixedSize& size : fixedSizes) {
        if (isNearBoth(size.shortSide, size.longSide))
            return size.name;
    }
    if (isNear<double>(shortSide, letterWidth, tolerance))
        return nameByLetterWideSize(longSide, tolerance);
    if (isNear(shortSide, 225.0F, tolerance) && isNear(longSide, 320.0F, tolerance))
        return "FOLIO";
    if (isNearBoth(279.4, 431.8))
        return "LEDGER";
    return {};
}

std::string nameByGeometry(float width, float height, float tolerance)
{
    const auto [shortSide, longSide] = std::minmax(width, height);
    std::string name = nameBySeries(shortSide, longSide, tolerance);
    return name.empty() ? nameByFixedSize(shortSide, longSide, tolerance) : name;
}

/// The groups of a match as numbers; nothing if there is no match. Throws as Torv::stof does.
template <std::size_t count>
std::optional<std::array<float, count>> matchNumbers(const Torv::Regex& regex, const std::string& text)
{
    std::array<float, count> numbers{};
    int group = 0;
    for (float& number : numbers) {
        const auto found = regex.find(text, ++group);
        if (!found)
            return std::nullopt;
        number = Torv::stof(std::string(*found));
    }
    return numbers;
}

PaperSizeManager::Size sortedSize(float a, float b)
{
    const auto [shortSide, longSide] = std::minmax(a, b);
    return {shortSide, longSide, PaperOther};
}

} // namespace

PaperSizeManager::LazyRegex::LazyRegex(const char* pattern) : m_pattern(pattern) {}

PaperSizeManager::LazyRegex::~LazyRegex() = default;

const Torv::Regex& PaperSizeManager::LazyRegex::get() const
{
    std::call_once(m_once, [this] {
        m_regex = std::make_unique<const Torv::Regex>(m_pattern, Torv::Regex::Case::Ignored);
    });
    return *m_regex;
}

PaperSizeManager::PaperSizeManager()
    : m_paperBoxRegex(R"(^\s*PAPERBOX:\s*([-\d\.]+)\s+([-\d\.]+)\s+([-\d\.]+)\s+([-\d\.]+)\s*$)"),
      m_sizeRegex(R"(^\s*([-\d\.]+)\s*x\s*([-\d\.]+)\s*$)")
{
}

PaperSizeManager::~PaperSizeManager() = default;

void PaperSizeManager::addDefaultPapers()
{
    const std::lock_guard lock(m_mutex);
    m_sizeCache.clear();
    storeDefaultPapers();
}

void PaperSizeManager::clear()
{
    const std::lock_guard lock(m_mutex);
    m_sizeCache.clear();
    m_papers.clear();
    m_defaultsPending = false;
}

void PaperSizeManager::add(const std::string& name, Paper paper)
{
    const std::lock_guard lock(m_mutex);
    m_sizeCache.clear();
    papers().insert_or_assign(Torv::toUpper(name), paper);
    if (const auto size = tryParseSize(name))
        m_sizes.insert({size->width, size->height, paper});
}

PaperSizeManager::Size PaperSizeManager::parseSize(const std::string& text) const
{
    if (const auto box = matchNumbers<4>(m_paperBoxRegex.get(), text)) {
        const auto& [left, bottom, right, top] = *box;
        return sortedSize((right - left) * millimetresPerPoint, (top - bottom) * millimetresPerPoint);
    }
    if (const auto tenths = matchNumbers<2>(m_sizeRegex.get(), text))
        return sortedSize((*tenths)[0] / 10.0F, (*tenths)[1] / 10.0F);
    throw std::invalid_argument(Torv::format("Invalid paper size syntax | size=%s", text.c_str()));
}

Paper PaperSizeManager::paperById(const std::string& name, bool trySize) const
{
    {
        const std::lock_guard lock(m_mutex);
        if (const auto paper = findName(Torv::toUpper(name)))
            return *paper;
    }
    if (!trySize)
        return PaperOther;
    try {
        return paperBySize(name);
    } catch (const std::exception&) {
        return PaperOther;
    }
}

Paper PaperSizeManager::paperBySize(const std::string& text) const
{
    {
        const std::lock_guard lock(m_mutex);
        if (const auto cached = m_sizeCache.find(text); cached != m_sizeCache.end())
            return cached->second;
    }
    const Size size = parseSize(text);
    // One lock around both, so that an add in between cannot leave an outdated answer in the cache.
    const std::lock_guard lock(m_mutex);
    const Paper paper = resolveSize(size);
    remember(text, paper);
    return paper;
}

Paper PaperSizeManager::paperByCustomSize(Size size) const
{
    const std::lock_guard lock(m_mutex);
    const Size* const found = findSize(size);
    return found != nullptr ? found->paper : PaperUnknown;
}

std::string PaperSizeManager::paperName(float width, float height) const
{
    std::unique_lock lock(m_mutex);
    const float tolerance = m_tolerance;
    lock.unlock();
    return nameByGeometry(width, height, tolerance);
}

void PaperSizeManager::loadConfig(Torv::Data::IniFile& ini)
{
    ini.setSection("JobParser");
    // The aliases go into the table that is walked. Sorted, because the last of two equal aliases counts and
    // that must not depend on a hash.
    std::map<std::string, Paper> names;
    {
        const std::lock_guard lock(m_mutex);
        m_tolerance = ini.valueFloat("paperSizeTolerance", m_tolerance);
        names.insert(papers().begin(), papers().end());
    }
    for (const auto& [name, paper] : names) {
        for (const std::string& alias : ini.valueStringArray(Torv::format("alias%s", name.c_str()))) {
            const std::string_view trimmed = Torv::trim(alias);
            if (!trimmed.empty())
                add(std::string(trimmed), paper);
        }
    }
}

std::optional<PaperSizeManager::Size> PaperSizeManager::tryParseSize(const std::string& text) const
{
    try {
        return parseSize(text);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void PaperSizeManager::storeDefaultPapers() const
{
    for (const NamedPaper& row : defaultPapers)
        m_papers.insert_or_assign(Torv::toUpper(row.name), row.paper);
    m_defaultsPending = false;
}

PaperSizeManager::Papers& PaperSizeManager::papers() const
{
    if (m_defaultsPending)
        storeDefaultPapers();
    return m_papers;
}

std::optional<Paper> PaperSizeManager::findName(const std::string& upperName) const
{
    const Papers& known = papers();
    const auto row = known.find(upperName);
    return row != known.end() ? std::optional<Paper>(row->second) : std::nullopt;
}

const PaperSizeManager::Size* PaperSizeManager::findSize(const Size& wanted) const
{
    // The smallest within the tolerance decides, even if a later one is nearer.
    const auto found = std::find_if(m_sizes.begin(), m_sizes.end(), [&](const Size& known) {
        return isNear(known.width, wanted.width, m_tolerance) &&
               isNear(known.height, wanted.height, m_tolerance);
    });
    return found != m_sizes.end() ? &*found : nullptr;
}

Paper PaperSizeManager::resolveSize(const Size& size) const
{
    const Size* const known = findSize(size);
    if (known != nullptr && known->paper != PaperUnknown)
        return known->paper;
    const std::string name = nameByGeometry(size.width, size.height, m_tolerance);
    return name.empty() ? PaperOther : findName(name).value_or(PaperOther);
}

void PaperSizeManager::remember(const std::string& text, Paper paper) const
{
    if (text.size() > maxCachedTextSize)
        return;
    if (m_sizeCache.size() >= maxCachedTexts)
        m_sizeCache.clear();
    m_sizeCache.insert_or_assign(text, paper);
}

} // namespace JobParser
