#include "BenchSupport.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"

#include "Torv/Log/LogNull.h"

namespace Bench
{
namespace
{

constexpr std::size_t largeFile = 256 * mebibyte;

double processorSeconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double timeOf(const std::function<void()>& work)
{
    const double start = processorSeconds();
    work();
    return processorSeconds() - start;
}

std::string logLines(std::size_t size)
{
    std::mt19937_64 random(7);
    std::string text;
    while (text.size() < size) {
        text += "2024-03-0" + std::to_string(random() % 9 + 1) + "T12:00:00.000Z worker-" +
                std::to_string(random() % 64) + " INFO Request served! | path=/jobs/" +
                std::to_string(random()) + " | status=200 | rate=" + std::to_string(random() % 100) + "%\n";
    }
    text.resize(size);
    return text;
}

void fill(ScratchFile& file, std::string_view block)
{
    while (file.size() < largeFile)
        file.append(block);
}

} // namespace

ScratchFile::ScratchFile() : m_descriptor(-1)
{
    std::string name = (std::filesystem::temp_directory_path() / "jobparser-bench-XXXXXX").string();
    m_descriptor = ::mkstemp(name.data());
    if (m_descriptor < 0)
        throw std::runtime_error("Cannot make " + name);
    ::unlink(name.c_str());
}

ScratchFile::~ScratchFile()
{
    ::close(m_descriptor);
}

void ScratchFile::append(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
        if (written <= 0)
            throw std::runtime_error("Cannot write the scratch file");
        m_size += static_cast<std::size_t>(written);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string ScratchFile::path() const
{
    return "/proc/self/fd/" + std::to_string(m_descriptor);
}

std::string randomBytes(std::size_t size)
{
    std::mt19937_64 random(1);
    std::string bytes(size, '\0');
    for (std::size_t at = 0; at + sizeof(std::uint64_t) <= size; at += sizeof(std::uint64_t)) {
        const std::uint64_t word = random();
        std::memcpy(&bytes[at], &word, sizeof word);
    }
    std::ranges::replace(bytes, static_cast<char>(absentByte), '\0');
    return bytes;
}

const ScratchFile& randomFile()
{
    static ScratchFile file;
    if (file.size() == 0)
        fill(file, randomBytes(32 * mebibyte));
    return file;
}

const ScratchFile& logFile()
{
    static ScratchFile file;
    if (file.size() == 0)
        fill(file, logLines(32 * mebibyte));
    return file;
}

void seeAllBytes(const ScratchFile& file)
{
    void* address = ::mmap(nullptr, file.size(), PROT_READ, MAP_PRIVATE, file.descriptor(), 0);
    if (address == MAP_FAILED)
        throw std::runtime_error("Cannot map the scratch file");
    seeAllBytes({static_cast<const char*>(address), file.size()});
    ::munmap(address, file.size());
}

void seeAllBytes(std::string_view bytes)
{
    benchmark::DoNotOptimize(std::memchr(bytes.data(), absentByte, bytes.size()));
}

void measure(benchmark::State& state, std::size_t bytes, const std::function<void()>& work,
             const std::vector<Yardstick>& yardsticks)
{
    double ours = 0;
    std::vector<double> theirs(yardsticks.size());
    work();
    for (auto round : state) {
        static_cast<void>(round);
        const double time = timeOf(work);
        state.SetIterationTime(time);
        ours += time;
        for (std::size_t index = 0; index < yardsticks.size(); ++index)
            theirs[index] += timeOf(yardsticks[index].work);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    for (std::size_t index = 0; index < yardsticks.size(); ++index)
        state.counters[yardsticks[index].counter] = ours / theirs[index];
}

std::shared_ptr<JobParser::JobParserResult> parse(const ScratchFile& job)
{
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    JobParser::JobFile file;
    file.open(job.path());
    return parser.parse(file, {JobParser::Pdl::Detect, true, true});
}

void measureParse(benchmark::State& state, const ScratchFile& job)
{
    measure(state, job.size(), [&] { benchmark::DoNotOptimize(parse(job)); },
            {{"x_memchr", [&] { seeAllBytes(job); }}});
}

} // namespace Bench
