// PDFs as they stand in jobs: bare, in PJL, restricted and broken.

#include <gtest/gtest.h>

#include "JobParser/Library.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/GlobalParser.h"
#include "pdf/ChunkPdfDocumentInfo.h"
#include "pdf/DocumentInfo.h"
#include "pdf/RestrictedPdfNotAllowedException.h"
#include "tests/pdf/PdfSupport.h"
#include "tests/support/OpenJob.h"
#include "tests/support/SparseFile.h"
#include "tests/support/WholeJobs.h"

#include "Torv/Json/Json.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;
using Pdf::onePage;
using Pdf::PdfBytes;
using WholeJobs::dumped;
using WholeJobs::saved;

PdfBytes wholePdf(std::string_view entries = "")
{
    return onePage().end("<</Root 1 0 R/Size 4" + std::string(entries) + ">>");
}

std::string pdfMode(OpenJob& job, bool allowRestrictedPdf = true)
{
    Global::Parser parser(job.job, job.file, job.papers);
    parser.pdfMode(allowRestrictedPdf);
    EXPECT_EQ(parser.pdlJobInfo.m_flags, 0U);
    std::string words;
    for (const auto& chunk : job.job.chunks) {
        if (const auto* raw = dynamic_cast<const ChunkRawData*>(chunk.get()))
            words += "Raw " + std::to_string(raw->offset) + '+' + std::to_string(raw->m_size) + ' ';
        else if (const auto* info = dynamic_cast<const ChunkPdfDocumentInfo*>(chunk.get()))
            words += "Info of " + std::to_string(info->documentInfo->pages.size()) + ' ';
        else
            words += "? ";
    }
    return words + "@" + std::to_string(job.file.m_offset);
}

std::string pdfMode(const std::string& bytes)
{
    OpenJob job(bytes);
    return pdfMode(job);
}

std::shared_ptr<JobParserResult> parse(OpenJob& job, bool allowRestrictedPdf)
{
    return WholeJobs::parse(job, {Pdl::Detect, true, allowRestrictedPdf});
}

TEST(PdfMode, TakesAPdfUpToTheEndOfTheFile)
{
    const std::string size = std::to_string(wholePdf().size());

    EXPECT_EQ(pdfMode(wholePdf().str()), "Raw 0+" + size + " Info of 1 @" + size);
}

TEST(PdfMode, LeavesWhatIsNoPdf)
{
    EXPECT_EQ(pdfMode("%PDF 1.4"), "@0");
    EXPECT_EQ(pdfMode("%pdf-1.4"), "@0");
    EXPECT_EQ(pdfMode(""), "@0");
}

TEST(PdfMode, GivesBackTheByteThatFollowsThePdf)
{
    const std::string size = std::to_string(wholePdf().size());

    EXPECT_EQ(pdfMode(wholePdf().str() + "\x1B%-12345X"), "Raw 0+" + size + " Info of 1 @" + size);
}

// The position is at the end then, so that it cannot be told from a byte of the PDF.
TEST(PdfMode, TakesAStrayByteThatIsTheLastOne)
{
    const std::string size = std::to_string(wholePdf().size() + 1);

    EXPECT_EQ(pdfMode(wholePdf().str() + "!"), "Raw 0+" + size + " Info of 1 @" + size);
}

TEST(PdfMode, CountsOffsetsFromThePercentSign)
{
    OpenJob job("before" + wholePdf().str());
    Global::Parser parser(job.job, job.file, job.papers);
    job.file.setPos(6);

    parser.pdfMode(true);

    EXPECT_EQ(dumped(job.job).find("Raw (" + std::to_string(wholePdf().size()) + " bytes)") !=
                  std::string::npos,
              true);
}

TEST(PdfMode, RefusesARestrictedPdfOnRequest)
{
    for (const char* entry : {"/Encrypt 5 0 R", "/Encrypt null", "/Encrypt<<>>"}) {
        OpenJob allowed(wholePdf(entry).str());
        OpenJob refused(wholePdf(entry).str());

        EXPECT_NE(pdfMode(allowed, true), "");
        try {
            pdfMode(refused, false);
            FAIL();
        } catch (const Pdf::Parser::RestrictedPdfNotAllowedException& error) {
            EXPECT_STREQ(error.what(), "Restricted PDF is not allowed (Encrypt present)");
        }
        EXPECT_TRUE(refused.job.chunks.empty());
        EXPECT_TRUE(refused.file.atEnd());
    }
    OpenJob plain(wholePdf().str());
    EXPECT_NO_THROW(pdfMode(plain, false));
}

TEST(PdfMode, LeavesTheFileWhereReadingFailed)
{
    OpenJob job("%PDF-1.7\n1 0 obj\nnot an object");

    EXPECT_THROW(pdfMode(job), Pdf::Parser::PdfParserException);
    EXPECT_EQ(job.file.m_offset, 19);
    EXPECT_TRUE(job.job.chunks.empty());
}

// A stream of 9 MiB with no length, around which the file is mapped several times.
TEST(PdfMode, FindsTheEndOfAStreamOverSeveralViews)
{
    for (std::int64_t shift = -12; shift <= 2; ++shift) {
        const std::string head = onePage("/Contents 4 0 R").raw("4 0 obj<<>>stream\n").str();
        const std::string tail = "endstream\nendobj\n";
        const std::int64_t endOfView = 4194304;
        const std::int64_t offset = endOfView + shift;
        const std::string table = "xref\n0 0\ntrailer<</Root 1 0 R/Size 5>>startxref\n";
        const std::string rest =
            tail + table + std::to_string(offset + static_cast<std::int64_t>(tail.size())) + "\n";
        SparseFile sparse(head);
        sparse.writeAt(offset, rest);
        Job job;
        JobFile file;
        PaperSizeManager papers;
        file.open(sparse.path());
        Global::Parser parser(job, file, papers);

        parser.pdfMode(true);

        EXPECT_EQ(job.size(), offset + static_cast<std::int64_t>(rest.size())) << shift;
    }
}

TEST(PdfMode, SavesItsBytesAsTheyAreAndKeepsTheSummaryAsMetadata)
{
    Library::init({});
    OpenJob job(wholePdf().str());
    const auto result = parse(job, true);

    const Job again(Torv::Json::parse(result->job->toJson()));

    EXPECT_TRUE(result->parsed);
    EXPECT_NO_THROW(result->job->checkChunkSizes(job.file));
    EXPECT_EQ(saved(*result->job, job.file), wholePdf().str());
    EXPECT_EQ(again.toJson(), result->job->toJson());
    EXPECT_EQ(saved(again, job.file), wholePdf().str());
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Pdf);
    EXPECT_EQ(result->job->jobInfo.flags(JobInfo::FlagPageCount | JobInfo::FlagPaper), 0U);
}

TEST(PdfMode, StandsBetweenPjlAndTheUelBehindThePdf)
{
    const std::string bytes = JobBytes()
                                  .uel()
                                  .pjl("SET COPIES=2")
                                  .pjl("ENTER LANGUAGE=PDF")
                                  .raw(wholePdf().str())
                                  .uel()
                                  .pjl("EOJ")
                                  .uel()
                                  .str();
    OpenJob job(bytes);

    const auto result = parse(job, false);

    EXPECT_EQ(dumped(*result->job), "Job parser: Dumping 8 chunks\nUEL\n@PJL SET COPIES=2\n"
                                    "@PJL ENTER LANGUAGE=PDF\nRaw (" +
                                        std::to_string(wholePdf().size()) +
                                        " bytes)\nPdfChunkDocumentInfo\nUEL\n@PJL EOJ\nUEL\n");
    EXPECT_EQ(saved(*result->job, job.file), bytes);
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Pdf);
    EXPECT_EQ(result->job->jobInfo.copies, 2);
}

TEST(PdfMode, FollowsWhatIsNoPdfBehindPjlAsRawData)
{
    OpenJob job(JobBytes().uel().pjl("ENTER LANGUAGE=PDF").raw("none").uel().str());

    EXPECT_EQ(dumped(*parse(job, false)->job),
              "Job parser: Dumping 4 chunks\nUEL\n@PJL ENTER LANGUAGE=PDF\nRaw (4 bytes)\nUEL\n");
}

TEST(PdfMode, MakesABrokenPdfOneRawStretchOrThrows)
{
    const std::string broken = wholePdf().str().substr(0, 60);
    OpenJob degraded(broken);
    OpenJob refused(broken);
    OpenJob restricted(wholePdf("/Encrypt 5 0 R").str());

    const auto result = parse(degraded, true);

    EXPECT_FALSE(result->parsed);
    EXPECT_EQ(dumped(*result->job), "Job parser: Dumping 1 chunks\nRaw (60 bytes)\n");
    EXPECT_THROW(parse(refused, false), Pdf::Parser::PdfParserException);
    EXPECT_THROW(parse(restricted, false), Pdf::Parser::RestrictedPdfNotAllowedException);
    EXPECT_TRUE(parse(restricted, true)->parsed);
}

TEST(PdfMode, DegradesForOtherReasonsWhetherRestrictedPdfIsAllowedOrNot)
{
    OpenJob job(JobBytes().uel().raw("@PJL SET COPIES=2\x01").str());

    EXPECT_FALSE(parse(job, false)->parsed);
}

TEST(PdfMode, LetsWrongKindsOfValuesThrough)
{
    OpenJob job(onePage().end("<</Root 1 0 R>>").str());

    EXPECT_THROW(parse(job, true), std::bad_variant_access);
}

} // namespace
} // namespace JobParser
