// What an XPS package costs: its directory, and its print ticket.

#include <string>

#include "BenchSupport.h"
#include "JobParser/JobFile.h"
#include "JobParser/xps/XpsParser.h"
#include "tests/support/ZipBytes.h"

namespace
{

TicketText usualTicket()
{
    return TicketText()
        .copies("2")
        .mediaSize("psk:ISOA4")
        .feature("psk:PageOrientation", "psk:Portrait")
        .duplex("psk:TwoSidedLongEdge")
        .colorPages("4")
        .monoPages("10");
}

void directory(benchmark::State& state)
{
    constexpr int parts = 20000;
    ZipBytes package;
    package.part("Metadata/Job_PT.xml", usualTicket().str());
    for (int number = 0; number < parts; ++number)
        package.part("Documents/1/Pages/" + std::to_string(number) + ".fpage", "<FixedPage/>");
    Bench::ScratchFile scratch;
    scratch.append(package.str());

    Bench::measureParse(state, scratch);
    state.SetItemsProcessed(parts * state.iterations());
}

void ticket(benchmark::State& state, const std::string& text)
{
    JobParser::JobFile none;
    JobParser::XpsParser parser(none);
    // One is too short for the clock.
    constexpr int tickets = 20;
    const auto repeated = [](auto work) {
        return [work] {
            for (int number = 0; number < tickets; ++number)
                work();
        };
    };

    Bench::measure(state, tickets * text.size(),
                   repeated([&] { benchmark::DoNotOptimize(parser.parseProperties(text)); }),
                   {{"x_memchr", repeated([&] { Bench::seeAllBytes(text); })}});
    state.SetItemsProcessed(tickets * state.iterations());
}

std::string repeatedText(const std::string& text)
{
    std::string all;
    while (all.size() < Bench::mebibyte)
        all += text;
    return all;
}

} // namespace

BENCHMARK(directory)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ticket, usual, usualTicket().str())->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ticket, ofAMebibyte,
                  repeatedText("<psf:Feature name=\"psk:PageResolution\"/>") + usualTicket().str())
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ticket, ofKeysAlone, repeatedText("name=\"psk:PageMediaSize\"><psf:option "))
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ticket, ofAnOpenOption,
                  "name=\"psk:PageMediaSize\"><psf:option name=\"psk:" + repeatedText(" "))
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
