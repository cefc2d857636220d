// How fast the bytes go by that mean nothing, which is nearly all of a job.

#include <array>

#include "BenchSupport.h"
#include "JobParser/JobFile.h"

#include "Torv/BytePairs.h"

namespace
{

using Files = const Bench::ScratchFile& (*)();

constexpr std::array<Torv::BytePair, 2> pairs{{{0x1B, '%'}, {'!', 'R'}}};

void rawLoop(benchmark::State& state, Files input)
{
    const Bench::ScratchFile& scratch = input();

    Bench::measureParse(state, scratch);
}

void getChar(benchmark::State& state, Files input)
{
    const Bench::ScratchFile& scratch = input();
    const auto work = [&] {
        JobParser::JobFile file;
        file.open(scratch.path());
        unsigned sum = 0;
        while (!file.atEnd())
            sum += file.getChar();
        benchmark::DoNotOptimize(sum);
    };

    Bench::measure(state, scratch.size(), work, {{"x_memchr", [&] { Bench::seeAllBytes(scratch); }}});
}

void findPair(benchmark::State& state, Files input)
{
    const Bench::ScratchFile& scratch = input();
    const auto work = [&] {
        JobParser::JobFile file;
        file.open(scratch.path());
        while (!file.atEnd()) {
            const auto bytes = file.window();
            std::size_t at = 0;
            while (at < bytes.size())
                at += Torv::findPair(bytes.subspan(at), pairs) + 1;
            file.advancePos(static_cast<std::int64_t>(bytes.size()));
        }
    };

    Bench::measure(state, scratch.size(), work, {{"x_memchr", [&] { Bench::seeAllBytes(scratch); }}});
}

} // namespace

BENCHMARK_CAPTURE(rawLoop, random, Bench::randomFile)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(rawLoop, log, Bench::logFile)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findPair, random, Bench::randomFile)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findPair, log, Bench::logFile)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(getChar, random, Bench::randomFile)->UseManualTime()->Unit(benchmark::kMillisecond);
