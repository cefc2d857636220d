#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Builds the bytes of a PCL XL stream, little endian, as in
/// PclXlBytes().ubyte(2, 37).op(0x43).uint16(1, 49).op(0x44).op(0x42).
class PclXlBytes
{
public:
    PclXlBytes() = default;

    static constexpr std::string_view headerLine = ") HP-PCL XL;2;0;Comment\n";

    PclXlBytes& header() { return raw(headerLine); }
    /// A tag or any other byte; an operator is nothing else.
    PclXlBytes& op(int byte)
    {
        m_bytes += static_cast<char>(static_cast<std::uint8_t>(byte));
        return *this;
    }
    /// A value of any type with the bytes behind its tag, and its identifier.
    PclXlBytes& value(int tag, std::string_view bytes, int attribute)
    {
        return op(tag).raw(bytes).op(0xF8).op(attribute);
    }
    PclXlBytes& ubyte(int number, int attribute) { return op(0xC0).number(number, 1).id(attribute); }
    PclXlBytes& uint16(int number, int attribute) { return op(0xC1).number(number, 2).id(attribute); }
    /// A ubyte array with a length of one, two or four bytes.
    PclXlBytes& text(std::string_view characters, int attribute, int lengthBytes = 1)
    {
        return array(0xC8, static_cast<std::int64_t>(characters.size()), lengthBytes)
            .raw(characters)
            .id(attribute);
    }
    /// The tag and the length of an array, without its elements.
    PclXlBytes& array(int tag, std::int64_t length, int lengthBytes)
    {
        return op(tag)
            .op(lengthBytes == 1   ? 0xC0
                : lengthBytes == 2 ? 0xC1
                                   : 0xC2)
            .number(length, lengthBytes);
    }
    PclXlBytes& embedded(std::string_view bytes)
    {
        return op(0xFA).number(static_cast<std::int64_t>(bytes.size()), 4).raw(bytes);
    }
    PclXlBytes& shortEmbedded(std::string_view bytes)
    {
        return op(0xFB).number(static_cast<std::int64_t>(bytes.size()), 1).raw(bytes);
    }
    PclXlBytes& number(std::int64_t value, int bytes)
    {
        for (int shift = 0; shift < 8 * bytes; shift += 8)
            op(static_cast<int>((value >> shift) & 0xFF));
        return *this;
    }
    PclXlBytes& id(int attribute) { return op(0xF8).op(attribute); }
    /// An identifier of two bytes, of which the second one counts.
    PclXlBytes& wideId(int first, int second) { return op(0xF9).op(first).op(second); }
    PclXlBytes& raw(std::string_view bytes)
    {
        m_bytes += bytes;
        return *this;
    }

    const std::string& str() const { return m_bytes; }

private:
    std::string m_bytes;
};
