// XPS packages as whole jobs: bare, behind PJL, in front of it, and broken.

#include <gtest/gtest.h>
#include <string>

#include "tests/JobParser/xps/XpsSupport.h"
#include "tests/support/OpenJob.h"
#include "tests/support/WholeJobs.h"
#include "tests/support/ZipBytes.h"

namespace JobParser
{
namespace
{

using namespace std::string_literals;
using WholeJobs::parse;
using WholeJobs::saved;

TEST(XpsJob, TellsItsTicketAndSavesByteForByte)
{
    const std::string bytes =
        ZipBytes()
            .part("a", "")
            .part(ticketName, TicketText().copies("2").duplex("psk:TwoSidedLongEdge").str())
            .part("b", "")
            .str("comment");
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Xps);
    EXPECT_EQ(result->job->jobInfo.copies, 2);
    EXPECT_EQ(result->job->jobInfo.duplex, Duplex::LongEdge);
    EXPECT_EQ(result->job->chunks.size(), 2U); // The raw loop has what stands behind the last record.
    EXPECT_NO_THROW(result->job->checkChunkSizes(job.file));
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(XpsJob, IsWalkedByTheRawLoopBehindItsTicket)
{
    const std::string bytes =
        ZipBytes().part(ticketName, copies("2")).str("\x1B%-12345X@PJL SET COPIES=5\r\n\x1B%-12345X");
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.copies, 5);
    EXPECT_TRUE(result->job->jobInfo.pjl);
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(XpsJob, OfAZipThatIsNoXpsIsAPackageWithoutFacts)
{
    OpenJob job("PK\x03\x04 and nothing that a package needs"s);

    const auto result = parse(job);

    EXPECT_TRUE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.flags(JobInfo::AllFlags), JobInfo::FlagPdl | JobInfo::FlagCopies);
    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Xps);
    EXPECT_EQ(saved(*result->job, job.file), "PK\x03\x04 and nothing that a package needs");
}

TEST(XpsJob, WithATicketThatFailsIsOneRawStretch)
{
    ZipPart part = ticketPart(copies("2"));
    part.method = 99;
    const std::string bytes = ZipBytes().part("a", "").part(part).str();
    OpenJob job(bytes);

    const auto result = parse(job);

    EXPECT_FALSE(result->parsed);
    EXPECT_EQ(result->job->jobInfo.flags(JobInfo::AllFlags), 0);
    EXPECT_EQ(saved(*result->job, job.file), bytes);
}

TEST(XpsJob, BehindPjlStaysRawData)
{
    const std::string package = ZipBytes().part(ticketName, copies("2")).str();
    OpenJob job(JobBytes().uel().pjl("ENTER LANGUAGE=XPS").raw(package).uel());

    const auto result = parse(job);

    EXPECT_EQ(result->job->jobInfo.pdl, Pdl::Xps);
    EXPECT_EQ(result->job->jobInfo.copies, 1);
}

} // namespace
} // namespace JobParser
