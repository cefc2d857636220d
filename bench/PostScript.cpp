// PostScript bodies: pictures, comments, and what the orientation looks at.

#include <array>
#include <malloc.h>

#include "BenchSupport.h"
#include "JobParser/Job.h"
#include "JobParser/Parser.h"

#include "Torv/Format.h"

namespace
{

constexpr std::size_t stretchSize = 64 * Bench::mebibyte;
constexpr int comments = 1000000;

// Binary pictures behind a first page of a few bytes.
void pictures(benchmark::State& state)
{
    Bench::ScratchFile scratch;
    scratch.append("%!PS\n%%EndPageSetup\nx\n%%Page: 2 2\n");
    scratch.append(Bench::randomBytes(stretchSize));
    scratch.append("\n%%EOF\n");

    Bench::measureParse(state, scratch);
}

// The same as the first page, which is searched for matrices a second time.
void firstPage(benchmark::State& state)
{
    Bench::ScratchFile scratch;
    scratch.append("%!PS\nx\n%%EndPageSetup\n");
    scratch.append(Bench::randomBytes(stretchSize));
    scratch.append("\n%%EOF\n");

    Bench::measureParse(state, scratch);
}

// The same before the page setup ends, where rotations are looked for as well.
void pageSetup(benchmark::State& state)
{
    Bench::ScratchFile scratch;
    scratch.append("%!PS\n%%BeginPageSetup\n");
    scratch.append(Bench::randomBytes(stretchSize));
    scratch.append("\n%%EndPageSetup\n%%EOF\n");

    Bench::measureParse(state, scratch);
}

// A feature that is never closed.
void openFeature(benchmark::State& state)
{
    Bench::ScratchFile scratch;
    scratch.append("%!PS\n%%BeginFeature: *Staple 1\n");
    std::string lines;
    while (lines.size() < stretchSize)
        lines += "100 200 moveto (text of a page) show\n";
    scratch.append(lines);

    Bench::measureParse(state, scratch);
}

std::string commentJob(const char* form)
{
    std::string text = "%!PS\n";
    for (int number = 0; number < comments; ++number)
        text += Torv::format(form, number, number);
    return text;
}

void millionComments(benchmark::State& state, const char* form)
{
    Bench::ScratchFile scratch;
    scratch.append(commentJob(form));

    Bench::measureParse(state, scratch);
    state.SetItemsProcessed(comments * state.iterations());
    const auto before = static_cast<double>(::mallinfo2().uordblks);
    const auto result = Bench::parse(scratch);
    const auto after = static_cast<double>(::mallinfo2().uordblks);
    state.counters["bytes_a_comment"] = (after - before) / comments;
}

} // namespace

BENCHMARK(pictures)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(firstPage)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(pageSetup)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(openFeature)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(millionComments, alone, "%%%%Page: %d %d\n")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(millionComments, between_lines, "%%%%Page: %d %d\nshowpage\n")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
