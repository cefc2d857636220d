#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <zlib.h>

#include "pdf/LambdaSource.h"

namespace Pdf::Parser
{

class Lexer;

/// The inflated bytes of an object stream, as a source that ends where the object that is being read ends.
///
/// Inflates as far as it is asked to, through one small buffer. Compressed bytes come out of the lexer of the
/// file: all at once if their count is known, otherwise line by line. All streams of a file together inflate
/// to a limited multiple of what was read of it.
class ObjectStream
{
public:
    /// The current byte of the lexer is the first compressed one. `inflatedOfFile` counts the bytes that all
    /// streams of the file inflate to. Throws StreamDecompressionException if there is no memory for the
    /// inflater, and ISource::EofException if the file ends before the stream.
    ObjectStream(Lexer& fileLexer, std::optional<std::uint64_t> compressedSize,
                 std::uint64_t& inflatedOfFile);
    ~ObjectStream();
    ObjectStream(const ObjectStream&) = delete;
    ObjectStream& operator=(const ObjectStream&) = delete;

    ISource& source() { return m_source; }

    /// Inflated bytes that were handed out or skipped.
    std::uint64_t servedBytes() const { return m_servedBytes; }

    /// Sets where the source ends: so many bytes from the beginning.
    void setLimit(std::int32_t objectLimit);

private:
    static constexpr std::size_t outputSize = 1024;

    std::uint8_t next();
    void skip(unsigned long long count);
    void take(std::size_t count);
    void showWindow();
    std::size_t available() const { return static_cast<std::size_t>(m_inflater.next_out - m_outputCursor); }
    bool isBelowLimit() const { return static_cast<std::int64_t>(m_servedBytes) < m_objectLimit; }
    bool inflateStep();
    void countInflated(std::uint64_t bytes);
    void fillInput();
    void giveInput();
    void finish();

    Lexer& m_lexer;
    const std::optional<std::uint64_t> m_compressedSize;
    std::uint64_t& m_inflatedOfFile;
    std::string m_compressed;
    int m_fills = 0;
    std::size_t m_filled = 0; // Compressed bytes that were read to the end.
    std::size_t m_given = 0;  // Of them, to the inflater.
    std::array<Bytef, outputSize> m_output{};
    z_stream m_inflater{};
    const Bytef* m_outputCursor;
    std::uint64_t m_servedBytes = 0;
    std::int32_t m_objectLimit = 2147483647;
    bool m_isFinished = false;
    LambdaSource m_source;
};

} // namespace Pdf::Parser
