#include "worker/JobAnalyzer.h"

#include <gtest/gtest.h>

#include "JobParser/JobFile.h"
#include "tests/Torv/TemporaryDirectory.h"
#include "tests/support/JobBytes.h"
#include "tests/worker/PclXlBytes.h"
#include "tests/worker/PdfBytes.h"
#include "tests/worker/WalkerSupport.h"
#include "worker/FitzContext.h"
#include "worker/Request.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

using namespace std::string_view_literals;

JobFacts analyze(const std::string& bytes, Pdl pdl, int tolerance = 0)
{
    const Torv::Test::TemporaryDirectory directory;
    const FitzContext context;
    Ghostscript ghostscript;
    ParseRequest request;
    request.pdl = pdl;
    request.jobPath = directory.file("job", bytes);
    request.grayscaleTolerance = tolerance;
    return JobAnalyzer(context.get(), ghostscript).analyze(request, std::nullopt);
}

int failureOf(const std::string& bytes, Pdl pdl)
{
    try {
        analyze(bytes, pdl);
    } catch (const WorkerException& error) {
        return error.code();
    }
    return 0;
}

TEST(JobAnalyzer, GivesEachBodyToTheReaderOfItsLanguage)
{
    const JobBytes job = JobBytes()
                             .uel()
                             .pjl("ENTER LANGUAGE=PCL")
                             .raw("one\ftwo\f")
                             .uel()
                             .pjl("ENTER LANGUAGE=PCLXL")
                             .raw(PclXlBytes().beginPage().endPage().str())
                             .uel()
                             .pjl("ENTER LANGUAGE=PDF")
                             .raw(pdfOf({"1 0 0 rg 0 0 9 9 re f"}))
                             .uel();

    EXPECT_EQ(pagesOf(analyze(job.str(), Pdl::Pcl5)), (Pages{1, 2, 0, 1}));
}

TEST(JobAnalyzer, TellsTheLargestPageOfAllBodies)
{
    const JobBytes job =
        JobBytes().esc("E").esc("&l26a0O").raw("a\f").uel().esc("E").esc("&l27a1O").raw("b\f").uel();

    const PageSize size = analyze(job.str(), Pdl::Pcl5).size();

    EXPECT_EQ(size.width, 4200);
    EXPECT_EQ(size.height, 2970);
}

TEST(JobAnalyzer, TakesTheGreaterNumberOfCopiesOfEnvelopeAndBodies)
{
    const auto copies = [](const char* envelope, const char* body) {
        return analyze(JobBytes().uel().pjl(envelope).pjl("ENTER LANGUAGE=PCL").esc(body).raw("a\f").str(),
                       Pdl::Pcl5)
            .copies();
    };

    EXPECT_EQ(copies("SET COPIES=4", "&l1X"), 4);
    EXPECT_EQ(copies("SET COPIES=1", "&l3X"), 3);
    EXPECT_EQ(copies("SET DUPLEX=ON", "E"), 1);
}

TEST(JobAnalyzer, PassesOnTheTolerance)
{
    const std::string job =
        PclXlBytes().beginPage().noPen().rgbBrush("\x4C\x4D\x4C"sv).rectangle().endPage().str();

    EXPECT_EQ(pagesOf(analyze(job, Pdl::PclXl, 0)), (Pages{0, 0, 0, 1}));
    EXPECT_EQ(pagesOf(analyze(job, Pdl::PclXl, 1)), (Pages{0, 0, 1, 0}));
}

TEST(JobAnalyzer, FindsNoBodyInLanguagesThatItDoesNotRead)
{
    for (const Pdl pdl : {Pdl::Detect, Pdl::Unknown, Pdl::EscP, Pdl::Prescribe, Pdl::Jpeg, Pdl::Urf})
        EXPECT_EQ(failureOf("text", pdl), static_cast<int>(ErrorCode::NoBody)) << static_cast<int>(pdl);
    EXPECT_EQ(failureOf("text", static_cast<Pdl>(77)), static_cast<int>(ErrorCode::NoBody));
    EXPECT_EQ(failureOf("", Pdl::Pcl5), static_cast<int>(ErrorCode::NoBody));
}

TEST(JobAnalyzer, PassesOnThatABodyIsMalformed)
{
    EXPECT_EQ(failureOf("neither", Pdl::Pdf), static_cast<int>(ErrorCode::BadDocument));
    EXPECT_EQ(failureOf("neither", Pdl::Xps), static_cast<int>(ErrorCode::BadDocument));
    EXPECT_EQ(failureOf("neither", Pdl::PclXl), static_cast<int>(ErrorCode::BadDocument));
}

TEST(OpenJob, TellsThatThereIsNoFile)
{
    const Torv::Test::TemporaryDirectory directory;
    for (const Encryption& encryption :
         {Encryption(), Encryption({Torv::Security::Endecryptor::Algorithm::Aes128Cbc, std::string(16, 'k'),
                                    std::string(16, 'v')})}) {
        JobFile file;
        try {
            openJob(file, directory.path("none"), encryption);
            ADD_FAILURE();
        } catch (const WorkerException& error) {
            EXPECT_EQ(error.code(), static_cast<int>(ErrorCode::NoFile));
        }
    }
}

} // namespace
} // namespace JobParser::Worker
