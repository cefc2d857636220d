#pragma once

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace JobParser
{
struct JobParserResult;
}

namespace Bench
{

inline constexpr std::size_t mebibyte = 1024 * 1024;

/// A file that has no name from the start, so that it is gone with the process whatever ends it.
class ScratchFile
{
public:
    ScratchFile();
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    void append(std::string_view bytes);

    std::size_t size() const { return m_size; }
    int descriptor() const { return m_descriptor; }
    /// Under which the file can be opened, as long as the object lives.
    std::string path() const;

private:
    int m_descriptor;
    std::size_t m_size = 0;
};

/// Bytes of an even distribution, the same at each run, but without absentByte.
std::string randomBytes(std::size_t size);

/// A value that none of the inputs here holds, so that a search for it sees every byte.
inline constexpr std::uint8_t absentByte = 0xA5;

/// A file of random bytes, and one of lines as a server logs them; 256 MiB each, made at the first call.
const ScratchFile& randomFile();
const ScratchFile& logFile();

/// One memchr pass over the whole file, mapped for it: what merely seeing every byte costs.
void seeAllBytes(const ScratchFile& file);
/// The same over bytes in memory.
void seeAllBytes(std::string_view bytes);

/// Something to compare with.
struct Yardstick {
    const char* counter; ///< Under which the ratio is shown.
    std::function<void()> work;
};

/// Runs the work and each yardstick in turns, all in processor time. The time of the row is the work's, and
/// each counter says how many times as long as the yardstick it takes. `bytes` is what the work goes through.
void measure(benchmark::State& state, std::size_t bytes, const std::function<void()>& work,
             const std::vector<Yardstick>& yardsticks);

/// What a host does with a job whose language it does not know.
std::shared_ptr<JobParser::JobParserResult> parse(const ScratchFile& job);

/// Measures that, beside one memchr pass over the file.
void measureParse(benchmark::State& state, const ScratchFile& job);

} // namespace Bench
