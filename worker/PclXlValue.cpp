#include "worker/PclXlValue.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "worker/BodyReader.h"

namespace JobParser::Worker
{
namespace
{

constexpr std::array<std::size_t, 6> sizes{1, 2, 4, 2, 4, 4};
// Arrays of points may be as long as a job likes; palettes and names are short.
constexpr std::int64_t mostKept = 4096;

constexpr unsigned typeMask = 7;

std::int64_t readNumber(BodyReader& reader, std::size_t size, bool isBigEndian)
{
    std::int64_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::int64_t byte = std::max(reader.get(), 0);
        number = isBigEndian ? (number << 8) | byte : number | (byte << (8 * i));
    }
    return number;
}

} // namespace

// The low three bits of a tag are the type; 0xC0 is a number, 0xC8 an array, 0xD0 two numbers, 0xE0 four.
bool PclXlValue::read(BodyReader& reader, std::uint8_t tag, bool isBigEndian)
{
    const unsigned type = tag & typeMask;
    if (type >= sizes.size())
        return false;
    m_type = static_cast<Type>(type);
    m_isBigEndian = isBigEndian;
    m_isArray = false;
    std::int64_t count = 1;
    switch (tag - type) {
    case 0xC0: break;
    case 0xD0: count = 2; break;
    case 0xE0: count = 4; break;
    case 0xC8: {
        const int lengthTag = reader.get();
        if (lengthTag != 0xC0 && lengthTag != 0xC1 && lengthTag != 0xC2)
            return false;
        count = readNumber(reader, sizes[static_cast<unsigned>(lengthTag) & typeMask], isBigEndian);
        m_isArray = true;
        break;
    }
    default: return false;
    }
    const std::int64_t size = count * static_cast<std::int64_t>(sizes[type]);
    const auto bytes = reader.take(std::min(size, mostKept));
    m_bytes.assign(bytes.begin(), bytes.end());
    m_count = m_bytes.size() / sizes[type];
    const std::int64_t rest = size - static_cast<std::int64_t>(m_bytes.size());
    return reader.skip(rest) == rest;
}

std::string_view PclXlValue::text() const
{
    if (!m_isArray || m_type != Type::Byte)
        return {};
    return {reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size()};
}

std::uint64_t PclXlValue::raw(std::size_t index) const
{
    const std::size_t size = sizes[static_cast<std::size_t>(m_type)];
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t at = index * size + (m_isBigEndian ? i : size - 1 - i);
        number = (number << 8) | m_bytes[at];
    }
    return number;
}

double PclXlValue::number(std::size_t index) const
{
    if (index >= m_count)
        return 0;
    const std::uint64_t bits = raw(index);
    switch (m_type) {
    case Type::Byte:
    case Type::Uint16:
    case Type::Uint32: break;
    case Type::Int16: return static_cast<std::int16_t>(bits);
    case Type::Int32: return static_cast<std::int32_t>(bits);
    case Type::Real: {
        const float real = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        return std::isfinite(real) ? real : 0;
    }
    }
    return static_cast<double>(bits);
}

int PclXlValue::integer(std::size_t index) const
{
    return static_cast<int>(std::clamp(number(index), -1e9, 1e9));
}

double PclXlValue::part(std::size_t index) const
{
    const double value = number(index);
    switch (m_type) {
    case Type::Byte: return value / 255;
    case Type::Uint16: return value / 65535;
    case Type::Uint32: return value / 4294967295.0;
    case Type::Int16: return value / 32767;
    case Type::Int32: return value / 2147483647.0;
    case Type::Real: break;
    }
    return value;
}

} // namespace JobParser::Worker
