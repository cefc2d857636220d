#include <array>
#include <boost/lexical_cast.hpp>
#include <gtest/gtest.h>
#include <locale>
#include <optional>
#include <random>
#include <regex>
#include <string>
#include <string_view>

#include "JobParser/xps/XpsParser.h"
#include "tests/support/OpenJob.h"
#include "tests/support/ZipBytes.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;

const std::string copiesPattern =
    "name=\"psk:JobCopiesAllDocuments\">[^<>]*<psf:value[^<>]*>([^<>]*)</psf:Value";
const std::string colorPattern =
    "name=\"ns0000:JobTotalColorPages\">[^<>]*<psf:value[^<>]*>([^<>]*)</psf:Value";
const std::string monoPattern =
    "name=\"ns0000:JobTotalMonochromePages\">[^<>]*<psf:value[^<>]*>([^<>]*)</psf:Value";
const std::string duplexPattern =
    "name=\"psk:JobDuplexAllDocumentsContiguously\">[^<>]*<psf:option[^<>]*name=\"psk:([^\"]*)\"";
const std::string mediaSizePattern =
    "name=\"psk:PageMediaSize\">[^<>]*<psf:option[^<>]*name=\"psk:([^\"]*)\"[^<>]*";

JobInfo read(const std::string& ticket)
{
    OpenJob job(std::string_view{});
    return XpsParser(job.file).parseProperties(ticket);
}

JobInfo read(const TicketText& ticket)
{
    return read(ticket.str());
}

struct NamedPaper {
    const char* name;
    int paper;
};

TEST(XpsTicket, SaysTheLanguageAndNothingElseIfItIsEmpty)
{
    const JobInfo info = read("");

    EXPECT_EQ(info.flags(JobInfo::AllFlags), JobInfo::FlagPdl);
    EXPECT_EQ(info.pdl, Pdl::Xps);
    EXPECT_FALSE(info.pjl);
}

TEST(XpsTicket, TellsItsFactsTogether)
{
    const JobInfo info = read(TicketText()
                                  .mediaSize("psk:ISOA3")
                                  .duplex("psk:TwoSidedShortEdge")
                                  .copies("2")
                                  .monoPages("10")
                                  .colorPages("4"));

    EXPECT_EQ(info.flags(JobInfo::AllFlags), JobInfo::FlagPdl | JobInfo::FlagPaper | JobInfo::FlagDuplex |
                                                 JobInfo::FlagCopies | JobInfo::FlagPageCount);
    EXPECT_EQ(info.paper, PaperA3);
    EXPECT_EQ(info.duplex, Duplex::ShortEdge);
    EXPECT_EQ(info.copies, 2);
    EXPECT_EQ(info.monoCount, 5);
    EXPECT_EQ(info.grayCount, 0);
    EXPECT_EQ(info.colorCount, 2);
}

TEST(XpsTicket, NamesThePapers)
{
    constexpr std::array<NamedPaper, 25> papers{{
        {"ISOA4", 5},
        {"ISOA4ROTATED", 5},
        {"ISOA4EXTRA", 5},
        {"ISOA3", 6},
        {"ISOA3ROTATED", 6},
        {"ISOA3EXTRA", 6},
        {"ISOA5", 14},
        {"ISOA5EXTRA", 14},
        {"ISOA5ROTATED", 14},
        {"ISOB4", 15},
        {"JISB4", 15},
        {"JISB4ROTATED", 15},
        {"ISOB4ENVELOPE", 15},
        {"JISB5", 16},
        {"ISOB5EXTRA", 16},
        {"JISB5ROTATED", 16},
        {"ISOB5ENVELOPE", 16},
        {"OTHERMETRICFOLIO", 17},
        {"NORTHAMERICALEGAL", 19},
        {"NORTHAMERICALEGALEXTRA", 19},
        {"NORTHAMERICALETTER", 20},
        {"NORTHAMERICALETTEREXTRA", 20},
        {"NORTHAMERICALETTERPLUS", 20},
        {"NORTHAMERICALETTERROTATED", 20},
        {"NORTHAMERICASTATEMENT", 21},
    }};

    for (const auto& [name, paper] : papers) {
        const JobInfo info = read(TicketText().mediaSize("psk:"s + name));
        EXPECT_EQ(info.flags(JobInfo::FlagPaper), JobInfo::FlagPaper) << name;
        EXPECT_EQ(info.paper, paper) << name;
    }
}

TEST(XpsTicket, NamesThePapersInAnyCase)
{
    EXPECT_EQ(read(TicketText().mediaSize("psk:NorthAmericaLetter")).paper, PaperLetter);
    EXPECT_EQ(read(TicketText().mediaSize("PSK:isoa5")).paper, PaperA5);
}

TEST(XpsTicket, SetsAPaperThatItDoesNotKnowAsAnother)
{
    for (const char* name :
         {"psk:ISOB5", "psk:ISOA2", "psk:Custom", "psk:", "psk:ISOA4 ", "psk: ISOA4", "psk:A4"}) {
        const JobInfo info = read(TicketText().mediaSize(name));
        EXPECT_EQ(info.flags(JobInfo::FlagPaper), JobInfo::FlagPaper) << name;
        EXPECT_EQ(info.paper, PaperOther) << name;
    }
}

TEST(XpsTicket, SetsNoPaperForAnOptionOfAnotherNamespace)
{
    EXPECT_EQ(read(TicketText().mediaSize("ns0000:ISOA4")).flags(JobInfo::FlagPaper), 0);
    EXPECT_EQ(read(TicketText().mediaSize("ISOA4")).flags(JobInfo::FlagPaper), 0);
}

TEST(XpsTicket, TellsTheSides)
{
    EXPECT_EQ(read(TicketText().duplex("psk:OneSided")).duplex, Duplex::OneSided);
    EXPECT_EQ(read(TicketText().duplex("psk:OneSided")).flags(JobInfo::FlagDuplex), JobInfo::FlagDuplex);
    EXPECT_EQ(read(TicketText().duplex("psk:TwoSidedShortEdge")).duplex, Duplex::ShortEdge);
    EXPECT_EQ(read(TicketText().duplex("psk:TwoSidedLongEdge")).duplex, Duplex::LongEdge);
    EXPECT_EQ(read(TicketText().duplex("psk:TWOSIDEDLONGEDGE")).duplex, Duplex::LongEdge);
}

TEST(XpsTicket, SetsNothingForSidesThatItDoesNotKnow)
{
    for (const char* name : {"psk:Manual", "psk:", "psk:TwoSided", "psk:OneSided ", "ns0000:OneSided"})
        EXPECT_EQ(read(TicketText().duplex(name)).flags(JobInfo::FlagDuplex), 0) << name;
}

TEST(XpsTicket, TellsTheCopies)
{
    for (const auto& [text, copies] : std::to_array<std::pair<const char*, int>>({{"1", 1},
                                                                                  {"2", 2},
                                                                                  {"+3", 3},
                                                                                  {"007", 7},
                                                                                  {"0", 1},
                                                                                  {"-5", 1},
                                                                                  {"10000", 10000},
                                                                                  {"10001", 10000},
                                                                                  {"2147483647", 10000},
                                                                                  {"-2147483648", 1}})) {
        const JobInfo info = read(TicketText().copies(text));
        EXPECT_EQ(info.flags(JobInfo::FlagCopies), JobInfo::FlagCopies) << text;
        EXPECT_EQ(info.copies, copies) << text;
    }
}

TEST(XpsTicket, IsSilentAboutCopiesThatAreNoPlainInteger)
{
    for (const char* text : {"", " 2", "2 ", "\n2", "2\t", "2.0", "2,000", "two", "0x2", "+", "-", "--2",
                             "+-2", "2147483648", "-2147483649", "99999999999999999999", "1e3", "2;"}) {
        const JobInfo info = read(TicketText().copies(text));
        EXPECT_EQ(info.flags(JobInfo::FlagCopies), 0) << text;
        EXPECT_EQ(info.copies, 1) << text;
    }
    EXPECT_EQ(read(TicketText().copies("2\0"s)).flags(JobInfo::FlagCopies), 0);
}

struct GroupedNumbers : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(XpsTicket, IgnoresTheLocaleOfTheHost)
{
    const std::locale before = std::locale::global({std::locale::classic(), new GroupedNumbers});

    const JobInfo grouped = read(TicketText().copies("2,000"));
    const JobInfo plain = read(TicketText().copies("2000"));
    const bool isRefused = [] {
        try {
            return parseRegExp<int>("2,000", "(.*)") == 0;
        } catch (const boost::bad_lexical_cast&) {
            return true;
        }
    }();

    std::locale::global(before);
    EXPECT_EQ(grouped.flags(JobInfo::FlagCopies), 0);
    EXPECT_EQ(plain.copies, 2000);
    EXPECT_TRUE(isRefused);
}

TEST(XpsTicket, CutsPagesThatTheCopiesDoNotDivide)
{
    const JobInfo info = read(TicketText().copies("3").colorPages("8").monoPages("2"));

    EXPECT_EQ(info.flags(JobInfo::FlagPageCount), JobInfo::FlagPageCount);
    EXPECT_EQ(info.monoCount, 0);
    EXPECT_EQ(info.colorCount, 2);
}

TEST(XpsTicket, CountsPagesOnceWithoutCopies)
{
    const JobInfo info = read(TicketText().colorPages("4").monoPages("10"));

    EXPECT_EQ(info.monoCount, 10);
    EXPECT_EQ(info.grayCount, 0);
    EXPECT_EQ(info.colorCount, 4);
    EXPECT_EQ(info.flags(JobInfo::FlagCopies), 0);
}

TEST(XpsTicket, DividesByTheCopiesThatCount)
{
    EXPECT_EQ(read(TicketText().copies("20000").colorPages("0").monoPages("50000")).monoCount, 5);
    EXPECT_EQ(read(TicketText().copies("2").copies("5").colorPages("0").monoPages("10")).monoCount, 5);
    EXPECT_EQ(read(TicketText().copies("-1").colorPages("-2147483648").monoPages("0")).colorCount,
              -2147483648);
}

TEST(XpsTicket, CountsNoPagesUnlessBothTotalsAreThere)
{
    EXPECT_EQ(read(TicketText().colorPages("4")).flags(JobInfo::FlagPageCount), 0);
    EXPECT_EQ(read(TicketText().monoPages("4")).flags(JobInfo::FlagPageCount), 0);
    EXPECT_EQ(read(TicketText().monoPages("4").colorPages(" 4")).flags(JobInfo::FlagPageCount), 0);
    EXPECT_EQ(read(TicketText().monoPages("4 ").colorPages("4")).flags(JobInfo::FlagPageCount), 0);
}

TEST(XpsTicket, CountsPagesOfOneFamilyOfDriversOnly)
{
    const TicketText ticket = TicketText()
                                  .parameter("ns0001:JobTotalColorPages", "4")
                                  .parameter("ns0001:JobTotalMonochromePages", "4");

    EXPECT_EQ(read(ticket).flags(JobInfo::FlagPageCount), 0);
}

TEST(XpsTicket, SurvivesARecordWhoseCopiesAreNone)
{
    OpenJob job(std::string_view{});
    const std::string ticket = TicketText().colorPages("-2147483648").monoPages("4").str();

    for (const int copies : {0, -1}) {
        JobInfo info;
        info.copies = copies;
        XpsParser(job.file).parsePageCounts(ticket, info);
        EXPECT_EQ(info.monoCount, 4);
        EXPECT_EQ(info.colorCount, -2147483648);
    }
}

TEST(XpsTicket, TakesTheFirstElementThatFits)
{
    EXPECT_EQ(read(TicketText().copies("2").copies("3")).copies, 2);
    EXPECT_EQ(read(TicketText().raw("name=\"psk:JobCopiesAllDocuments\"><other>").copies("3")).copies, 3);
    EXPECT_EQ(read(TicketText().mediaSize("psk:ISOA4").mediaSize("psk:ISOA3")).paper, PaperA4);
    EXPECT_EQ(read(TicketText().mediaSize("ns0000:ISOA4").mediaSize("psk:ISOA3")).paper, PaperA3);
}

TEST(XpsTicket, LooksNoFurtherIfTheFirstNumberIsNone)
{
    EXPECT_EQ(read(TicketText().copies("x").copies("3")).flags(JobInfo::FlagCopies), 0);
}

TEST(XpsTicket, ReadsElementsInAnyCaseWithBlanksBetweenThem)
{
    const std::string ticket =
        "NAME=\"PSK:JOBCOPIESALLDOCUMENTS\">\r\n\t\v\f <PSF:VALUE\n xsi:type=\"x\"\n>4</psf:value>";

    EXPECT_EQ(read(ticket).copies, 4);
}

TEST(XpsTicket, TakesTheLastNameOfAnOption)
{
    const std::string ticket =
        R"(name="psk:PageMediaSize"><psf:Option name="psk:ISOA4" constrained="psk:None" name="psk:ISOA5">)";

    EXPECT_EQ(read(ticket).paper, PaperA5);
}

TEST(XpsTicket, TakesTheNameBeforeOneThatIsNotClosed)
{
    const std::string ticket = R"(name="psk:PageMediaSize"><psf:Option name="psk:ISOA4 name="psk:ISOA5)";

    EXPECT_EQ(read(ticket).paper, PaperOther);
}

TEST(ParseRegExp, GivesTheOneGroupOfTheFirstMatch)
{
    EXPECT_EQ(parseRegExp<std::string>("x=1 x=2", "x=(.)"), "1");
    EXPECT_EQ(parseRegExp<int>("x=1 x=2", "X=(.)"), 1);
    EXPECT_EQ(parseRegExp<int>("x=-12;", "x=([^;]*)"), -12);
    EXPECT_EQ(parseRegExp<std::string>("x= 1;", "x=([^;]*)"), " 1");
}

TEST(ParseRegExp, GivesAnEmptyTextForAGroupThatTookNoPart)
{
    EXPECT_EQ(parseRegExp<std::string>("a", "a|(b)"), "");
    EXPECT_THROW(parseRegExp<int>("a", "a|(b)"), boost::bad_lexical_cast);
}

TEST(ParseRegExp, ThrowsIfNothingMatches)
{
    EXPECT_THROW(parseRegExp<std::string>("", "(a)"), PatternNotFound);
    EXPECT_THROW(parseRegExp<int>("b", "(a)"), PatternNotFound);
}

TEST(ParseRegExp, ThrowsForAnotherNumberOfGroups)
{
    EXPECT_THROW(parseRegExp<std::string>("ab", "ab"), PatternNotFound);
    EXPECT_THROW(parseRegExp<std::string>("ab", "(a)(b)"), PatternNotFound);
    EXPECT_EQ(parseRegExp<std::string>("ab", "(?:a)(b)"), "b");
}

TEST(ParseRegExp, ThrowsForANumberThatIsNone)
{
    for (const char* text : {"", " 1", "1 ", "1.5", "a", "2147483648"})
        EXPECT_THROW(parseRegExp<int>("<"s + text + ">", "<([^>]*)>"), boost::bad_lexical_cast) << text;
}

std::optional<std::string> foundByStandard(const std::string& text, const std::string& pattern)
{
    std::smatch match;
    if (!std::regex_search(text, match, std::regex(pattern, std::regex::ECMAScript | std::regex::icase)))
        return std::nullopt;
    return match[1].str();
}

std::optional<std::string> found(const std::string& text, const std::string& pattern)
{
    try {
        return parseRegExp<std::string>(text, pattern);
    } catch (const PatternNotFound&) {
        return std::nullopt;
    }
}

/// A text of pieces of tickets, whole and broken ones.
std::string randomTicket(std::mt19937& random, const std::string& key)
{
    static const std::array pieces{"<psf:value"s, "<PSF:Value"s,  "<psf:option"s, ">"s,
                                   ">"s,          "<"s,           "\""s,          " "s,
                                   "\n"s,         "\v"s,          "\r"s,          "\0"s,
                                   "\xE9"s,       "</psf:Value"s, "name=\"psk:"s, "NAME=\"PSK:x\""s,
                                   "2"s,          "-1"s,          "a"s,           "k"s,
                                   "s"s,          "\xDF"s};
    std::string text;
    for (auto count = random() % 12; count > 0; --count)
        text += random() % 4 == 0 ? key : pieces[random() % pieces.size()];
    return text;
}

int numberIn(const std::optional<std::string>& text, int otherwise)
{
    int number = otherwise;
    if (text && !boost::conversion::try_lexical_convert(*text, number))
        return otherwise;
    return number;
}

TEST(XpsTicket, FindsWhatTheStandardPatternsFind)
{
    std::mt19937 random(5);
    int matches = 0;

    for (int round = 0; round < 1500; ++round) {
        const std::array<std::pair<std::string, std::string>, 5> patterns{{
            {"name=\"psk:JobCopiesAllDocuments\">", copiesPattern},
            {"name=\"ns0000:JobTotalColorPages\">", colorPattern},
            {"name=\"ns0000:JobTotalMonochromePages\">", monoPattern},
            {"name=\"psk:JobDuplexAllDocumentsContiguously\">", duplexPattern},
            {"name=\"psk:PageMediaSize\">", mediaSizePattern},
        }};
        const auto& [key, pattern] = patterns[random() % patterns.size()];
        const std::string text =
            key + (random() % 2 == 0 ? "<psf:option name=\"psk:" : "<psf:value>") + randomTicket(random, key);
        const auto expected = foundByStandard(text, pattern);
        matches += expected ? 1 : 0;

        EXPECT_EQ(found(text, pattern), expected) << text;
        const JobInfo info = read(text);
        EXPECT_EQ(info.flags(JobInfo::FlagPaper) != 0, foundByStandard(text, mediaSizePattern).has_value())
            << text;
        const int copies = numberIn(foundByStandard(text, copiesPattern), -7777);
        EXPECT_EQ(info.flags(JobInfo::FlagCopies) != 0, copies != -7777) << text;
    }

    EXPECT_GT(matches, 150);
}

struct HostileTicket {
    const char* name;
    std::string text;
};

std::string repeated(std::string_view text)
{
    std::string all;
    while (all.size() < 0x100000)
        all += text;
    all.resize(0x100000);
    return all;
}

TEST(XpsTicket, OfAMebibyteIsReadWhateverItHolds)
{
    const std::string copies = "name=\"psk:JobCopiesAllDocuments\">";
    const std::string media = "name=\"psk:PageMediaSize\"><psf:option ";
    for (const auto& [name, text] : {
             HostileTicket{"Blanks", repeated(" ")},
             HostileTicket{"BlanksBehindAKey", copies + repeated(" ")},
             HostileTicket{"KeysAlone", repeated(copies)},
             HostileTicket{"OpenValues", repeated(copies + "<psf:value>")},
             HostileTicket{"Options", repeated(media)},
             HostileTicket{"OpenNames", media + repeated("name=\"psk:")},
             HostileTicket{"EndsOfElements", repeated(">")},
             HostileTicket{"EndsOfKeys", repeated("\">")},
         }) {
        const JobInfo info = read(text);
        EXPECT_EQ(info.flags(JobInfo::FlagCopies | JobInfo::FlagDuplex | JobInfo::FlagPageCount), 0) << name;
    }
    EXPECT_EQ(read(copies + repeated(" ") + "<psf:value" + repeated("\n") + ">6</psf:value").copies, 6);
    EXPECT_EQ(read(repeated("<psk:x/>") + TicketText().copies("7").str()).copies, 7);
    EXPECT_EQ(read(media + "name=\"psk:" + repeated("a<b>") + "\"").paper, PaperOther);
}

} // namespace
} // namespace JobParser
