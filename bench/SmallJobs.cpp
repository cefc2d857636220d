// What a job costs before its size counts: PJL lines, a whole small job, and the record's text.

#include <array>
#include <string>
#include <string_view>

#include "BenchSupport.h"
#include "JobParser/JobInfo.h"

namespace
{

constexpr std::string_view uel = "\x1B%-12345X";
constexpr std::array lines{
    "@PJL JOB NAME = \"Quarterly figures\" DISPLAY = \"1 alice Quarterly figures\"\r\n",
    "@PJL SET USERNAME=\"alice\"\r\n",
    "@PJL SET COPIES=2\r\n",
    "@PJL SET DUPLEX=ON\r\n",
    "@PJL SET BINDING=LONGEDGE\r\n",
    "@PJL SET PAPER=A4\r\n",
    "@PJL SET MEDIATYPE=PLAIN\r\n",
    "@PJL SET ECONOMODE=OFF\r\n",
    "@PJL SET STAPLE=LEFTTOP\r\n",
    "@PJL SET RENDERMODE=GRAYSCALE\r\n",
};

std::string pjlBlocks(std::size_t blocks)
{
    std::string text(uel);
    for (std::size_t block = 0; block < blocks; ++block) {
        for (const char* line : lines)
            text += line;
    }
    return text;
}

void pjlLines(benchmark::State& state)
{
    constexpr std::size_t blocks = 10000;
    Bench::ScratchFile scratch;
    scratch.append(pjlBlocks(blocks) + std::string(uel));

    Bench::measureParse(state, scratch);
    state.SetItemsProcessed(static_cast<std::int64_t>(blocks * lines.size()) * state.iterations());
}

void smallJob(benchmark::State& state)
{
    Bench::ScratchFile scratch;
    scratch.append(pjlBlocks(1) + "@PJL ENTER LANGUAGE=PCL\r\n\x1B" + "E" + std::string(2000, 'x') + "\x1B" +
                   "E" + std::string(uel));

    Bench::measureParse(state, scratch);
}

void recordToJson(benchmark::State& state)
{
    JobParser::JobInfo info;
    info.setPdl(JobParser::Pdl::PostScript);
    info.setPaper(JobParser::PaperA4);
    info.setCopies(2);
    info.setDuplex(JobParser::Duplex::LongEdge);
    info.setPageCount(3, 0, 1);
    const std::string text = info.toJson();
    // One is too short for the clock.
    constexpr int texts = 1000;
    const auto repeated = [](auto work) {
        return [work] {
            for (int number = 0; number < texts; ++number)
                work();
        };
    };

    Bench::measure(state, texts * text.size(), repeated([&] { benchmark::DoNotOptimize(info.toJson()); }),
                   {{"x_memchr", repeated([&] { Bench::seeAllBytes(text); })}});
    state.SetItemsProcessed(texts * state.iterations());
}

} // namespace

BENCHMARK(pjlLines)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(smallJob)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(recordToJson)->UseManualTime()->Unit(benchmark::kMicrosecond);
