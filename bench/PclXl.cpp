// What an operator of a PCL XL stream costs: stepped over, read and kept, and in memory.

#include <malloc.h>

#include "BenchSupport.h"
#include "JobParser/Job.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"

namespace
{

using namespace std::string_literals;

/// A stream of a header, the item as often as it takes, and the end.
struct Stream {
    Stream(const std::string& item, std::int64_t operatorsOfItem, std::size_t size)
    {
        constexpr std::size_t block = 1024;
        const std::size_t blocks = size / (block * item.size()) + 1;
        std::string items;
        for (std::size_t count = 0; count < block; ++count)
            items += item;
        file.append(") HP-PCL XL;2;0\n");
        for (std::size_t count = 0; count < blocks; ++count)
            file.append(items);
        file.append("B");
        operators = static_cast<std::int64_t>(blocks * block) * operatorsOfItem;
    }

    Bench::ScratchFile file;
    std::int64_t operators;
};

void measureStream(benchmark::State& state, const Stream& stream)
{
    Bench::measureParse(state, stream.file);
    state.SetItemsProcessed(stream.operators * state.iterations());
}

const std::string cursor = "\xD3"
                           "abcd\xF8\x4C\x6B";
const std::string word = "\xC8\xC0\x04word\xF8\xAB\xA8";

void operatorsOfText(benchmark::State& state)
{
    static const Stream stream(cursor + word, 2, 64 * Bench::mebibyte);
    measureStream(state, stream);
}

void operatorsOfPictures(benchmark::State& state)
{
    static const Stream stream("\xC1\x01\x00\xF8\x6D\xB1\xFA\x00\x00\x01\x00"s + std::string(0x10000, 'x'), 1,
                               256 * Bench::mebibyte);
    measureStream(state, stream);
}

const std::string page = "\xC0\x00\xF8\x28\xC0\x02\xF8\x25\xC0\x01\xF8\x26\xC0\x00\xF8\x35\x43"s + cursor +
                         word + "\xC1\x01\x00\xF8\x31\x44"s;

// Pages of nearly nothing, so that two of four operators are read twice and kept.
void operatorsOfPages(benchmark::State& state)
{
    static const Stream stream(page, 4, 8 * Bench::mebibyte);
    measureStream(state, stream);

    const std::size_t before = mallinfo2().uordblks;
    const auto result = Bench::parse(stream.file);
    const auto used = static_cast<double>(mallinfo2().uordblks - before);
    state.counters["bytes_a_page"] = used * 4 / static_cast<double>(stream.operators);
}

void metadataOfPages(benchmark::State& state)
{
    JobParser::Library::init({});
    static const Stream stream(page, 4, 2 * Bench::mebibyte);
    const auto result = Bench::parse(stream.file);
    const std::string text = result->job->toJson();

    Bench::measure(state, text.size(), [&] { benchmark::DoNotOptimize(result->job->toJson()); },
                   {{"x_memchr", [&] { Bench::seeAllBytes(text); }}});
    state.SetItemsProcessed(stream.operators / 4 * state.iterations());
}

} // namespace

BENCHMARK(operatorsOfText)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(operatorsOfPictures)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(operatorsOfPages)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(metadataOfPages)->UseManualTime()->Unit(benchmark::kMillisecond);
