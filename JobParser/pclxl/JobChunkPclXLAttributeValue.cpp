#include "JobParser/pclxl/JobChunkPclXLAttributeValue.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <span>
#include <type_traits>

#include "JobParser/JobParserException.h"

#include "Torv/Assert.h"
#include "Torv/GenericException.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Text.h"
#include "Torv/VariantInvalidOperationException.h"
#include "Torv/VariantIterator.h"

namespace JobParser
{
namespace
{

tag_t lengthTypeFor(std::size_t size)
{
    if (size >= 0x10000)
        return tag_t::Uint32;
    return size > 0xFF ? tag_t::Uint16 : tag_t::Ubyte;
}

/// The unsigned number in the first bytes, of which there are enough.
template <typename Number> Number numberAt(const std::uint8_t* bytes)
{
    std::make_unsigned_t<Number> number = 0;
    for (std::size_t index = 0; index < sizeof number; ++index)
        number =
            static_cast<std::make_unsigned_t<Number>>(number | std::uint64_t{bytes[index]} << (8 * index));
    return static_cast<Number>(number);
}

template <typename T> Torv::Variant elementAt(const std::uint8_t* bytes)
{
    if constexpr (std::is_same_v<T, float>)
        return static_cast<double>(std::bit_cast<float>(numberAt<std::uint32_t>(bytes)));
    else if constexpr (std::is_same_v<T, std::uint32_t>)
        return numberAt<std::uint32_t>(bytes);
    else
        return static_cast<std::int32_t>(numberAt<T>(bytes));
}

void write(Torv::IO::IStream& stream, std::span<const std::uint8_t> bytes)
{
    // A stream takes at most 4 GiB at a time.
    constexpr std::size_t limit = 0x40000000;
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), limit)))
        stream.write(bytes.data(), static_cast<std::uint32_t>(std::min(bytes.size(), limit)));
}

void appendByte(std::string& json, std::uint8_t byte)
{
    std::array<char, 4> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), byte).ptr;
    json.append(digits.data(), end);
}

} // namespace

constinit const JobChunkPclXLAttributeValue none{};

JobChunkPclXLAttributeValue::JobChunkPclXLAttributeValue(tag_t type, std::vector<std::uint8_t> bytes,
                                                         tag_t lengthType)
    : data(std::move(bytes)), data_type(type), array_length_type(lengthType)
{
    if (isArray(data_type) && array_length_type == noLengthType)
        array_length_type = lengthTypeFor(data.size());
}

JobChunkPclXLAttributeValue::JobChunkPclXLAttributeValue(UnserializationContext&, const Torv::Variant& dto)
{
    const Torv::Variant bytes = dto["value"];
    if (!bytes.isArray())
        throw Torv::VariantInvalidOperationException("The bytes of a PCL XL value are no array");
    data.reserve(bytes.size());
    for (Torv::VariantIterator it = bytes.begin(), end = bytes.end(); !(it == end); ++it)
        data.push_back(static_cast<std::uint8_t>(it.value().toInt()));
    data_type = static_cast<tag_t>(dto["data_type"].toInt());
    if (!isArray(data_type))
        return;
    Torv::Variant stored;
    const int lengthType = dto.contains("array_length_type", stored) ? stored.toInt() : 0;
    const bool chosenBySize = lengthType == 0 || lengthType == static_cast<int>(noLengthType);
    array_length_type = chosenBySize ? lengthTypeFor(data.size()) : static_cast<tag_t>(lengthType);
    const bool inRange = lengthType >= 0 && lengthType <= 255;
    if (!inRange || !isLengthType(array_length_type) || baseSizeOf(data_type) <= 0)
        throw JobParserException("Invalid attribute value in metadata");
}

std::string JobChunkPclXLAttributeValue::ValueAsString() const
{
    if (data_type == tag_t::UbyteArray)
        return std::string(data.begin(), data.end());
    if (data_type != tag_t::Uint16Array)
        throw Torv::GenericException("The value of attribute is not a string!");
    std::u16string wide(data.size() / 2, u'\0');
    for (std::size_t index = 0; index < wide.size(); ++index)
        wide[index] = static_cast<char16_t>(numberAt<std::uint16_t>(&data[2 * index]));
    return Torv::narrow(wide);
}

Torv::Variant JobChunkPclXLAttributeValue::toVariant() const
{
    // Pairs and boxes have the low bits of what they consist of.
    switch (static_cast<int>(data_type) & 7) {
    case 1: return read<std::uint16_t>();
    case 2: return read<std::uint32_t>();
    case 3: return read<std::int16_t>();
    case 4: return read<std::int32_t>();
    case 5: return read<float>();
    default: break;
    }
    if (data.size() == 1)
        return static_cast<std::int32_t>(data.front());
    return std::string(data.begin(), data.end());
}

template <typename T> Torv::Variant JobChunkPclXLAttributeValue::read() const
{
    const std::size_t count = data.size() / sizeof(T);
    if (count == 1)
        return elementAt<T>(data.data());
    std::vector<Torv::Variant> elements;
    elements.reserve(count);
    for (std::size_t index = 0; index < count; ++index)
        elements.push_back(elementAt<T>(&data[index * sizeof(T)]));
    return elements;
}

template JOBPARSER_EXPORT Torv::Variant JobChunkPclXLAttributeValue::read<std::uint16_t>() const;
template JOBPARSER_EXPORT Torv::Variant JobChunkPclXLAttributeValue::read<std::uint32_t>() const;
template JOBPARSER_EXPORT Torv::Variant JobChunkPclXLAttributeValue::read<std::int16_t>() const;
template JOBPARSER_EXPORT Torv::Variant JobChunkPclXLAttributeValue::read<std::int32_t>() const;
template JOBPARSER_EXPORT Torv::Variant JobChunkPclXLAttributeValue::read<float>() const;

void JobChunkPclXLAttributeValue::save(JobFile&, Torv::IO::IStream& stream) const
{
    std::vector<std::uint8_t> start{static_cast<std::uint8_t>(data_type)};
    if (isArray(data_type)) {
        TORV_ASSERT(baseSizeOf(data_type) > 0, "JobChunkPclXLAttributeValue");
        TORV_ASSERT(isLengthType(array_length_type), "JobChunkPclXLAttributeValue");
        start.push_back(static_cast<std::uint8_t>(array_length_type));
        const std::uint64_t count = data.size() / static_cast<std::size_t>(baseSizeOf(data_type));
        for (int shift = 0; shift < 8 * baseSizeOf(array_length_type); shift += 8)
            start.push_back(static_cast<std::uint8_t>(count >> shift));
    }
    write(stream, start);
    write(stream, data);
}

void JobChunkPclXLAttributeValue::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, "AttributeValue", "", false, "", 0);
}

std::string JobChunkPclXLAttributeValue::toJson(SerializationContext&) const
{
    std::string bytes = "[";
    for (const std::uint8_t byte : data) {
        if (bytes.size() > 1)
            bytes += ',';
        appendByte(bytes, byte);
    }
    bytes += ']';
    Torv::Json::Object dto;
    dto.addJson("value", bytes);
    dto.add("data_type", data_type);
    if (isArray(data_type))
        dto.add("array_length_type", array_length_type);
    return dto.take();
}

std::int64_t JobChunkPclXLAttributeValue::size() const
{
    const auto bytes = static_cast<std::int64_t>(data.size());
    return isArray(data_type) ? bytes + 2 + baseSizeOf(array_length_type) : bytes + 1;
}

} // namespace JobParser
