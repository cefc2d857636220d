#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace JobParser
{

/// The byte that begins each item of a PCL XL stream. Those that are treated by name have one; all others are
/// passed over by baseDataSize.
enum class tag_t : std::uint8_t {
    BeginSession = 0x41,
    EndSession = 0x42,
    BeginPage = 0x43,
    EndPage = 0x44,
    Comment = 0x47,
    BeginFontHeader = 0x4F,
    Ubyte = 0xC0,
    Uint16 = 0xC1,
    Uint32 = 0xC2,
    UbyteArray = 0xC8,
    Uint16Array = 0xC9,
    AttributeId = 0xF8,     ///< An identifier of one byte follows.
    AttributeIdWide = 0xF9, ///< An identifier of two bytes follows.
    EmbeddedData = 0xFA,    ///< A length of four bytes and the data follow.
    EmbeddedDataByte = 0xFB ///< A length of one byte and the data follow.
};

/// In place of the type of an array's length, where there is no array.
inline constexpr auto noLengthType = static_cast<tag_t>(255);

namespace Detail
{

constexpr std::int8_t baseDataSizeOf(int tag)
{
    constexpr std::array<std::int8_t, 8> baseSizes{1, 2, 4, 2, 4, 4, -1, -1};
    constexpr std::array<std::int8_t, 4> valuesOfRow{1, 2, 4, 8};
    if (tag <= 0x40)
        return -1;
    if (tag < 0xC0)
        return 0;
    // No values: identifiers, the two kinds of embedded data, and what is not in use.
    if (tag >= 0xF8)
        return tag == 0xFA || tag == 0xFB ? 1 : -1;
    const int size = baseSizes[tag & 7] * valuesOfRow[(tag >> 4) & 3];
    return static_cast<std::int8_t>(size);
}

constexpr std::array<std::int8_t, 255> makeBaseDataSize()
{
    std::array<std::int8_t, 255> table{};
    for (std::size_t tag = 0; tag < table.size(); ++tag)
        table[tag] = baseDataSizeOf(static_cast<int>(tag));
    return table;
}

} // namespace Detail

/// What each tag is, by its byte: 0 an operator; above 0 a value, by the bytes of one element; below 0
/// nothing that may stand where a tag is expected.
inline constexpr std::array<std::int8_t, 255> baseDataSize = Detail::makeBaseDataSize();

/// The row of a tag. The tag 255, which has none, counts as one of those that are refused by name.
constexpr int baseSizeOf(tag_t tag)
{
    const auto index = static_cast<std::size_t>(tag);
    return index < baseDataSize.size() ? baseDataSize[index] : -2;
}

/// Whether a value of the type is an array, with its length behind the tag.
constexpr bool isArray(tag_t tag)
{
    return (static_cast<int>(tag) & 8) != 0;
}

/// The three types that the length of an array may have.
constexpr bool isLengthType(tag_t tag)
{
    return tag == tag_t::Ubyte || tag == tag_t::Uint16 || tag == tag_t::Uint32;
}

} // namespace JobParser
