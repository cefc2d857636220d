#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "JobParser/Export.h"
#include "pdf/Array.h"
#include "pdf/ByteString.h"
#include "pdf/Dictionary.h"
#include "pdf/FalseReference.h"
#include "pdf/HexString.h"
#include "pdf/Name.h"
#include "pdf/Reference.h"

namespace Pdf
{

/// No value: no such entry, or nothing was read.
using None = std::monostate;

/// The PDF value `null`.
struct Null {
};

/// A literal string is held without its outer parentheses, with escapes as they are written. A number is
/// always a double.
using AnyValue = std::variant<None, Null, Name, Reference, double, ByteString, HexString, bool, Array,
                              Dictionary, FalseReference>;

static_assert(sizeof(AnyValue) <= 16, "Documents hold many values");

/// A PDF value, as a tree. Trees are copied and destroyed without the call stack, so that they may be of any
/// depth.
class JOBPARSER_EXPORT Value : public AnyValue
{
public:
    using AnyValue::AnyValue;
    Value() = default;
    Value(const Value&) = default;
    Value(Value&&) noexcept = default;
    ~Value() = default;
    /// The other may be a part of this.
    Value& operator=(const Value& other) { return *this = Value(other); }
    Value& operator=(Value&& other) noexcept
    {
        Value taken(std::move(other));
        AnyValue::operator=(static_cast<AnyValue&&>(taken));
        return *this;
    }

    /// The entry of a dictionary, which is made as None if it is not there. None becomes an empty dictionary
    /// first; anything else throws std::bad_variant_access. The reference is valid until the next entry of
    /// the same dictionary is made.
    Value& operator[](std::string_view key);

    /// The entry of a dictionary, or Pdf::nothing. Throws std::bad_variant_access if this is no dictionary,
    /// for None too.
    const Value& operator[](std::string_view key) const;

    /// The name that is held; an empty one for everything else.
    explicit(false) operator Name() const;

    /// The value as PDF text. Entries and elements that are None are left out. Throws
    /// JobParser::JobParserException if this is None, or holds a FalseReference anywhere.
    std::string serialize() const;
};

/// A key and its value.
struct DictionaryEntry {
    ByteString key;
    Value value;
};

/// What stands for an entry that is not there.
JOBPARSER_EXPORT extern const Value nothing;

} // namespace Pdf
