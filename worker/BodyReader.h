#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "worker/BodyFinder.h"

namespace JobParser::Worker
{

/// Reads the ranges of a body as if they were one file, out of the mapped views of the job file.
///
/// `file` and `body` outlive the reader, and nobody else moves the position of the file.
class BodyReader
{
public:
    BodyReader(JobFile& file, const Body& body);

    std::int64_t size() const { return m_size; }
    std::int64_t position() const { return m_position; }
    bool atEnd() const { return m_bytes.empty() && m_position == m_size; }

    /// Moves to an offset from 0 to size().
    void seek(std::int64_t position);

    /// The mapped bytes from the position on. Empty only at the end. Valid until the position moves.
    std::span<const std::uint8_t> window() const { return m_bytes; }

    /// The byte at the position, which moves behind it; -1 at the end.
    int get()
    {
        if (m_bytes.empty()) [[unlikely]]
            return -1;
        const int byte = m_bytes.front();
        m_bytes = m_bytes.subspan(1);
        ++m_position;
        if (m_bytes.empty()) [[unlikely]]
            map();
        return byte;
    }

    /// The byte at the position, which stays; -1 at the end.
    int peek() const { return m_bytes.empty() ? -1 : m_bytes.front(); }

    /// Where a stretch of the body, as far as there is one, stands in the file.
    std::vector<Range> placesOf(const Range& stretch) const;

    /// The file that is read.
    JobFile& file() const { return m_file; }

    /// Moves forward by up to `count` bytes. Gives how many there were.
    std::int64_t skip(std::int64_t count);

    /// Up to `count` bytes from the position, which moves behind them; fewer only at the end. Valid until the
    /// next call of any function.
    std::span<const std::uint8_t> take(std::int64_t count);

private:
    void map();

    JobFile& m_file;
    const std::vector<Range>& m_ranges;
    std::int64_t m_size = 0;
    std::int64_t m_position = 0;
    std::size_t m_range = 0;       ///< The one that the position is in.
    std::int64_t m_rangeStart = 0; ///< The position at which it begins.
    std::span<const std::uint8_t> m_bytes;
    std::vector<std::uint8_t> m_joined; ///< What `take` gives if the bytes do not stand together.
};

} // namespace JobParser::Worker
