#include "tests/corpus/RecordFacts.h"

#include <array>

namespace Corpus
{
namespace
{

using JobParser::JobInfo;

constexpr std::array factNames{"pages",       "colorPages", "grayPages", "copies",   "duplex", "paper",
                               "orientation", "pdl",        "pjl",       "stapled",  "staple", "punched",
                               "holes",       "ecoMode",    "forceMono", "numberUp", "brand"};

// The record's numbers in the words of the list of jobs. A number that has no row says nothing definite.
const std::map<int, std::string> languages{{0, ""},          {1, "PCL 5"},  {2, "PostScript"}, {3, "ESC/P"},
                                           {4, "PRESCRIBE"}, {5, "PCL XL"}, {6, "PDF"},        {7, "JPEG"},
                                           {8, "XPS"},       {9, "URF"}};
const std::map<int, std::string> duplexes{{0, "none"}, {1, "long"}, {2, "short"}};
const std::map<int, std::string> papers{{0, "unknown"}, {5, "A4"},     {6, "A3"},      {7, "other"},
                                        {14, "A5"},     {15, "B4"},    {16, "B5"},     {17, "Folio"},
                                        {18, "Ledger"}, {19, "Legal"}, {20, "Letter"}, {21, "Statement"}};
const std::map<int, std::string> orientations{
    {0, "portrait"}, {1, "landscape"}, {2, "reverse portrait"}, {3, "reverse landscape"}};
const std::map<int, std::string> staples{{1, "left top"}, {2, "right top"}, {3, "two"}};
const std::map<int, std::string> holes{{1, "2"}, {2, "3"}, {3, "4"}};
const std::map<int, std::string> brands{{1, "KX driver"}, {2, "HP"},    {3, "RICOH"},
                                        {4, "TOSHIBA"},   {5, "SHARP"}, {6, "Samsung"},
                                        {7, "ticket"},    {9, "OKI"},   {10, "Lexmark"}};

std::string yesOrNo(bool value)
{
    return value ? "yes" : "no";
}

std::string asText(const Torv::Variant& value)
{
    if (value.isString())
        return value.toString();
    if (value.kind() == Torv::Variant::Kind::Boolean)
        return yesOrNo(value.toBool());
    return std::to_string(value.toInt64());
}

/// Collects the groups that a record knows.
class Collector
{
public:
    explicit Collector(const JobInfo& info) : m_info(info) {}

    void add(const char* fact, JobInfo::Flag group, const std::string& text)
    {
        if (m_info.flags(static_cast<int>(group)) != 0)
            facts.emplace(fact, text);
    }

    template <typename T>
    void add(const char* fact, JobInfo::Flag group, T value, const std::map<int, std::string>& words)
    {
        const auto word = words.find(static_cast<int>(value));
        if (word != words.end())
            add(fact, group, word->second);
    }

    Facts facts;

private:
    const JobInfo& m_info;
};

} // namespace

Facts trueFacts(const Torv::Variant& expect)
{
    Facts facts;
    for (const char* name : factNames) {
        Torv::Variant value;
        if (expect.contains(name, value))
            facts.emplace(name, asText(value));
    }
    return facts;
}

Facts recordFacts(const JobInfo& info)
{
    Collector known(info);
    const int pages = info.monoCount + info.grayCount + info.colorCount;
    known.facts.emplace("pjl", yesOrNo(info.pjl));
    known.add("pages", JobInfo::FlagPageCount, std::to_string(pages));
    known.add("colorPages", JobInfo::FlagPageCount, std::to_string(info.colorCount));
    known.add("grayPages", JobInfo::FlagPageCount, std::to_string(info.grayCount));
    known.add("copies", JobInfo::FlagCopies, std::to_string(info.copies));
    known.add("numberUp", JobInfo::FlagPagesPerSheet, std::to_string(info.pagesPerSheet));
    known.add("ecoMode", JobInfo::FlagEcoMode, yesOrNo(info.ecoMode));
    known.add("forceMono", JobInfo::FlagForceMono, yesOrNo(info.forceMono));
    known.add("stapled", JobInfo::FlagStapling, yesOrNo(info.stapling != JobParser::Staple::None));
    known.add("punched", JobInfo::FlagPunching, yesOrNo(info.punching != JobParser::Punch::None));
    known.add("staple", JobInfo::FlagStapling, info.stapling, staples);
    known.add("holes", JobInfo::FlagPunching, info.punching, holes);
    known.add("pdl", JobInfo::FlagPdl, info.pdl, languages);
    known.add("duplex", JobInfo::FlagDuplex, info.duplex, duplexes);
    known.add("paper", JobInfo::FlagPaper, info.paper, papers);
    known.add("orientation", JobInfo::FlagOrientation, info.orientation, orientations);
    known.add("brand", JobInfo::FlagOriginalBrand, info.originalBrand, brands);
    return known.facts;
}

} // namespace Corpus
