#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

/// What the fuzz targets share: the promise that every target holds the library to, and inputs as files.
namespace Fuzz
{

using Bytes = std::span<const std::uint8_t>;

/// Registers the chunk classes and makes failed assertions throw Torv::GenericException. Every target calls
/// it first; only the first call does anything.
void setUp();

/// Ends the process with the message unless the condition holds, so that the fuzzer keeps the input.
void require(bool condition, const char* message);

/// Runs code that hostile input may make fail. True if it came to its end, false if it threw what a host has
/// to expect: an exception of the tree of Torv::GenericException, one of the two standard ones of a number
/// that is none, or that of a PDF with a value of another kind than it has to be. Any other exception ends
/// the process.
bool survives(const std::function<void()>& code);

/// The bytes as text.
std::string_view asText(Bytes bytes);

/// A regular file without a name in any folder, which is gone with the object.
class MemoryFile
{
public:
    explicit MemoryFile(std::string_view content);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// Under which the file can be opened, as long as the object lives.
    std::string path() const;

private:
    int m_descriptor;
};

} // namespace Fuzz
