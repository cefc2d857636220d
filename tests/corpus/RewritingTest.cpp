#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkUel.h"
#include "tests/corpus/RealJobs.h"
#include "tests/support/OpenJob.h"
#include "tests/support/WholeJobs.h"

#include "Torv/Log/LogNull.h"
#include "Torv/Text.h"

namespace
{

using JobParser::Job;
using JobParser::JobInfo;
using WholeJobs::saved;
using Lines = std::vector<std::string>;

std::shared_ptr<JobParser::JobParserResult> parsed(JobParser::JobFile& file, const std::string& path)
{
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    file.open(path);
    return parser.parse(file, {JobParser::Pdl::Detect, true, true});
}

template <typename Chunk> int count(const Job& job)
{
    int found = 0;
    for (const auto& chunk : job.chunks)
        found += dynamic_cast<const Chunk*>(chunk.get()) != nullptr ? 1 : 0;
    return found;
}

Lines pjlLines(const Job& job, std::string_view command)
{
    Lines lines;
    for (const auto& chunk : job.chunks) {
        const auto* const cmd = dynamic_cast<const JobParser::ChunkPjlCmd*>(chunk.get());
        if (cmd != nullptr && Torv::iequals(cmd->cmd, command))
            lines.push_back(cmd->param);
    }
    return lines;
}

/// A real job that was parsed, changed, saved and parsed again.
struct RewrittenJob {
    const Job& before; ///< As it was parsed first, unchanged.
    const std::string& bytesBefore;
    const Job& after;
    const std::string& bytesAfter;
};

class RewrittenRealJobs : public testing::Test
{
protected:
    void SetUp() override
    {
        if (Corpus::folder().empty())
            GTEST_SKIP() << "There are no jobs: JOBPARSER_CORPUS names no folder with a manifest.jsonl";
        JobParser::Library::init({});
    }

    /// Does that with each job that parses and for which `applies` holds. Returns how many these are.
    static int forEach(const std::function<bool(const Job&)>& applies,
                       const std::function<void(Job&)>& rewrite,
                       const std::function<void(const RewrittenJob&)>& check)
    {
        int jobs = 0;
        for (const Corpus::RealJob& real : Corpus::jobs()) {
            SCOPED_TRACE(real.name);
            JobParser::JobFile file;
            const auto first = parsed(file, real.path);
            if (!first->parsed || !applies(*first->job))
                continue;
            ++jobs;
            const Job before = *first->job;
            const std::string bytesBefore = saved(before, file);
            rewrite(*first->job);
            EXPECT_NO_THROW(first->job->checkChunkSizes(file));
            const std::string bytesAfter = saved(*first->job, file);
            const TemporaryFile written(bytesAfter);
            JobParser::JobFile writtenFile;
            const auto again = parsed(writtenFile, written.path());
            EXPECT_TRUE(again->parsed);
            check({before, bytesBefore, *again->job, bytesAfter});
        }
        return jobs;
    }
};

bool hasEnter(const Job& job)
{
    return !pjlLines(job, "ENTER").empty();
}

/// Blocks of PRESCRIBE overrule what PJL says.
bool hasEnterAndNoPrescribe(const Job& job)
{
    return hasEnter(job) && count<JobParser::ChunkPrescribe>(job) == 0;
}

TEST_F(RewrittenRealJobs, ReportTheCopiesThatWereSet)
{
    const int jobs = forEach(
        hasEnter, [](Job& job) { job.insertPjlCmd("SET", "QTY", 777, false, false); },
        [](const RewrittenJob& job) {
            EXPECT_EQ(job.after.jobInfo.flags(JobInfo::FlagCopies), JobInfo::FlagCopies);
            EXPECT_EQ(job.after.jobInfo.copies, 777);
        });

    EXPECT_GT(jobs, 20);
}

TEST_F(RewrittenRealJobs, ReportTheDuplexThatWasSet)
{
    const int jobs = forEach(
        hasEnterAndNoPrescribe,
        [](Job& job) {
            job.insertPjlCmd("SET", "DUPLEX", "ON", false, false);
            job.insertPjlCmd("SET", "BINDING", "SHORTEDGE", false, false);
        },
        [](const RewrittenJob& job) {
            EXPECT_EQ(job.after.jobInfo.flags(JobInfo::FlagDuplex), JobInfo::FlagDuplex);
            EXPECT_EQ(job.after.jobInfo.duplex, JobParser::Duplex::ShortEdge);
        });

    EXPECT_GT(jobs, 20);
}

TEST_F(RewrittenRealJobs, ReportTheModesThatWereSet)
{
    const int jobs = forEach(
        hasEnter,
        [](Job& job) {
            job.insertPjlCmd("SET", "KCOLORMODE", "MONO", false, false);
            job.insertPjlCmd("SET", "ECONOMODE", "ON", false, false);
        },
        [](const RewrittenJob& job) {
            EXPECT_EQ(job.after.jobInfo.flags(JobInfo::FlagForceMono), JobInfo::FlagForceMono);
            EXPECT_TRUE(job.after.jobInfo.forceMono);
            EXPECT_EQ(job.after.jobInfo.flags(JobInfo::FlagEcoMode), JobInfo::FlagEcoMode);
            EXPECT_TRUE(job.after.jobInfo.ecoMode);
        });

    EXPECT_GT(jobs, 20);
}

TEST_F(RewrittenRealJobs, ReportTheFinishingThatWasAskedFor)
{
    const int jobs = forEach(
        hasEnter,
        [](Job& job) {
            job.insertHpPjlProcessingAction("\"STAPLING\"", "\"LEFT_1PT\"");
            job.insertHpPjlProcessingAction("\"STAPLING\"", "\"TOP_2PT\"");
            job.insertHpPjlProcessingAction("\"PUNCH\"", "\"LEFT_2PT\"");
        },
        [](const RewrittenJob& job) {
            EXPECT_NE(job.after.jobInfo.stapling, JobParser::Staple::None);
            EXPECT_NE(job.after.jobInfo.punching, JobParser::Punch::None);
            const Lines set = pjlLines(job.after, "SET");
            EXPECT_EQ(std::ranges::count(set, "PROCESSINGTYPE=\"STAPLING\""), 1);
            EXPECT_EQ(std::ranges::count(set, "PROCESSINGOPTION=\"TOP_2PT\""), 1);
            EXPECT_EQ(std::ranges::count(set, "PROCESSINGOPTION=\"LEFT_2PT\""), 1);
            EXPECT_EQ(std::ranges::count(set, "PROCESSINGOPTION=\"LEFT_1PT\""), 0);
        });

    EXPECT_GT(jobs, 20);
}

TEST_F(RewrittenRealJobs, AskForNoFinishingWhoseSettingsWereRemoved)
{
    const int jobs = forEach(
        [](const Job& job) {
            const Lines set = pjlLines(job, "SET");
            return std::ranges::any_of(set,
                                       [](const std::string& line) { return line.starts_with("STAPLE"); });
        },
        [](Job& job) {
            for (const char* prefix : {"STAPLE", "FINISH", "PROCESSING"})
                job.removePjlSetCmd(prefix, true);
        },
        [](const RewrittenJob& job) {
            for (const std::string& line : pjlLines(job.after, "SET"))
                EXPECT_FALSE(line.starts_with("STAPLE") || line.starts_with("FINISH")) << line;
            EXPECT_FALSE(pjlLines(job.after, "SET").empty());
        });

    EXPECT_GT(jobs, 3);
}

TEST_F(RewrittenRealJobs, HaveTheNameThatTheyWereGiven)
{
    const int jobs =
        forEach([](const Job& job) { return !pjlLines(job, "JOB").empty(); },
                [](Job& job) { job.setJobName("Nobody's business"); },
                [](const RewrittenJob& job) {
                    EXPECT_EQ(pjlLines(job.after, "JOB"),
                              Lines(pjlLines(job.before, "JOB").size(), "NAME=\"Nobody's business\""));
                    EXPECT_EQ(pjlLines(job.after, "SET"), pjlLines(job.before, "SET"));
                });

    EXPECT_GT(jobs, 15);
}

TEST_F(RewrittenRealJobs, HaveTheParameterThatWasSet)
{
    const int jobs =
        forEach([](const Job& job) { return !pjlLines(job, "JOB").empty(); },
                [](Job& job) { job.setPjlJobParam("NAME", "\"other\""); },
                [](const RewrittenJob& job) {
                    const std::string first = pjlLines(job.after, "JOB").front();
                    EXPECT_NE(first.find("\"other\""), std::string::npos) << first;
                    EXPECT_EQ(first.find("DISPLAY") == std::string::npos,
                              pjlLines(job.before, "JOB").front().find("DISPLAY") == std::string::npos);
                });

    EXPECT_GT(jobs, 15);
}

TEST_F(RewrittenRealJobs, HoldTheLinesThatWereInserted)
{
    const int jobs = forEach(
        hasEnter, [](Job& job) { EXPECT_TRUE(job.insertPjlCode("@PJL COMMENT seen\r\n@PJL SET HOLD=ON\n")); },
        [](const RewrittenJob& job) {
            const Lines comments = pjlLines(job.after, "COMMENT");
            EXPECT_EQ(std::ranges::count(comments, "seen"), 1);
            EXPECT_EQ(std::ranges::count(pjlLines(job.after, "SET"), "HOLD=ON") > 0, true);
            EXPECT_EQ(job.after.jobInfo.pdl, job.before.jobInfo.pdl);
        });

    EXPECT_GT(jobs, 20);
}

TEST_F(RewrittenRealJobs, HaveNoPjlOnceItIsStripped)
{
    const int jobs =
        forEach([](const Job& job) { return job.jobInfo.pjl; }, [](Job& job) { job.removePjl(); },
                [](const RewrittenJob& job) {
                    EXPECT_FALSE(job.after.jobInfo.pjl);
                    EXPECT_EQ(count<JobParser::ChunkPjlCmd>(job.after), 0);
                    EXPECT_EQ(count<JobParser::ChunkUel>(job.after), 0);
                });

    EXPECT_GT(jobs, 20);
}

TEST_F(RewrittenRealJobs, HaveNoPrescribeOnceItIsStripped)
{
    const int jobs =
        forEach([](const Job& job) { return count<JobParser::ChunkPrescribe>(job) > 0; },
                [](Job& job) { job.removePrescribe(); },
                [](const RewrittenJob& job) { EXPECT_EQ(count<JobParser::ChunkPrescribe>(job.after), 0); });

    EXPECT_GT(jobs, 0);
}

TEST_F(RewrittenRealJobs, HaveAnEnvelopeOnceTheyAreWrapped)
{
    const int jobs =
        forEach([](const Job& job) { return !job.jobInfo.pjl && job.jobInfo.pdl != JobParser::Pdl::Unknown; },
                [](Job& job) {
                    job.wrapIntoPjlJob(job.jobInfo.pdl, "wrapped");
                    job.insertPjlCmd("SET", "QTY", 9, false, false);
                },
                [](const RewrittenJob& job) {
                    EXPECT_TRUE(job.after.jobInfo.pjl);
                    EXPECT_EQ(job.after.jobInfo.pdl, job.before.jobInfo.pdl);
                    EXPECT_EQ(job.after.jobInfo.copies, 9);
                    EXPECT_EQ(pjlLines(job.after, "JOB"), Lines{"NAME=\"wrapped\""});
                    EXPECT_EQ(pjlLines(job.after, "EOJ"), Lines{"NAME=\"wrapped\""});
                });

    EXPECT_GT(jobs, 20);
}

TEST_F(RewrittenRealJobs, KeepEveryByteInTheirEnvelope)
{
    const int jobs =
        forEach([](const Job& job) { return !job.jobInfo.pjl; },
                [](Job& job) { job.wrapIntoPjlJob(JobParser::Pdl::Urf, "a"); },
                [](const RewrittenJob& job) {
                    EXPECT_TRUE(job.bytesAfter ==
                                "\x1B%-12345X@PJL JOB NAME=\"a\"\r\n@PJL ENTER LANGUAGE=URF\r\n" +
                                    job.bytesBefore + "\x1B%-12345X@PJL EOJ NAME=\"a\"\r\n\x1B%-12345X");
                });

    EXPECT_GT(jobs, 20);
}

} // namespace
