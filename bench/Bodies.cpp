// What the elements of a PCL 5 body cost, and PRESCRIBE blocks in it: a row each, of a body of nothing else.

#include <string>

#include "BenchSupport.h"

namespace
{

constexpr std::size_t bodySize = 16 * Bench::mebibyte;

void elements(benchmark::State& state, const std::string& element, std::int64_t count)
{
    std::string body = "\x1B"
                       "E";
    std::int64_t items = 0;
    for (; body.size() < bodySize; items += count)
        body += element;
    Bench::ScratchFile scratch;
    scratch.append(body);

    Bench::measureParse(state, scratch);
    state.SetItemsProcessed(items * state.iterations());
}

std::string row(std::size_t size)
{
    return "\x1B*b" + std::to_string(size) + "W" + std::string(size, 'x');
}

const std::string driverBlock = "!R! CMNT \"Page=1\"; CMNT \"PaperSize=A4\"; COPY 2; DUPX 1; EXIT;";

} // namespace

// A sequence that says nothing: alone, several in one, and one that is not passed in bulk for its sign.
BENCHMARK_CAPTURE(elements, sequence, std::string("\x1B*p123X"), 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(elements, combined, std::string("\x1B*p123x456Y"), 2)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(elements, signedValue, std::string("\x1B*p+123X"), 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
// A row of a picture, with its payload.
BENCHMARK_CAPTURE(elements, shortRow, row(30), 1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(elements, longRow, row(500), 1)->UseManualTime()->Unit(benchmark::kMillisecond);
// Read and left where it stands, and kept as a chunk.
BENCHMARK_CAPTURE(elements, orientation, std::string("\x1B&l1O"), 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(elements, kept, std::string("\x1B&l26A"), 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(elements, formFeed, std::string("\f"), 1)->UseManualTime()->Unit(benchmark::kMillisecond);
// The shortest block, and one as the driver writes it.
BENCHMARK_CAPTURE(elements, block, std::string("!R!EXIT;"), 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(elements, driverBlock, driverBlock, 1)->UseManualTime()->Unit(benchmark::kMillisecond);
// A start that no end follows.
BENCHMARK_CAPTURE(elements, blockStart, std::string("x!R!"), 1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
