#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "JobParser/Export.h"
#include "JobParser/IChunk.h"
#include "JobParser/pclxl/PclXLTags.h"

#include "Torv/Variant.h"

namespace JobParser
{

class UnserializationContext;

/// The value of an attribute, held in memory: one element, a pair, a box, or an array of any of these.
class JOBPARSER_EXPORT JobChunkPclXLAttributeValue : public IChunk
{
public:
    /// A value without bytes.
    JobChunkPclXLAttributeValue() = default;
    /// `data` are the bytes behind the type and, for an array, its length. An array without a length type
    /// gets the shortest that holds the number of its bytes.
    JobChunkPclXLAttributeValue(tag_t type, std::vector<std::uint8_t> bytes, tag_t lengthType = noLengthType);
    /// Reads "value", "data_type" and, for an array, "array_length_type", which may be absent or 0. Throws
    /// JobParserException for an array that cannot be written: of a type without a size, or with a length
    /// type that is none.
    JobChunkPclXLAttributeValue(UnserializationContext& context, const Torv::Variant& dto);

    /// The text of a ubyte array as it is, and of a uint16 array as UTF-8. Throws Torv::GenericException for
    /// all other types.
    std::string ValueAsString() const;

    /// The number of a value of one element, and an array of numbers for all others. Values of ubytes are a
    /// number if they have one byte, and a string otherwise.
    Torv::Variant toVariant() const;

    /// The elements as numbers of the type T: one as a number, others as an array. T is std::uint16_t,
    /// std::uint32_t, std::int16_t, std::int32_t or float.
    template <typename T> Torv::Variant read() const;

    /// 0 if there is none.
    std::uint8_t firstByte() const { return data.empty() ? std::uint8_t{0} : data.front(); }

    /// Asserts of an array that its type has a size and its length type is one of the three.
    void save(JobFile& file, Torv::IO::IStream& stream) const override;
    void dump(Torv::Log::ILog& log) override;
    std::string toJson(SerializationContext& context) const override;
    std::int64_t size() const override;

    std::vector<std::uint8_t> data; ///< The elements, least significant byte first.
    tag_t data_type{};
    tag_t array_length_type = noLengthType; ///< One of isLengthType for an array.
};

/// A value without bytes: tells a caller to keep the attribute as a stretch of the file.
JOBPARSER_EXPORT extern const JobChunkPclXLAttributeValue none;

} // namespace JobParser
