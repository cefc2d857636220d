#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace JobParser::Worker
{

class BodyReader;

/// A value of an attribute of PCL XL: numbers of one of five types, one, two (xy), four (box) or an array.
class PclXlValue
{
public:
    /// Reads the value behind its tag. False if the tag is none of a value, or its bytes are cut off. Of long
    /// arrays only the beginning is kept.
    bool read(BodyReader& reader, std::uint8_t tag, bool isBigEndian);

    /// How many numbers there are, as far as they are kept.
    std::size_t count() const { return m_count; }
    bool isArray() const { return m_isArray; }
    /// The bytes of an array of bytes.
    std::string_view text() const;
    /// One of the numbers, 0 where there is none.
    double number(std::size_t index = 0) const;
    int integer(std::size_t index = 0) const;
    /// The number as a part of the most that its type holds; of reals the number itself.
    double part(std::size_t index) const;

private:
    enum class Type : std::uint8_t { Byte, Uint16, Uint32, Int16, Int32, Real };

    std::uint64_t raw(std::size_t index) const;

    Type m_type = Type::Byte;
    bool m_isArray = false;
    bool m_isBigEndian = false;
    std::size_t m_count = 0;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace JobParser::Worker
