// Writing and reading the metadata of a job of a million chunks.

#include <cstring>
#include <memory>
#include <simdjson.h>
#include <stdexcept>

#include "BenchSupport.h"
#include "JobParser/Job.h"
#include "JobParser/Library.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkText.h"

#include "Torv/Json/Json.h"
#include "Torv/Variant.h"

namespace
{

constexpr std::int64_t chunkCount = 1000000;

std::shared_ptr<JobParser::IChunk> makeChunk(std::int64_t index)
{
    switch (index % 4) {
    case 0: return std::make_shared<JobParser::ChunkPjlCmd>("SET", "COPIES=" + std::to_string(index));
    case 1: return std::make_shared<JobParser::ChunkFormFeed>();
    case 2: return std::make_shared<JobParser::ChunkText>("\x1B&l2A");
    default: return std::make_shared<JobParser::ChunkRawData>(index * 4096, 4096);
    }
}

const JobParser::Job& longJob()
{
    static JobParser::Job job;
    if (job.chunks.empty()) {
        JobParser::Library::init({});
        for (std::int64_t index = 0; index < chunkCount; ++index)
            job.appendChunk(makeChunk(index));
    }
    return job;
}

void writeMetadata(benchmark::State& state)
{
    const JobParser::Job& job = longJob();
    const std::string text = job.toJson();
    std::string target(text.size(), '\0');

    Bench::measure(state, text.size(), [&] { benchmark::DoNotOptimize(job.toJson()); },
                   {{"x_memchr", [&] { Bench::seeAllBytes(text); }},
                    {"x_memcpy", [&] {
                         std::memcpy(target.data(), text.data(), text.size());
                         benchmark::DoNotOptimize(target.data());
                     }}});
    state.SetItemsProcessed(chunkCount * state.iterations());
}

void parseAlone(const std::string& text)
{
    simdjson::dom::parser parser;
    simdjson::dom::element root;
    if (parser.parse(text).get(root) != simdjson::SUCCESS)
        throw std::runtime_error("The metadata is no JSON");
    benchmark::DoNotOptimize(root);
}

void readMetadata(benchmark::State& state)
{
    const std::string text = longJob().toJson();

    Bench::measure(
        state, text.size(),
        [&] {
            const JobParser::Job job(Torv::Json::parse(text));
            benchmark::DoNotOptimize(job.chunks.size());
        },
        {{"x_memchr", [&] { Bench::seeAllBytes(text); }}, {"x_simdjson", [&] { parseAlone(text); }}});
    state.SetItemsProcessed(chunkCount * state.iterations());
}

} // namespace

BENCHMARK(writeMetadata)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(readMetadata)->UseManualTime()->Unit(benchmark::kMillisecond);
