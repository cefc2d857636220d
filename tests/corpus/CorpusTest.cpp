#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"
#include "JobParser/pclxl/JobChunkPclXLOperator.h"
#include "pdf/ChunkPdfDocumentInfo.h"
#include "pdf/DocumentInfo.h"
#include "tests/corpus/PjlRewriting.h"
#include "tests/corpus/RealJobs.h"
#include "tests/corpus/RecordFacts.h"
#include "tests/support/WholeJobs.h"

#include "Torv/Json/Json.h"
#include "Torv/Log/LogNull.h"
#include "Torv/Text.h"

namespace
{

using WholeJobs::saved;

// The jobs whose PJL is not written as saving writes it, with the bytes by which that changes their length.
// All other jobs come back byte for byte.
struct ChangedJob {
    std::string_view file;
    int growth;
    std::string_view why;
};

constexpr std::array<ChangedJob, 32> changedJobs{{
    {"cups-designjet750-hprtl.prn", 10, "one line gains a CR; the PJL that ends the job is closed"},
    {"foomatic-genpcl6-duplex-short.pxl", 3, "3 lines gain a CR"},
    {"foomatic-hp2100-ljet4.pcl", 41,
     "7 lines gain a CR; ENTER is added, and the PJL that ends the job is closed"},
    {"fujixerox-cm305-pdf-blackwhite.pjl.pdf", 14, "15 lines gain a CR, one loses a blank"},
    {"generic-pdf-printer-title-utf8.pjl.pdf", 18, "19 lines gain a CR, one loses a blank"},
    {"gs-pxlcolor-mixed5.pxl", 3, "3 lines gain a CR"},
    {"gs-pxlmono-land2-dduplextrue.pxl", 3, "3 lines gain a CR"},
    {"gs-pxlmono-mixsize.pxl", 3, "3 lines gain a CR"},
    {"hp-cm3530-pdf-stapleoption-two.pjl.pdf", 31, "33 lines gain a CR, two lose a blank"},
    {"hp-color-laserjet-e87750-ps-black-only.ps", 10, "10 lines gain a CR"},
    {"hp-color-laserjet-e87750-ps-staple-left-punch3.ps", 10, "10 lines gain a CR"},
    {"hp-laserjet-4050-hpcups-text.pcl", 23,
     "5 lines gain a CR; 7 combined sequences come out as single ones"},
    {"hp-laserjet-m806-ps-2staplesleft.ps", 9, "9 lines gain a CR"},
    {"hp-laserjet-m806-ps-3holepunchtop.ps", 9, "9 lines gain a CR"},
    {"hp-laserjet-m806-ps-pin-print.ps", 12, "12 lines gain a CR"},
    {"hp-laserjet-p3010-ps-title-quotes.ps", 10,
     "9 lines gain a CR; a title that holds a command ends its line there"},
    {"hp-laserjet-p3010-ps-title-utf8.ps", 9, "9 lines gain a CR"},
    {"kyocera-km2030-ps-finish-staple.ps", 10, "10 lines gain a CR"},
    {"kyocera-taskalfa500ci-ps-prescribe-all-levels.ps", 8, "8 lines gain a CR"},
    {"kyocera-taskalfa500ci-ps-staple-upper-right-punch2.ps", 8, "8 lines gain a CR"},
    {"lexmark-cx860-ps-staple-topleft-punch4.ps", 6, "7 lines gain a CR, one loses a blank"},
    {"oki-c9500-ps-staple-punch.ps", 12,
     "4 lines gain a CR, one loses a blank; the PJL that ends the job is closed"},
    {"pcl-dvilj4.pcl", 3, "3 lines gain a CR"},
    {"ps-pstops-2up-kyocera.ps", 8, "8 lines gain a CR"},
    {"ricoh-mpc3002-pdf-copies3-a3.pjl.pdf", 22, "23 lines gain a CR, one loses a blank"},
    {"ricoh-mpc3002-pdf-punch-leftus3.pjl.pdf", 23, "24 lines gain a CR, one loses a blank"},
    {"ricoh-mpc3002-pdf-staple-centerw.pjl.pdf", 21, "22 lines gain a CR, one loses a blank"},
    {"ricoh-mpc3002-pxl-gray-short.pxl", 19, "19 lines gain a CR"},
    {"ricoh-mpc3002-pxl-staple-upperleft.pxl", 18, "18 lines gain a CR"},
    {"samsung-x703-ps-staple2-punch4-econo.ps", 6, "6 of 29 lines gain a CR"},
    {"sharp-arc172-ps-jcl-staple-punch.ps", 15, "16 lines gain a CR, one loses a blank"},
    {"splix-samsung-clp300-qpdl.prn", 13, "13 lines gain a CR"},
}};

// Jobs that count as malformed: PCL with payloads behind lower-case letters, which nothing tells from text,
// and PDFs with object streams that are encrypted or not compressed.
constexpr std::array<std::string_view, 4> malformedJobs{"brlaser-hl2270-econo-copies2.prn", "gs-pcl3.pcl",
                                                        "pdf-qpdf-enc256-objstm.pdf",
                                                        "public-qpdf-hybrid-xref.pdf"};

bool isMalformed(const std::string& file)
{
    return std::ranges::find(malformedJobs, file) != malformedJobs.end();
}

// What saving changes besides the form of lines: `before`, as it stands in the job with its lines rewritten,
// becomes `after`.
struct Edit {
    std::string_view file;
    std::string_view before;
    std::string_view after;
    std::string_view why;
};

constexpr std::array<Edit, 6> edits{{
    {"cups-designjet750-hprtl.prn", "@PJL EOJ\r\n\x1B%-12345X@PJL\r\n",
     "@PJL EOJ\r\n\x1B%-12345X@PJL\r\n\x1B%-12345X", "the job ends in PJL, which is closed by a UEL"},
    {"foomatic-hp2100-ljet4.pcl", "@PJL SET MANUALFEED=OFF\r\n",
     "@PJL SET MANUALFEED=OFF\r\n@PJL ENTER LANGUAGE=PCL\r\n", "a PCL body begins unannounced"},
    {"foomatic-hp2100-ljet4.pcl", "@PJL RESET\r\n", "@PJL RESET\r\n\x1B%-12345X",
     "the job ends in PJL, which is closed by a UEL"},
    {"hp-laserjet-4050-hpcups-text.pcl", "\x1B&l7h0m26a0s8c0o0E",
     "\x1B&l7H\x1B&l0M\x1B&l26A\x1B&l0S\x1B&l8C\x1B&l0O\x1B&l0E",
     "combined sequences come out as single ones"},
    {"hp-laserjet-p3010-ps-title-quotes.ps", "name; @PJL SET COPIES=9 (x)\"\r\n",
     "name;\r\n@PJL SET COPIES=9 (x)\"\r\n", "a command begins wherever `@PJL ` stands, in a title too"},
    {"oki-c9500-ps-staple-punch.ps", "@PJL RDYMSG DISPLAY = \"\"\r\n@PJL EOJ\r\n",
     "@PJL RDYMSG DISPLAY = \"\"\r\n@PJL EOJ\r\n\x1B%-12345X",
     "the job ends in PJL, which is closed by a UEL"},
}};

// Facts that records report otherwise than they are. A language that is read better loses its rows here.
struct Difference {
    std::string_view file;
    std::string_view fact;
    std::string_view reported;
    std::string_view why;
};

constexpr std::array<Difference, 23> differences{{
    {"ps-a2ps-duplex.ps", "copies", "1", "told in the body, in PostScript"},
    {"kyocera-taskalfa500ci-ps-staple-upper-right-punch2.ps", "stapled", "no",
     "told by the feature KCStaple, which is not read; the rule of the KX driver makes none of it"},
    {"kyocera-taskalfa500ci-ps-staple-upper-right-punch2.ps", "punched", "no",
     "told by the feature KCPunch, which is not read; the rule of the KX driver makes none of it"},
    {"ps-pstops-2up-kyocera.ps", "stapled", "no",
     "told by the feature KCStaple, which is not read; the rule of the KX driver makes none of it"},
    {"canon-iradv6075-ps-staple-1plu.ps", "stapled", "no",
     "the feature Staple tells its position in StapleDetails, not in StaplePosition"},
    {"ps-a2ps-duplex.ps", "duplex", "short", "the feature Duplex says True, and not DuplexNoTumble"},
    {"ps-a2ps-duplex.ps", "orientation", "portrait", "turned by 90 rotate in the page setup"},
    {"ps-dvips-landscape.ps", "orientation", "portrait", "turned by procedures; %%Orientation is not read"},
    {"ps-enscript-2up-duplex-tumble.ps", "orientation", "portrait", "turned by 90 rotate in the page setup"},
    {"ps-gnuplot-landscape.ps", "orientation", "portrait", "turned by 90 rotate, without a page setup"},
    {"ps-groff-landscape.ps", "orientation", "portrait", "turned by 90 rotate in a procedure"},
    {"ps-gs-ps2write-land2.ps", "orientation", "portrait", "told by the size of the page alone"},
    {"cups-designjet750-hprtl.prn", "pdl", "", "HPGL2 is no language of ours"},
    {"splix-samsung-clp300-qpdl.prn", "pdl", "", "QPDL is no language of ours"},
    {"cups-epson9-escp.escp", "pdl", "", "ESC/P has no signature"},
    {"gs-cdj550.pcl", "pdl", "", "begins with another escape than ESC E"},
    {"pcl-plotutils-graph-pcl.pcl", "pdl", "", "begins with another escape than ESC E"},
    {"jpeg-cjpeg-rgb-adobe-marker.jpg", "pdl", "", "only the JFIF form is recognised"},
    {"jpeg-imagemagick-exif-first.jpg", "pdl", "", "only the JFIF form is recognised"},
    {"oce-varioprint2100-ps-ticket-staple.ps", "pdl", "", "a ticket of the maker stands before %!PS"},
    {"public-qpdf-leading-junk.pdf", "pdl", "", "the signature does not stand at the start"},
    {"ricoh-mpc3002-pdf-staple-centerw.pjl.pdf", "staple", "two", "a booklet counts as two staples"},
    {"gs-pxlmono-land2-dduplextrue.pxl", "duplex", "short",
     "landscape exchanges the edges, and this driver does not turn them with the page"},
}};

// What the PJL of each job tells in a way that is read, so that its record has to know it.
struct ToldFacts {
    std::string_view file;
    std::string_view facts;
};

constexpr std::array<ToldFacts, 33> toldByPjl{{
    {"brlaser-hl2270-econo-copies2.prn", ""},
    {"cups-designjet750-hprtl.prn", "pdl"},
    {"foomatic-genpcl6-duplex-short.pxl", "pdl brand forceMono"},
    {"foomatic-hp2100-ljet4.pcl", "pdl copies ecoMode"},
    {"fujixerox-cm305-pdf-blackwhite.pjl.pdf", "pdl brand duplex paper forceMono ecoMode"},
    {"generic-pdf-printer-title-utf8.pjl.pdf", "pdl brand paper forceMono"},
    {"gs-pxlcolor-mixed5.pxl", "pdl brand forceMono"},
    {"gs-pxlmono-land2-dduplextrue.pxl", "pdl brand forceMono"},
    {"gs-pxlmono-mixsize.pxl", "pdl brand forceMono"},
    {"hp-cm3530-pdf-stapleoption-two.pjl.pdf", "pdl paper forceMono stapled staple punched"},
    {"hp-color-laserjet-e87750-ps-black-only.ps", "pdl"},
    {"hp-color-laserjet-e87750-ps-staple-left-punch3.ps", "pdl"},
    {"hp-laserjet-4050-hpcups-text.pcl", "pdl"},
    {"hp-laserjet-m806-ps-2staplesleft.ps", "pdl"},
    {"hp-laserjet-m806-ps-3holepunchtop.ps", "pdl"},
    {"hp-laserjet-m806-ps-pin-print.ps", "pdl"},
    {"hp-laserjet-p3010-ps-title-quotes.ps", "pdl"},
    {"hp-laserjet-p3010-ps-title-utf8.ps", "pdl"},
    {"kyocera-km2030-ps-finish-staple.ps", "pdl ecoMode stapled"},
    {"kyocera-taskalfa500ci-ps-prescribe-all-levels.ps", "pdl"},
    {"kyocera-taskalfa500ci-ps-staple-upper-right-punch2.ps", "pdl"},
    {"lexmark-cx860-ps-staple-topleft-punch4.ps", "pdl"},
    {"oki-c9500-ps-staple-punch.ps", "pdl"},
    {"pcl-dvilj4.pcl", "pdl"},
    {"ps-pstops-2up-kyocera.ps", "pdl"},
    {"ricoh-mpc3002-pdf-copies3-a3.pjl.pdf", "pdl brand forceMono ecoMode stapled punched copies"},
    {"ricoh-mpc3002-pdf-punch-leftus3.pjl.pdf", "pdl brand forceMono ecoMode stapled punched duplex"},
    {"ricoh-mpc3002-pdf-staple-centerw.pjl.pdf", "pdl brand forceMono ecoMode stapled punched staple"},
    {"ricoh-mpc3002-pxl-gray-short.pxl", "pdl brand forceMono ecoMode stapled punched copies duplex"},
    {"ricoh-mpc3002-pxl-staple-upperleft.pxl", "pdl brand forceMono ecoMode stapled punched copies staple"},
    {"samsung-x703-ps-staple2-punch4-econo.ps", "pdl ecoMode stapled punched"},
    {"sharp-arc172-ps-jcl-staple-punch.ps", "pdl punched"},
    {"splix-samsung-clp300-qpdl.prn", "pdl"},
}};

// The same for the print tickets of packages.
constexpr std::array<ToldFacts, 2> toldByTickets{{
    {"public-tika-testXPSWithDataDescriptor.xps", "pdl copies paper"},
    {"public-tika-testXPSWithDataDescriptor2.xps", "pdl copies paper"},
}};

// What PostScript jobs tell and records leave out.
struct UntoldFact {
    std::string_view file;
    std::string_view fact;
    std::string_view why;
};

constexpr std::array<UntoldFact, 20> untoldByPostScript{{
    {"canon-iradv6075-ps-staple-1plu.ps", "staple", "counts as no staple"},
    {"hp-color-laserjet-e87750-ps-staple-left-punch3.ps", "stapled", "told by the feature HPStaplerOptions"},
    {"hp-color-laserjet-e87750-ps-staple-left-punch3.ps", "punched", "told by the feature HPPunchingOptions"},
    {"hp-laserjet-m806-ps-2staplesleft.ps", "stapled", "told by the feature HPStaplerOptions"},
    {"hp-laserjet-m806-ps-3holepunchtop.ps", "punched", "told by the feature HPPunchingOptions"},
    {"kyocera-taskalfa500ci-ps-staple-upper-right-punch2.ps", "staple", "counts as no staple"},
    {"lexmark-cx860-ps-staple-topleft-punch4.ps", "stapled", "told by the feature StapleJob"},
    {"lexmark-cx860-ps-staple-topleft-punch4.ps", "punched", "told by the feature HolePunch"},
    {"oce-varioprint2100-ps-ticket-staple.ps", "duplex", "not recognised as PostScript"},
    {"oce-varioprint2100-ps-ticket-staple.ps", "stapled", "not recognised as PostScript"},
    {"oce-varioprint2100-ps-ticket-staple.ps", "orientation", "not recognised as PostScript"},
    {"oki-c9500-ps-staple-punch.ps", "stapled", "told by the feature OKStaple"},
    {"oki-c9500-ps-staple-punch.ps", "punched", "told by the feature OKStaple"},
    {"ps-enscript-2up-duplex-tumble.ps", "duplex", "told by setpagedevice outside of features"},
    {"ps-pstops-2up-kyocera.ps", "staple", "counts as no staple"},
    {"ricoh-mpc3002-ps-duplex-staple-upper-left.ps", "staple",
     "told by StapleDetails of the feature StapleLocation"},
    {"sharp-arc172-ps-jcl-staple-punch.ps", "duplex", "told by the feature ARDuplex"},
    {"sharp-arc172-ps-jcl-staple-punch.ps", "stapled", "told by JOBSTAPLE of PJL"},
    {"toshiba-es280-ps-staple-ul-holepunch.ps", "stapled", "told by the feature Stapling"},
    {"toshiba-es280-ps-staple-ul-holepunch.ps", "punched", "told by the feature HolePunch"},
}};

// The jobs whose body tells copies, duplex, orientation and paper in PCL XL, so that their records know all
// of them, and the operators that become chunks: the session, and two for each page.
struct PclXlJob {
    std::string_view file;
    int pages;
};

constexpr std::array<PclXlJob, 6> pclXlJobs{{
    {"foomatic-genpcl6-duplex-short.pxl", 3},
    {"gs-pxlcolor-mixed5.pxl", 5},
    {"gs-pxlmono-land2-dduplextrue.pxl", 2},
    {"gs-pxlmono-mixsize.pxl", 2},
    {"ricoh-mpc3002-pxl-gray-short.pxl", 2},
    {"ricoh-mpc3002-pxl-staple-upperleft.pxl", 3},
}};

struct ParsedJob {
    const Corpus::RealJob& real;
    JobParser::JobFile& file;
    const JobParser::JobParserResult& result;
};

auto findDifference(std::string_view file, std::string_view fact)
{
    return std::ranges::find_if(differences,
                                [&](const Difference& row) { return row.file == file && row.fact == fact; });
}

// A difference of two whole jobs is no message to print.
std::size_t firstDifference(std::string_view a, std::string_view b)
{
    return static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
}

std::string withKnownEdits(const std::string& name, std::string job)
{
    for (const auto& [file, before, after, why] : edits) {
        if (file != name)
            continue;
        const std::size_t place = job.find(before);
        EXPECT_NE(place, std::string::npos) << "to be changed: " << before;
        if (place != std::string::npos)
            job.replace(place, before.size(), after);
    }
    return job;
}

class RealJobs : public testing::Test
{
protected:
    void SetUp() override
    {
        if (Corpus::folder().empty())
            GTEST_SKIP() << "There are no jobs: JOBPARSER_CORPUS names no folder with a manifest.jsonl";
        JobParser::Library::init({});
    }

    static void forEach(const std::function<void(const ParsedJob&)>& check)
    {
        JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
        for (const Corpus::RealJob& real : Corpus::jobs()) {
            SCOPED_TRACE(real.name);
            JobParser::JobFile file;
            file.open(real.path);
            const auto result = parser.parse(file, {JobParser::Pdl::Detect, true, true});
            check({real, file, *result});
        }
    }
};

TEST_F(RealJobs, AreAllInTheListAndUnchanged)
{
    std::set<std::string> listed{"README.md", "manifest.jsonl"};
    std::set<std::string> present;

    for (const Corpus::RealJob& real : Corpus::jobs()) {
        listed.insert(real.name);
        EXPECT_EQ(static_cast<std::int64_t>(real.bytes.size()), real.size) << real.name;
    }
    for (const auto& entry : std::filesystem::directory_iterator(Corpus::folder()))
        present.insert(entry.path().filename().string());

    EXPECT_EQ(present, listed);
    EXPECT_GT(Corpus::jobs().size(), 0U);
}

TEST_F(RealJobs, ParseUnlessTheyAreMalformed)
{
    forEach([](const ParsedJob& job) { EXPECT_EQ(job.result.parsed, !isMalformed(job.real.name)); });
}

TEST_F(RealJobs, SaveAsTheyWereButForTheirPjlLines)
{
    forEach([](const ParsedJob& job) {
        const std::string text = saved(*job.result.job, job.file);

        const std::string expected =
            isMalformed(job.real.name)
                ? job.real.bytes
                : withKnownEdits(job.real.name, Corpus::withPjlRewritten(job.real.bytes));
        EXPECT_TRUE(text == expected) << "at byte " << firstDifference(text, expected);
        EXPECT_EQ(job.result.job->size(), static_cast<std::int64_t>(text.size()));
    });
}

TEST_F(RealJobs, GrowOnlyByWhatTheirPjlLinesGainAndLose)
{
    std::set<std::string_view> changed;

    forEach([&](const ParsedJob& job) {
        const std::string text = saved(*job.result.job, job.file);

        const auto row = std::ranges::find(changedJobs, job.real.name, &ChangedJob::file);
        if (row == changedJobs.end()) {
            EXPECT_TRUE(text == job.real.bytes) << "at byte " << firstDifference(text, job.real.bytes);
            return;
        }
        changed.insert(row->file);
        EXPECT_EQ(static_cast<int>(text.size()) - static_cast<int>(job.real.bytes.size()), row->growth);
        EXPECT_FALSE(text == job.real.bytes);
    });

    EXPECT_EQ(changed.size(), changedJobs.size());
}

TEST_F(RealJobs, HaveChunksThatWriteAsManyBytesAsTheySay)
{
    forEach([](const ParsedJob& job) { EXPECT_NO_THROW(job.result.job->checkChunkSizes(job.file)); });
}

TEST_F(RealJobs, ComeBackFromTheirMetadata)
{
    forEach([](const ParsedJob& job) {
        const std::string metadata = job.result.job->toJson();

        const JobParser::Job again(Torv::Json::parse(metadata));

        EXPECT_EQ(again.toJson(), metadata);
        EXPECT_TRUE(saved(again, job.file) == saved(*job.result.job, job.file));
    });
}

// PDFs without a summary: malformed ones, and one whose signature does not stand at its start.
constexpr std::array<std::string_view, 3> pdfsWithoutSummary{
    "pdf-qpdf-enc256-objstm.pdf", "public-qpdf-hybrid-xref.pdf", "public-qpdf-leading-junk.pdf"};

const JobParser::ChunkPdfDocumentInfo* summaryOf(const JobParser::Job& job)
{
    for (const auto& chunk : job.chunks) {
        if (const auto* summary = dynamic_cast<const JobParser::ChunkPdfDocumentInfo*>(chunk.get()))
            return summary;
    }
    return nullptr;
}

TEST_F(RealJobs, HaveAsManyPagesInTheirPdfAsItSays)
{
    std::size_t count = 0;

    forEach([&](const ParsedJob& job) {
        if (job.real.expect["pdl"].toString() != "PDF")
            return;
        const auto* summary = summaryOf(*job.result.job);
        if (std::ranges::find(pdfsWithoutSummary, job.real.name) != pdfsWithoutSummary.end()) {
            EXPECT_EQ(summary, nullptr);
            EXPECT_EQ(job.result.job->chunks.size(), 1U);
            return;
        }
        ASSERT_NE(summary, nullptr);
        const char* const key = job.real.expect.contains("pages") ? "pages" : "pagesByQpdf";
        // Of one job nobody knows the pages.
        if (job.real.expect.contains(key)) {
            const auto pages = static_cast<std::int64_t>(summary->documentInfo->pages.size());
            EXPECT_EQ(pages, job.real.expect[key].toInt64());
        }
        ++count;
    });

    EXPECT_EQ(count, 16U);
}

TEST_F(RealJobs, HaveSummariesOfPdfsThatReloadToTheSameText)
{
    forEach([](const ParsedJob& job) {
        const auto* summary = summaryOf(*job.result.job);
        if (summary == nullptr)
            return;
        JobParser::SerializationContext context;
        JobParser::UnserializationContext reading;
        const std::string dto = summary->toJson(context);

        const JobParser::ChunkPdfDocumentInfo again(reading, Torv::Json::parse(dto));

        EXPECT_EQ(again.toJson(context), dto);
        EXPECT_EQ(again.documentInfo->pages.size(), summary->documentInfo->pages.size());
    });
}

// Whatever a record says is either true or stands in the table, and nothing stands there without need.
TEST_F(RealJobs, AreReportedAsTheyAre)
{
    std::set<std::pair<std::string, std::string>> differing;

    forEach([&](const ParsedJob& job) {
        const Corpus::Facts reported = Corpus::recordFacts(job.result.job->jobInfo);
        for (const auto& [fact, truth] : Corpus::trueFacts(job.real.expect)) {
            const auto said = reported.find(fact);
            if (said == reported.end() || said->second == truth)
                continue;
            differing.emplace(job.real.name, fact);
            const auto row = findDifference(job.real.name, fact);
            if (row == differences.end())
                ADD_FAILURE() << fact << " is " << truth << " and is reported as " << said->second;
            else
                EXPECT_EQ(said->second, row->reported) << fact << ": " << row->why;
        }
    });

    for (const Difference& row : differences)
        EXPECT_TRUE(differing.contains({std::string(row.file), std::string(row.fact)}))
            << row.file << ' ' << row.fact << " is reported as it is";
}

// Duplex, finishing and orientation of a PostScript job are known, or stand in the table with a reason. What
// is known is right, or stands in the table of differences.
TEST_F(RealJobs, KnowWhatTheirPostScriptTells)
{
    constexpr std::array facts{"duplex", "stapled", "staple", "punched", "orientation"};
    std::set<std::pair<std::string, std::string>> untold;

    forEach([&](const ParsedJob& job) {
        const Corpus::Facts truth = Corpus::trueFacts(job.real.expect);
        if (!truth.contains("pdl") || truth.at("pdl") != "PostScript")
            return;
        const Corpus::Facts reported = Corpus::recordFacts(job.result.job->jobInfo);
        for (const std::string fact : facts) {
            if (truth.contains(fact) && !reported.contains(fact))
                untold.emplace(job.real.name, fact);
        }
    });

    std::set<std::pair<std::string, std::string>> expected;
    for (const UntoldFact& row : untoldByPostScript)
        expected.emplace(row.file, row.fact);
    EXPECT_EQ(untold, expected);
}

// A record may leave out what only the body of a job tells, but nothing that stands in its PJL.
TEST_F(RealJobs, KnowAllThatTheirPjlTells)
{
    std::set<std::string_view> found;

    forEach([&](const ParsedJob& job) {
        const auto row = std::ranges::find(toldByPjl, job.real.name, &ToldFacts::file);
        EXPECT_EQ(row != toldByPjl.end(), job.result.job->jobInfo.pjl);
        if (row == toldByPjl.end())
            return;
        found.insert(row->file);
        const Corpus::Facts reported = Corpus::recordFacts(job.result.job->jobInfo);
        for (const std::string& fact : Torv::explode(row->facts, " ", 100, true))
            EXPECT_TRUE(reported.contains(fact)) << fact;
    });

    EXPECT_EQ(found.size(), toldByPjl.size());
}

TEST_F(RealJobs, KnowAllThatTheirPrintTicketsTell)
{
    std::set<std::string_view> found;

    forEach([&](const ParsedJob& job) {
        const auto row = std::ranges::find(toldByTickets, job.real.name, &ToldFacts::file);
        EXPECT_EQ(row != toldByTickets.end(), job.real.expect.contains("ticket"));
        if (row == toldByTickets.end())
            return;
        found.insert(row->file);
        const Corpus::Facts reported = Corpus::recordFacts(job.result.job->jobInfo);
        for (const std::string& fact : Torv::explode(row->facts, " ", 100, true))
            EXPECT_TRUE(reported.contains(fact)) << fact;
    });

    EXPECT_EQ(found.size(), toldByTickets.size());
}

TEST_F(RealJobs, KnowAllThatTheirPclXlTells)
{
    std::set<std::string_view> found;

    forEach([&](const ParsedJob& job) {
        const JobParser::JobInfo& info = job.result.job->jobInfo;
        const auto row = std::ranges::find(pclXlJobs, job.real.name, &PclXlJob::file);
        EXPECT_EQ(row != pclXlJobs.end(), info.pdl == JobParser::Pdl::PclXl);
        if (row == pclXlJobs.end())
            return;
        found.insert(row->file);
        const Corpus::Facts reported = Corpus::recordFacts(info);
        for (const char* fact : {"copies", "duplex", "orientation", "paper"})
            EXPECT_TRUE(reported.contains(fact)) << fact;
        const auto isOperator = [](const std::shared_ptr<JobParser::IChunk>& chunk) {
            return std::dynamic_pointer_cast<JobParser::JobChunkPclXLOperator>(chunk) != nullptr;
        };
        EXPECT_EQ(std::ranges::count_if(job.result.job->chunks, isOperator), 1 + 2 * row->pages);
    });

    EXPECT_EQ(found.size(), pclXlJobs.size());
}

} // namespace
