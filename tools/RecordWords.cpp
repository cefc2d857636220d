#include "tools/RecordWords.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "JobParser/JobInfo.h"
#include "JobParser/paper/PaperUtils.h"

namespace JobParser::Tool
{
namespace
{

struct NumberRow {
    std::int32_t number;
    std::string_view text;
};

constexpr std::array duplexRows{
    NumberRow{0, "one side of the sheet"},
    NumberRow{1, "both sides, turned over the long edge"},
    NumberRow{2, "both sides, turned over the short edge"},
};

constexpr std::array orientationRows{
    NumberRow{0, "portrait"},
    NumberRow{1, "landscape"},
    NumberRow{2, "portrait, upside down"},
    NumberRow{3, "landscape, upside down"},
};

constexpr std::array stapleRows{
    NumberRow{0, "none"},
    NumberRow{1, "one staple, top left"},
    NumberRow{2, "one staple, top right"},
    NumberRow{3, "two staples"},
    NumberRow{100, "stapled, position not known"},
    NumberRow{101, "as the device is set"},
};

constexpr std::array punchRows{
    NumberRow{0, "none"},
    NumberRow{1, "two holes"},
    NumberRow{2, "three holes"},
    NumberRow{3, "four holes"},
    NumberRow{100, "punched, number of holes not known"},
    NumberRow{101, "as the driver is set"},
};

constexpr std::array brandRows{
    NumberRow{0, "no brand"}, NumberRow{1, "KX driver"},
    NumberRow{2, "HP"},       NumberRow{3, "RICOH"},
    NumberRow{4, "TOSHIBA"},  NumberRow{5, "SHARP"},
    NumberRow{6, "Samsung"},  NumberRow{7, "issuer of XCPT tickets"},
    NumberRow{9, "OKI"},      NumberRow{10, "Lexmark"},
};

template <typename T> std::string named(std::span<const NumberRow> rows, T value)
{
    const auto number = static_cast<std::int32_t>(value);
    for (const NumberRow& row : rows) {
        if (row.number == number)
            return std::string(row.text);
    }
    return "number " + std::to_string(number);
}

std::string language(const JobInfo& info)
{
    if (info.pdl == Pdl::Unknown)
        return "none that is known";
    const std::string& name = PdlUtils::displayName(info.pdl);
    return name.empty() ? "number " + std::to_string(static_cast<std::int32_t>(info.pdl)) : name;
}

std::string pages(const JobInfo& info)
{
    const std::int64_t all = std::int64_t{info.monoCount} + info.grayCount + info.colorCount;
    return std::to_string(all) + ": " + std::to_string(info.monoCount) + " black and white, " +
           std::to_string(info.grayCount) + " gray, " + std::to_string(info.colorCount) + " colour";
}

std::string paper(const JobInfo& info)
{
    return info.paper == PaperOther ? "other" : PaperUtils::formatPaper(info.paper);
}

std::string fonts(const JobInfo& info)
{
    std::string text;
    for (const std::string& font : info.fonts)
        text.append(text.empty() ? "" : ", ").append(font);
    return text;
}

} // namespace

std::vector<RecordWord> recordWords(const JobInfo& info)
{
    std::vector<RecordWord> words;
    const auto add = [&](const char* label, JobInfo::Flag flag, auto text) {
        const bool isKnown = info.flags(static_cast<int>(flag)) != 0;
        words.push_back({label, isKnown ? std::optional<std::string>(text()) : std::nullopt});
    };
    const auto addYesOrNo = [&](const char* label, JobInfo::Flag flag, bool value) {
        add(label, flag, [&] { return value ? "yes" : "no"; });
    };
    add("Language", JobInfo::FlagPdl, [&] { return language(info); });
    words.push_back({"PJL", info.pjl ? "yes" : "no"});
    add("Pages", JobInfo::FlagPageCount, [&] { return pages(info); });
    add("Copies", JobInfo::FlagCopies, [&] { return std::to_string(info.copies); });
    add("Paper", JobInfo::FlagPaper, [&] { return paper(info); });
    add("Printed on", JobInfo::FlagDuplex, [&] { return named(duplexRows, info.duplex); });
    add("Orientation", JobInfo::FlagOrientation, [&] { return named(orientationRows, info.orientation); });
    add("Pages on a side", JobInfo::FlagPagesPerSheet, [&] { return std::to_string(info.pagesPerSheet); });
    addYesOrNo("Forced to black and white", JobInfo::FlagForceMono, info.forceMono);
    addYesOrNo("Saves toner", JobInfo::FlagEcoMode, info.ecoMode);
    add("Staples", JobInfo::FlagStapling, [&] { return named(stapleRows, info.stapling); });
    add("Holes", JobInfo::FlagPunching, [&] { return named(punchRows, info.punching); });
    add("Made for", JobInfo::FlagOriginalBrand, [&] { return named(brandRows, info.originalBrand); });
    if (info.kfeedShortEdge)
        words.push_back({"Fed", "short edge first"});
    if (!info.fonts.empty())
        words.push_back({"Fonts", fonts(info)});
    return words;
}

} // namespace JobParser::Tool
