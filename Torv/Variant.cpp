#include "Torv/Variant.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <simdjson.h>
#include <type_traits>

#include "Torv/Encoding.h"
#include "Torv/Json/Json.h"
#include "Torv/VariantInvalidOperationException.h"
#include "Torv/VariantIterator.h"

namespace Torv
{
namespace
{

namespace dom = simdjson::dom;
using Kind = Variant::Kind;
using Place = std::array<std::byte, sizeof(dom::element)>;

const char* name(Kind kind)
{
    switch (kind) {
    case Kind::Null: return "Null";
    case Kind::Boolean: return "Boolean";
    case Kind::Int32: return "Int32";
    case Kind::UInt32: return "UInt32";
    case Kind::Int64: return "Int64";
    case Kind::UInt64: return "UInt64";
    case Kind::Real: return "Real";
    case Kind::String: return "String";
    case Kind::Array: return "Array";
    case Kind::Object: return "Object";
    }
    return "";
}

[[noreturn]] void rejectConversion(const char* wanted, Kind kind)
{
    throw VariantInvalidOperationException(std::string("Variant: The value does not convert | wanted=") +
                                           wanted + " | kind=" + name(kind));
}

[[noreturn]] void rejectKey(const char* reason, std::string_view key, Kind kind)
{
    throw VariantInvalidOperationException(std::string("Variant: ") + reason + " | key=" + std::string(key) +
                                           " | kind=" + name(kind));
}

dom::element elementAt(const Place& place)
{
    return std::bit_cast<dom::element>(place);
}

std::string_view textOf(const dom::element& element)
{
    return element.get_string().value_unsafe();
}

dom::array arrayOf(const dom::element& element)
{
    return element.get_array().value_unsafe();
}

dom::object objectOf(const dom::element& element)
{
    return element.get_object().value_unsafe();
}

Kind kindOf(const dom::element& element)
{
    switch (element.type()) {
    case dom::element_type::NULL_VALUE: return Kind::Null;
    case dom::element_type::BOOL: return Kind::Boolean;
    case dom::element_type::INT64: return Kind::Int64;
    case dom::element_type::UINT64: return Kind::UInt64;
    case dom::element_type::DOUBLE: return Kind::Real;
    case dom::element_type::STRING: return Kind::String;
    case dom::element_type::ARRAY: return Kind::Array;
    case dom::element_type::OBJECT: return Kind::Object;
    }
    return Kind::Null;
}

/// simdjson counts up to here and no further.
constexpr std::size_t largestCount = 0xFFFFFF;

template <typename Container> std::size_t countOf(const Container& container)
{
    if (container.size() < largestCount)
        return container.size();
    std::size_t count = 0;
    for (auto step = container.begin(), end = container.end(); step != end; ++step)
        ++count;
    return count;
}

bool isAscii(std::string_view text)
{
    unsigned bits = 0;
    for (const char byte : text)
        bits |= static_cast<std::uint8_t>(byte);
    return bits < 0x80;
}

/// Of a key that stands twice the last one counts, so all of them are looked at.
template <typename Matches> std::optional<dom::element> lastMember(const dom::object& object, Matches matches)
{
    std::optional<dom::element> found;
    for (auto member = object.begin(), end = object.end(); member != end; ++member) {
        if (matches(member.key()))
            found = member.value();
    }
    return found;
}

std::optional<dom::element> memberOf(const dom::object& object, std::string_view key)
{
    if (isAscii(key))
        return lastMember(object, [key](std::string_view candidate) { return candidate == key; });
    return lastMember(
        object, [key](std::string_view candidate) { return Encoding::bytesFromUtf8(candidate) == key; });
}

/// Cut toward zero. Nothing for what does not fit and for what is no number.
template <typename T> std::optional<T> truncated(double value)
{
    constexpr auto lowest = static_cast<double>(std::numeric_limits<T>::min());
    const double whole = std::trunc(value);
    if (!(whole >= lowest && whole < -lowest))
        return std::nullopt;
    return static_cast<T>(whole);
}

/// A number as a T. Nothing for other values and for numbers that do not fit.
template <typename T, typename Value> std::optional<T> integerFrom(const Value& value)
{
    if constexpr (std::is_same_v<Value, double>) {
        return truncated<T>(value);
    } else if constexpr (std::is_integral_v<Value> && !std::is_same_v<Value, bool>) {
        if (std::in_range<T>(value))
            return static_cast<T>(value);
    }
    return std::nullopt;
}

template <typename T> void appendNumber(std::string& out, T value)
{
    std::array<char, 32> digits; // The longest is a real: -2.2250738585072014e-308 has 24.
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(digits.data(), end);
}

void appendReal(std::string& out, double value)
{
    if (!std::isfinite(value)) {
        out += "null";
        return;
    }
    const std::size_t start = out.size();
    appendNumber(out, value);
    // A large real without a point would be read back as an integer that does not fit.
    if (out.find_first_of(".e", start) == out.npos)
        out += ".0";
}

void appendText(std::string& out, std::string_view utf8)
{
    Json::appendString(out, Encoding::bytesFromUtf8(utf8));
}

void appendElement(std::string& out, const dom::element& element);

void appendArray(std::string& out, const dom::array& array)
{
    const char* separator = "[";
    for (const dom::element element : array) {
        out += separator;
        appendElement(out, element);
        separator = ",";
    }
    out += array.begin() == array.end() ? "[]" : "]";
}

void appendObject(std::string& out, const dom::object& object)
{
    const char* separator = "{";
    for (const dom::key_value_pair member : object) {
        out += separator;
        appendText(out, member.key);
        out += ':';
        appendElement(out, member.value);
        separator = ",";
    }
    out += object.begin() == object.end() ? "{}" : "}";
}

/// Calls itself at most Json::maxDepth times: parsing refuses what nests deeper.
void appendElement(std::string& out, const dom::element& element)
{
    switch (element.type()) {
    case dom::element_type::NULL_VALUE: out += "null"; break;
    case dom::element_type::BOOL: out += element.get_bool().value_unsafe() ? "true" : "false"; break;
    case dom::element_type::INT64: appendNumber(out, element.get_int64().value_unsafe()); break;
    case dom::element_type::UINT64: appendNumber(out, element.get_uint64().value_unsafe()); break;
    case dom::element_type::DOUBLE: appendReal(out, element.get_double().value_unsafe()); break;
    case dom::element_type::STRING: appendText(out, textOf(element)); break;
    case dom::element_type::ARRAY: appendArray(out, arrayOf(element)); break;
    case dom::element_type::OBJECT: appendObject(out, objectOf(element)); break;
    }
}

} // namespace

Variant::Variant(std::vector<Variant> elements)
    : m_value(std::make_shared<const std::vector<Variant>>(std::move(elements)))
{
}

Variant Variant::fromPlace(const std::shared_ptr<const void>& document, const Place& place)
{
    return fromElement(document, elementAt(place));
}

/// Numbers and truth values become values of their own at once: holding them costs less than holding the
/// document.
template <typename Element>
Variant Variant::fromElement(const std::shared_ptr<const void>& document, Element element)
{
    Variant result;
    switch (element.type()) {
    case dom::element_type::NULL_VALUE: break;
    case dom::element_type::BOOL: result.m_value = element.get_bool().value_unsafe(); break;
    case dom::element_type::INT64: {
        const std::int64_t number = element.get_int64().value_unsafe();
        if (std::in_range<std::int32_t>(number))
            result.m_value = static_cast<std::int32_t>(number);
        else
            result.m_value = number;
        break;
    }
    case dom::element_type::UINT64: result.m_value = element.get_uint64().value_unsafe(); break;
    case dom::element_type::DOUBLE: result.m_value = element.get_double().value_unsafe(); break;
    case dom::element_type::STRING:
    case dom::element_type::ARRAY:
    case dom::element_type::OBJECT:
        result.m_value.emplace<Node>(Node{document, std::bit_cast<Place>(element)});
        break;
    }
    return result;
}

Variant::Kind Variant::kind() const
{
    struct KindOf {
        Kind operator()(std::monostate) const { return Kind::Null; }
        Kind operator()(bool) const { return Kind::Boolean; }
        Kind operator()(std::int32_t) const { return Kind::Int32; }
        Kind operator()(std::uint32_t) const { return Kind::UInt32; }
        Kind operator()(std::int64_t) const { return Kind::Int64; }
        Kind operator()(std::uint64_t) const { return Kind::UInt64; }
        Kind operator()(double) const { return Kind::Real; }
        Kind operator()(const std::string&) const { return Kind::String; }
        Kind operator()(const Elements&) const { return Kind::Array; }
        Kind operator()(const Node& node) const { return kindOf(elementAt(node.place)); }
    };
    return std::visit(KindOf(), m_value);
}

bool Variant::isInteger() const
{
    const Kind held = kind();
    return held == Kind::Int32 || held == Kind::UInt32 || held == Kind::Int64 || held == Kind::UInt64;
}

template <typename T> T Variant::toInteger() const
{
    const auto number = std::visit([](const auto& value) { return integerFrom<T>(value); }, m_value);
    if (!number)
        rejectConversion("integer", kind());
    return *number;
}

int Variant::toInt() const
{
    return toInteger<int>();
}

long long Variant::toInt64() const
{
    return toInteger<long long>();
}

double Variant::toReal() const
{
    const auto number = std::visit(
        [](const auto& value) -> std::optional<double> {
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>)
                return static_cast<double>(value);
            else
                return std::nullopt;
        },
        m_value);
    if (!number)
        rejectConversion("real", kind());
    return *number;
}

bool Variant::toBool() const
{
    if (const bool* value = std::get_if<bool>(&m_value))
        return *value;
    rejectConversion("boolean", kind());
}

std::string Variant::toString() const
{
    if (const auto* text = std::get_if<std::string>(&m_value))
        return *text;
    const Node* const node = std::get_if<Node>(&m_value);
    if (node == nullptr || elementAt(node->place).type() != dom::element_type::STRING)
        rejectConversion("string", kind());
    return Encoding::bytesFromUtf8(textOf(elementAt(node->place)));
}

std::vector<std::string> Variant::toVector() const
{
    if (!isNull() && !isArray())
        rejectConversion("array", kind());
    std::vector<std::string> strings;
    for (VariantIterator element = begin(), last = end(); element != last; ++element)
        strings.push_back(element.value().toString());
    return strings;
}

Variant Variant::operator[](std::string_view key) const
{
    const Node* const node = objectNode();
    if (node == nullptr)
        rejectKey("Only an object has keys", key, kind());
    const auto member = memberOf(objectOf(elementAt(node->place)), key);
    if (!member)
        rejectKey("The key is missing", key, Kind::Object);
    return fromElement(node->document, *member);
}

bool Variant::contains(std::string_view key) const
{
    const Node* const node = objectNode();
    return node != nullptr && memberOf(objectOf(elementAt(node->place)), key).has_value();
}

bool Variant::contains(std::string_view key, Variant& out) const
{
    const Node* const node = objectNode();
    if (node == nullptr)
        return false;
    const auto member = memberOf(objectOf(elementAt(node->place)), key);
    if (member)
        out = fromElement(node->document, *member);
    return member.has_value();
}

const Variant::Node* Variant::objectNode() const
{
    const Node* const node = std::get_if<Node>(&m_value);
    return node != nullptr && elementAt(node->place).type() == dom::element_type::OBJECT ? node : nullptr;
}

std::size_t Variant::size() const
{
    if (const auto* elements = std::get_if<Elements>(&m_value))
        return (*elements)->size();
    if (isArray())
        return countOf(arrayOf(elementAt(std::get<Node>(m_value).place)));
    if (const Node* const node = objectNode())
        return countOf(objectOf(elementAt(node->place)));
    return 0;
}

VariantIterator Variant::begin() const
{
    return VariantIterator(*this, false);
}

VariantIterator Variant::end() const
{
    return VariantIterator(*this, true);
}

Variant Variant::copyVariant() const
{
    return *this;
}

std::string Variant::toJson() const
{
    std::string text;
    appendJson(text);
    return text;
}

void Variant::appendJson(std::string& out) const
{
    struct Writer {
        std::string& out;

        void operator()(std::monostate) const { out += "null"; }
        void operator()(bool value) const { out += value ? "true" : "false"; }
        void operator()(std::int32_t value) const { appendNumber(out, value); }
        void operator()(std::uint32_t value) const { appendNumber(out, value); }
        void operator()(std::int64_t value) const { appendNumber(out, value); }
        void operator()(std::uint64_t value) const { appendNumber(out, value); }
        void operator()(double value) const { appendReal(out, value); }
        void operator()(const std::string& value) const { Json::appendString(out, value); }
        void operator()(const Node& node) const { appendElement(out, elementAt(node.place)); }
        void operator()(const Elements& elements) const
        {
            out += '[';
            for (const Variant& element : *elements) {
                if (&element != elements->data())
                    out += ',';
                element.appendJson(out);
            }
            out += ']';
        }
    };
    std::visit(Writer{out}, m_value);
}

} // namespace Torv
