#include "worker/BodyFinder.h"

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "tests/support/JobBytes.h"
#include "tests/support/OpenJob.h"

#include "Torv/GenericException.h"

namespace JobParser::Worker
{
namespace
{

/// The bodies of a job, each as its language and its bytes.
struct Found {
    std::vector<std::pair<Pdl, std::string>> bodies;
    std::int32_t copies = 0;
};

Found findIn(const std::string& bytes, Pdl expected = Pdl::Unknown)
{
    OpenJob job(bytes);
    BodyFinder finder(job.file, expected);
    Found found;
    for (const Body& body : finder.find()) {
        std::string text;
        for (const Range& range : body.ranges)
            text +=
                bytes.substr(static_cast<std::size_t>(range.offset), static_cast<std::size_t>(range.size));
        found.bodies.emplace_back(body.pdl, text);
    }
    found.copies = finder.copies();
    return found;
}

using Bodies = std::vector<std::pair<Pdl, std::string>>;

TEST(BodyFinder, TakesABareJobWhole)
{
    EXPECT_EQ(findIn("%!PS\nshowpage\n").bodies, (Bodies{{Pdl::PostScript, "%!PS\nshowpage\n"}}));
}

TEST(BodyFinder, TakesWhatPjlAnnouncesUpToTheUel)
{
    const JobBytes job = JobBytes().uel().pjl("ENTER LANGUAGE=PCL").raw("text\f").uel().pjl("EOJ").uel();

    EXPECT_EQ(findIn(job.str()).bodies, (Bodies{{Pdl::Pcl5, "text\f"}}));
}

TEST(BodyFinder, BelievesTheFirstBytesMoreThanPjl)
{
    const JobBytes job = JobBytes().uel().pjl("ENTER LANGUAGE=POSTSCRIPT").raw("%PDF-1.4\n").uel();

    EXPECT_EQ(findIn(job.str()).bodies, (Bodies{{Pdl::Pdf, "%PDF-1.4\n"}}));
}

TEST(BodyFinder, FindsSeveralBodiesInOneFile)
{
    const JobBytes job = JobBytes()
                             .uel()
                             .pjl("ENTER LANGUAGE=PCL")
                             .raw("one")
                             .uel()
                             .pjl("ENTER LANGUAGE=POSTSCRIPT")
                             .raw("%!PS\ntwo")
                             .uel();

    EXPECT_EQ(findIn(job.str()).bodies, (Bodies{{Pdl::Pcl5, "one"}, {Pdl::PostScript, "%!PS\ntwo"}}));
}

TEST(BodyFinder, LeavesPrescribeBlocksOutOfABody)
{
    const std::string job = "%!PS\none\n!R! DUPX 1;EXIT;two\n";

    EXPECT_EQ(findIn(job).bodies, (Bodies{{Pdl::PostScript, "%!PS\none\ntwo\n"}}));
}

TEST(BodyFinder, LeavesALongPrescribeBlockOutOfPostScript)
{
    const std::string job = "%!PS\n!R!" + std::string(40, ' ') + "RES;" + std::string(80, ' ') + "EXIT;two\n";

    EXPECT_EQ(findIn(job).bodies, (Bodies{{Pdl::PostScript, "%!PS\ntwo\n"}}));
}

TEST(BodyFinder, TakesNoPrescribeOutOfADocument)
{
    const std::string job = "%PDF-1.4\n!R! EXIT; is text\n";

    EXPECT_EQ(findIn(job).bodies, (Bodies{{Pdl::Pdf, job}}));
}

TEST(BodyFinder, GivesWhatNobodyNamesTheExpectedLanguage)
{
    EXPECT_EQ(findIn("junk%PDF-1.4", Pdl::Pdf).bodies, (Bodies{{Pdl::Pdf, "junk%PDF-1.4"}}));
}

TEST(BodyFinder, TakesLineEndsBehindTheJobForNoBody)
{
    const JobBytes job = JobBytes().uel().pjl("ENTER LANGUAGE=PCL").raw("text").uel().raw("\r\n\x04").uel();

    EXPECT_EQ(findIn(job.str(), Pdl::Pcl5).bodies, (Bodies{{Pdl::Pcl5, "text"}}));
}

TEST(BodyFinder, TellsTheCopiesOfTheEnvelope)
{
    const JobBytes job = JobBytes().uel().pjl("SET COPIES=7").pjl("ENTER LANGUAGE=PCL").raw("text").uel();

    EXPECT_EQ(findIn(job.str()).copies, 7);
}

TEST(BodyFinder, FindsNothingInAnEmptyFile)
{
    EXPECT_TRUE(findIn("", Pdl::Pdf).bodies.empty());
}

TEST(BodyFinder, SurvivesACutAtEveryByte)
{
    const std::string job =
        JobBytes().uel().pjl("ENTER LANGUAGE=PCL").raw("one !R! UNIT C;EXIT;two").uel().str();

    for (std::size_t size = 0; size <= job.size(); ++size) {
        try {
            EXPECT_LE(findIn(job.substr(0, size)).bodies.size(), 1U);
        } catch (const Torv::GenericException&) {
            // A malformed envelope is an error of the job.
        }
    }
}

} // namespace
} // namespace JobParser::Worker
