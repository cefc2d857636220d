// Rewriting jobs of many chunks. Each work copies the list of chunks first, which the row x_copy does alone;
// the time of a chunk stays the same from row to row where the work is linear.

#include <memory>
#include <string>

#include "BenchSupport.h"
#include "JobParser/Job.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkRawData.h"

namespace
{

using JobParser::ChunkPjlCmd;
using JobParser::Job;

constexpr std::int64_t fewChunks = 10000;
constexpr std::int64_t manyChunks = 1000000;

std::shared_ptr<JobParser::IChunk> set(const std::string& param)
{
    return std::make_shared<ChunkPjlCmd>("SET", param);
}

/// A setting to replace, another one, a raw stretch and a PRESCRIBE block in turns, and then `ENTER`.
Job mixedJob(std::int64_t count)
{
    Job job;
    for (std::int64_t index = 0; index < count; ++index) {
        switch (index % 4) {
        case 0: job.appendChunk(set("QTY=" + std::to_string(index))); break;
        case 1: job.appendChunk(set("USERNAME=\"a user of this printer\"")); break;
        case 2: job.appendChunk(std::make_shared<JobParser::ChunkRawData>(index * 4096, 4096)); break;
        default: job.appendChunk(std::make_shared<JobParser::ChunkPrescribe>(index * 4096, 4096)); break;
        }
    }
    job.appendChunk(std::make_shared<ChunkPjlCmd>("ENTER", "LANGUAGE=PCL"));
    return job;
}

/// A finishing group, and then nothing but boundaries.
Job boundaryJob(std::int64_t count)
{
    Job job;
    for (const char* param : {"PROCESSINGACTION=APPEND", "PROCESSINGTYPE=X", "PROCESSINGOPTION=Y"})
        job.appendChunk(set(param));
    for (std::int64_t index = 0; index < count; ++index)
        job.appendChunk(set(index < count / 2 ? "QTY=1" : "PROCESSINGBOUNDARY=MOPY"));
    return job;
}

void rewrite(benchmark::State& state, const Job& job, void (*change)(Job& job))
{
    const auto copy = [&] { benchmark::DoNotOptimize(Job(job).chunks.data()); };
    const auto work = [&] {
        Job changed(job);
        change(changed);
        benchmark::DoNotOptimize(changed.chunks.data());
    };
    Bench::measure(state, 0, work, {{"x_copy", copy}});
    state.SetItemsProcessed(static_cast<std::int64_t>(job.chunks.size()) * state.iterations());
}

void insertCommand(benchmark::State& state)
{
    rewrite(state, mixedJob(state.range()),
            [](Job& job) { job.insertPjlCmd("SET", "QTY", 3, false, false); });
}

void insertCode(benchmark::State& state)
{
    rewrite(state, mixedJob(state.range()), [](Job& job) { job.insertPjlCode("@PJL\r\n"); });
}

void removeByPrefix(benchmark::State& state)
{
    rewrite(state, mixedJob(state.range()), [](Job& job) { job.removePjlSetCmd("QTY", true); });
}

void removePjl(benchmark::State& state)
{
    rewrite(state, mixedJob(state.range()), [](Job& job) { job.removePjl(); });
}

void removePrescribe(benchmark::State& state)
{
    rewrite(state, mixedJob(state.range()), [](Job& job) { job.removePrescribe(); });
}

void wrap(benchmark::State& state)
{
    rewrite(state, mixedJob(state.range()),
            [](Job& job) { job.wrapIntoPjlJob(JobParser::Pdl::Pcl5, "a job"); });
}

void replaceFinishing(benchmark::State& state)
{
    rewrite(state, boundaryJob(state.range()), [](Job& job) { job.insertHpPjlProcessingAction("X", "Y"); });
}

} // namespace

BENCHMARK(insertCommand)->Arg(fewChunks)->Arg(manyChunks)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(insertCode)->Arg(fewChunks)->Arg(manyChunks)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(removeByPrefix)->Arg(fewChunks)->Arg(manyChunks)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(removePjl)->Arg(fewChunks)->Arg(manyChunks)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(removePrescribe)->Arg(fewChunks)->Arg(manyChunks)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(wrap)->Arg(fewChunks)->Arg(manyChunks)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(replaceFinishing)->Arg(fewChunks)->Arg(manyChunks)->UseManualTime()->Unit(benchmark::kMicrosecond);
