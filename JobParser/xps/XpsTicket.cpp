// What a print ticket says. It is XML, but read by patterns: they look for one element each, and whatever
// else drivers put into a ticket cannot lead them astray.

#include <algorithm>
#include <array>
#include <boost/lexical_cast.hpp>
#include <optional>
#include <string_view>

#include "JobParser/xps/XpsParser.h"

#include "Torv/Regex.h"
#include "Torv/Text.h"

namespace JobParser
{
namespace
{

// What is looked for: the key as it stands, but for its case, and the pattern of what follows it. Case does
// not count anywhere, which lets "psf:value" match the element psf:Value.
struct TicketPattern {
    std::string_view key;
    std::string_view rest;
};

constexpr std::string_view valueOfParameter = R"([^<>]*<psf:value[^<>]*>([^<>]*)</psf:Value)";

constexpr TicketPattern copiesPattern{R"(name="psk:JobCopiesAllDocuments">)", valueOfParameter};
// The prefix "ns0000" is part of the names: the totals belong to one family of drivers.
constexpr TicketPattern colorPagesPattern{R"(name="ns0000:JobTotalColorPages">)", valueOfParameter};
constexpr TicketPattern monoPagesPattern{R"(name="ns0000:JobTotalMonochromePages">)", valueOfParameter};
constexpr TicketPattern duplexPattern{R"(name="psk:JobDuplexAllDocumentsContiguously">)",
                                      R"pattern([^<>]*<psf:option[^<>]*name="psk:([^"]*)")pattern"};
constexpr TicketPattern mediaSizePattern{R"(name="psk:PageMediaSize">)",
                                         R"pattern([^<>]*<psf:option[^<>]*name="psk:([^"]*)"[^<>]*)pattern"};

struct NamedDuplex {
    std::string_view name;
    Duplex duplex;
};

constexpr std::array<NamedDuplex, 3> duplexes{{
    {"onesided", Duplex::OneSided},
    {"twosidedshortedge", Duplex::ShortEdge},
    {"twosidedlongedge", Duplex::LongEdge},
}};

struct NamedPaper {
    std::string_view name;
    Paper paper;
};

constexpr std::array<NamedPaper, 25> papers{{
    {"ISOA4", PaperA4},
    {"ISOA4ROTATED", PaperA4},
    {"ISOA4EXTRA", PaperA4},
    {"ISOA3", PaperA3},
    {"ISOA3ROTATED", PaperA3},
    {"ISOA3EXTRA", PaperA3},
    {"ISOA5", PaperA5},
    {"ISOA5EXTRA", PaperA5},
    {"ISOA5ROTATED", PaperA5},
    {"ISOB4", PaperB4},
    {"JISB4", PaperB4},
    {"JISB4ROTATED", PaperB4},
    {"ISOB4ENVELOPE", PaperB4},
    {"JISB5", PaperB5},
    {"ISOB5EXTRA", PaperB5},
    {"JISB5ROTATED", PaperB5},
    {"ISOB5ENVELOPE", PaperB5},
    {"OTHERMETRICFOLIO", PaperFolio},
    {"NORTHAMERICALEGAL", PaperLegal},
    {"NORTHAMERICALEGALEXTRA", PaperLegal},
    {"NORTHAMERICALETTER", PaperLetter},
    {"NORTHAMERICALETTEREXTRA", PaperLetter},
    {"NORTHAMERICALETTERPLUS", PaperLetter},
    {"NORTHAMERICALETTERROTATED", PaperLetter},
    {"NORTHAMERICASTATEMENT", PaperStatement},
}};

std::string_view onlyGroup(const std::string& text, const Torv::Regex& pattern)
{
    if (pattern.groupCount() != 1)
        throw PatternNotFound();
    if (const auto group = pattern.find(text, 1))
        return *group;
    // A group that took no part in a match is empty.
    if (!pattern.matches(text))
        throw PatternNotFound();
    return {};
}

/// The places where a key ends in a ticket, one after the other.
class KeyPlaces
{
public:
    KeyPlaces(std::string_view ticket, std::string_view key) : m_ticket(ticket), m_key(key) {}

    std::optional<std::size_t> next()
    {
        // Every key ends with this, which is rarer than what keys begin with.
        while ((m_end = m_ticket.find('>', m_end)) != m_ticket.npos) {
            ++m_end;
            if (m_end >= m_key.size() &&
                Torv::iequals(m_ticket.substr(m_end - m_key.size(), m_key.size()), m_key))
                return m_end;
        }
        return std::nullopt;
    }

private:
    std::string_view m_ticket;
    std::string_view m_key;
    std::size_t m_end = 0;
};

// The group of the first match. Compiling the patterns and letting them run through a usual ticket would take
// a fifth of the whole process: a pattern is compiled once, if its key is there at all, and begins behind it.
template <const TicketPattern& pattern> std::optional<std::string_view> find(std::string_view ticket)
{
    KeyPlaces places(ticket, pattern.key);
    while (const auto place = places.next()) {
        static const Torv::Regex compiled('^' + std::string(pattern.rest), Torv::Regex::Case::Ignored);
        if (const auto group = compiled.find(ticket.substr(*place), 1))
            return group;
    }
    return std::nullopt;
}

template <const TicketPattern& pattern> std::optional<int> findNumber(std::string_view ticket)
{
    int number = 0;
    const auto text = find<pattern>(ticket);
    if (!text || !boost::conversion::try_lexical_convert(text->data(), text->size(), number))
        return std::nullopt;
    return number;
}

} // namespace

template <> int parseRegExp<int>(const std::string& text, const std::string& pattern)
{
    return boost::lexical_cast<int>(onlyGroup(text, Torv::Regex(pattern, Torv::Regex::Case::Ignored)));
}

template <> std::string parseRegExp<std::string>(const std::string& text, const std::string& pattern)
{
    return std::string(onlyGroup(text, Torv::Regex(pattern, Torv::Regex::Case::Ignored)));
}

JobInfo XpsParser::parseProperties(const std::string& ticket)
{
    JobInfo info;
    info.setPdl(Pdl::Xps);
    info.setPjl(false);
    // The copies come first: the page counts are divided by them.
    parseCopies(ticket, info);
    parsePageCounts(ticket, info);
    parseDuplex(ticket, info);
    parseMediaSize(ticket, info);
    return info;
}

void XpsParser::parseCopies(const std::string& ticket, JobInfo& info)
{
    if (const auto copies = findNumber<copiesPattern>(ticket))
        info.setCopies(*copies);
}

void XpsParser::parsePageCounts(const std::string& ticket, JobInfo& info)
{
    const auto color = findNumber<colorPagesPattern>(ticket);
    if (!color)
        return;
    const auto mono = findNumber<monoPagesPattern>(ticket);
    if (!mono)
        return;
    // A record that was not filled by its setters may hold any number.
    const int copies = std::max(info.copies, 1);
    info.setPageCount(*mono / copies, 0, *color / copies);
}

void XpsParser::parseDuplex(const std::string& ticket, JobInfo& info)
{
    const auto name = find<duplexPattern>(ticket);
    if (!name)
        return;
    const auto row = std::ranges::find(duplexes, Torv::toLower(*name), &NamedDuplex::name);
    if (row != duplexes.end())
        info.setDuplex(row->duplex);
}

void XpsParser::parseMediaSize(const std::string& ticket, JobInfo& info)
{
    const auto name = find<mediaSizePattern>(ticket);
    if (!name)
        return;
    const auto row = std::ranges::find(papers, Torv::toUpper(*name), &NamedPaper::name);
    info.setPaper(row != papers.end() ? row->paper : PaperOther);
}

} // namespace JobParser
