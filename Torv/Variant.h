#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Torv/Export.h"

namespace Torv
{

class Variant;
class VariantIterator;

namespace Json
{
TORV_EXPORT Variant parse(std::string text);
} // namespace Json

/// A dynamic value: null, a truth value, a number, a string, an array or an object.
///
/// What Json::parse gives refers into the parsed document, which all values taken from it keep alive
/// together; copies are cheap. Strings are job bytes: what JSON holds as a lossless form of bytes comes back
/// as those bytes. An object that has a key twice gives the last value.
///
/// A value belongs to one thread at a time; values of one document may be read on several.
class TORV_EXPORT Variant
{
public:
    enum class Kind { Null, Boolean, Int32, UInt32, Int64, UInt64, Real, String, Array, Object };

    Variant() = default;
    Variant(bool value) : m_value(value) {}
    Variant(std::int32_t value) : m_value(value) {}
    Variant(std::uint32_t value) : m_value(value) {}
    Variant(long value) : m_value(static_cast<std::int64_t>(value)) {}
    Variant(long long value) : m_value(static_cast<std::int64_t>(value)) {}
    Variant(unsigned long value) : m_value(static_cast<std::uint64_t>(value)) {}
    Variant(unsigned long long value) : m_value(static_cast<std::uint64_t>(value)) {}
    Variant(double value) : m_value(value) {}
    Variant(std::string value) : m_value(std::move(value)) {}
    Variant(const char* value) : m_value(std::string(value)) {}
    Variant(std::vector<Variant> elements);

    Kind kind() const;
    bool isNull() const { return kind() == Kind::Null; }
    bool isString() const { return kind() == Kind::String; }
    bool isArray() const { return kind() == Kind::Array; }
    bool isObject() const { return kind() == Kind::Object; }
    /// One of the four integer kinds.
    bool isInteger() const;

    /// The conversions throw VariantInvalidOperationException for a value of another kind. A real converts
    /// to an integer by cutting toward zero; a number that does not fit throws too.
    int toInt() const;
    long long toInt64() const;
    double toReal() const;
    bool toBool() const;
    std::string toString() const;
    /// The strings of an array of strings; null gives none.
    std::vector<std::string> toVector() const;

    /// The value of a key. Throws VariantInvalidOperationException if this is no object or has no such key.
    Variant operator[](std::string_view key) const;
    /// Whether this is an object that has the key, whatever the value.
    bool contains(std::string_view key) const;
    /// The same, and gives the value if the key is there; otherwise `out` stays as it is.
    bool contains(std::string_view key, Variant& out) const;

    /// Number of elements of an array or members of an object, where a key that stands twice counts twice; 0
    /// for all other kinds.
    std::size_t size() const;

    /// The elements of an array, in order. All other kinds have none.
    VariantIterator begin() const;
    VariantIterator end() const;

    /// An independent value with the same content. Values never change, so it may share their memory.
    Variant copyVariant() const;

    /// The value as JSON text without blanks. A real shows as one (`2.0`), so that it is read back as one;
    /// what JSON has no number for (NaN, infinity) becomes null.
    std::string toJson() const;

private:
    friend class VariantIterator;
    friend Variant Json::parse(std::string text);

    /// A place in a parsed document, in the terms of the JSON library: a pointer and an index.
    using Place = std::array<std::byte, 2 * sizeof(void*)>;
    /// A string, an array or an object of a parsed document, and what keeps it alive.
    struct Node {
        std::shared_ptr<const void> document;
        Place place{};
    };
    using Elements = std::shared_ptr<const std::vector<Variant>>;

    static Variant fromPlace(const std::shared_ptr<const void>& document, const Place& place);
    template <typename Element>
    static Variant fromElement(const std::shared_ptr<const void>& document, Element element);

    /// Null unless the value is an object.
    const Node* objectNode() const;
    template <typename T> T toInteger() const;
    void appendJson(std::string& out) const;

    std::variant<std::monostate, bool, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double,
                 std::string, Elements, Node>
        m_value;
};

} // namespace Torv
