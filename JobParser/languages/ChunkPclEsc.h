#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"

namespace Torv
{
class Variant;
}

namespace JobParser
{

class UnserializationContext;

/// One PCL escape sequence, as in `ESC & l 26 A`, with the binary payload that may follow it.
///
/// The sequence is kept by meaning and can be edited; the payload stays a range of the job file.
class JOBPARSER_EXPORT ChunkPclEsc : public IChunk
{
public:
    /// The longest number between group and parameter, in characters.
    static constexpr int maxValueLength = 14;

    ChunkPclEsc() = default;
    /// Reads "opGroupParam", "binOffset", "binSize" and "value". A value of 16 or more characters counts as
    /// none. Throws JobParserException for a negative "binSize".
    ChunkPclEsc(UnserializationContext& context, const Torv::Variant& dto);

    /// Takes the size of the payload from the value if the sequence is one that has a payload. Throws
    /// JobParserException for a negative size.
    void process();

    /// Replaces the value by a number in decimal.
    void setValue(int number);

    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;

    /// The bytes behind ESC, 0 where there are none: `(op << 16) | (group << 8) | param`.
    std::int32_t opGroupParam = 0;
    std::array<char, 16> value{}; ///< The number as it stood, zero-terminated.
    std::int64_t binOffset = 0;   ///< Of the payload in the file.
    std::int64_t binSize = 0;     ///< Bytes of the payload; not negative.

    /// Whether a sequence is one that carries a payload.
    static bool hasPayload(std::int32_t sequence);

    /// The sequences that carry a payload, zero-terminated.
    static constexpr std::array<std::int32_t, 13> binDataCmd{
        0x297357, // ESC ) s # W, soft font header
        0x287357, // ESC ( s # W, character data
        0x286657, // ESC ( f # W, symbol set
        0x266E57, // ESC & n # W, alphanumeric id
        0x2A6257, // ESC * b # W, raster row
        0x2A6757, // ESC * g # W, configure raster
        0x2A6256, // ESC * b # V, raster plane
        0x2A7657, // ESC * v # W, configure image data
        0x2A6C57, // ESC * l # W, colour look-up tables
        0x2A6F57, // ESC * o # W, driver configuration
        0x2A6D57, // ESC * m # W, dither matrix
        0x267058, // ESC & p # X, transparent print data
        0,
    };

private:
    char op() const { return static_cast<char>(opGroupParam >> 16); }
    char group() const { return static_cast<char>(opGroupParam >> 8); }
    char param() const { return static_cast<char>(opGroupParam); }
    bool isTwoByte() const { return (opGroupParam & 0xFFFF) == 0; }
};

inline bool ChunkPclEsc::hasPayload(std::int32_t sequence)
{
    // The parameter tells most sequences from those with a payload.
    const std::int32_t last = sequence & 0xFF;
    if (last < 'V' || last > 'X')
        return false;
    return std::find(binDataCmd.begin(), binDataCmd.end() - 1, sequence) != binDataCmd.end() - 1;
}

} // namespace JobParser
