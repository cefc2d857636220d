#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace JobParser::Worker
{

/// The ways in which PCL compresses rows of pictures. The numbers stand in jobs.
enum class RasterMode : int {
    Plain = 0,
    RunLength = 1,
    PackBits = 2,
    DeltaRow = 3,
    Adaptive = 5, ///< Several rows at once; not for RasterRow itself.
    ReplacementDelta = 9,
};

/// One row of one plane of a picture, which is the seed of the next one.
///
/// Bytes beyond what a row holds are 0. A row takes at most `longest` bytes; what a job puts beyond is lost.
class RasterRow
{
public:
    static constexpr std::size_t longest = std::size_t{1} << 18;

    /// The row as it stands.
    std::span<const std::uint8_t> bytes() const { return m_bytes; }

    /// Forgets the row.
    void clear() { m_bytes.clear(); }

    /// Makes the next row of compressed bytes. What is cut off leaves the rest as the mode has it.
    void decode(RasterMode mode, std::span<const std::uint8_t> data);

private:
    void decodeRunLength(std::span<const std::uint8_t> data);
    void decodePackBits(std::span<const std::uint8_t> data);
    void decodeDeltaRow(std::span<const std::uint8_t> data);
    void decodeReplacementDelta(std::span<const std::uint8_t> data);
    void append(std::size_t count, std::uint8_t byte);
    void append(std::span<const std::uint8_t> data);
    void replace(std::size_t at, std::span<const std::uint8_t> data);

    std::vector<std::uint8_t> m_bytes;
};

} // namespace JobParser::Worker
