// What the C interface costs over the C++ one: each row does a thousand calls of one function, beside the C++
// that it stands for.

#include <memory>
#include <string>

#include "BenchSupport.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserC.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"
#include "JobParser/model/Reflection.h"

#include "Torv/IO/OutputFile.h"
#include "Torv/Log/LogNull.h"

namespace
{

constexpr int calls = 1000;

constexpr JobParserParseOptions withoutWorker{sizeof(JobParserParseOptions), JOBPARSER_LANGUAGE_DETECT,
                                              JOBPARSER_PARSE_NO_WORKER};

const Bench::ScratchFile& smallJob()
{
    static const std::unique_ptr<Bench::ScratchFile> scratch = [] {
        auto made = std::make_unique<Bench::ScratchFile>();
        made->append("\x1B%-12345X@PJL SET COPIES=2\r\n@PJL SET DUPLEX=ON\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1B"
                     "E" +
                     std::string(2000, 'x') + "\x1B%-12345X");
        return made;
    }();
    return *scratch;
}

/// The same job twice.
struct Jobs {
    Jobs()
    {
        const std::string path = smallJob().path();
        jobParserParse(path.c_str(), &withoutWorker, &c, nullptr);
        file.open(path);
        cpp = parser.parse(file, {JobParser::Pdl::Detect, true, true})->job;
    }
    ~Jobs() { jobParserFreeJob(c); }
    Jobs(const Jobs&) = delete;
    Jobs& operator=(const Jobs&) = delete;

    JobParser::Parser parser{std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false};
    JobParser::JobFile file;
    std::shared_ptr<JobParser::Job> cpp;
    JobParserJob* c = nullptr;
};

Jobs& jobs()
{
    static Jobs both;
    return both;
}

template <typename C, typename Cpp> void compare(benchmark::State& state, C c, Cpp cpp)
{
    const auto repeated = [](auto work) {
        return [work] {
            for (int call = 0; call < calls; ++call)
                work();
        };
    };
    jobs();
    Bench::measure(state, calls, repeated(c), {{"x_cpp", repeated(cpp)}});
    state.SetItemsProcessed(calls * state.iterations());
}

void parse(benchmark::State& state)
{
    const std::string path = smallJob().path();
    compare(
        state,
        [&] {
            JobParserJob* job = nullptr;
            jobParserParse(path.c_str(), &withoutWorker, &job, nullptr);
            jobParserFreeJob(job);
        },
        [&] {
            JobParser::JobFile file;
            file.open(path);
            benchmark::DoNotOptimize(jobs().parser.parse(file, {JobParser::Pdl::Detect, true, true}));
        });
}

void record(benchmark::State& state)
{
    compare(
        state,
        [] {
            char* text = nullptr;
            jobParserRecord(jobs().c, 0, &text, nullptr, nullptr);
            jobParserFreeText(text);
        },
        [] { benchmark::DoNotOptimize(jobs().cpp->jobInfo.toJson()); });
}

void metadata(benchmark::State& state)
{
    compare(
        state,
        [] {
            char* text = nullptr;
            jobParserMetadata(jobs().c, &text, nullptr, nullptr);
            jobParserFreeText(text);
        },
        [] { benchmark::DoNotOptimize(jobs().cpp->toJson()); });
}

void chunk(benchmark::State& state)
{
    compare(
        state,
        [] {
            JobParserChunk given{};
            jobParserChunks(jobs().c, 0, 1, &given, sizeof given, nullptr);
            benchmark::DoNotOptimize(given);
        },
        [] {
            const JobParser::IChunk& first = *jobs().cpp->chunks.front();
            benchmark::DoNotOptimize(JobParser::Reflection::chunkClass(first));
            benchmark::DoNotOptimize(first.size());
        });
}

void save(benchmark::State& state)
{
    compare(
        state, [] { jobParserSave(jobs().c, "/dev/null", nullptr); },
        [] {
            Torv::IO::OutputFile output("/dev/null");
            jobs().cpp->save(jobs().file, output.stream());
            output.commit();
        });
}

void refusal(benchmark::State& state)
{
    compare(
        state,
        [] {
            char* error = nullptr;
            jobParserChunkCount(nullptr, nullptr, &error);
            jobParserFreeText(error);
        },
        [] { benchmark::DoNotOptimize(jobs().cpp->chunks.size()); });
}

} // namespace

BENCHMARK(parse)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(record)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(metadata)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(chunk)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(save)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(refusal)->UseManualTime()->Unit(benchmark::kMicrosecond);
