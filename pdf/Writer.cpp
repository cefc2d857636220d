#include "pdf/Writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "JobParser/JobParserException.h"
#include "pdf/Numbers.h"
#include "pdf/Object.h"

namespace Pdf
{
namespace
{

constexpr int decimals = 6;
constexpr std::size_t mostDigits = std::numeric_limits<std::uint64_t>::digits10 + 1;
// Sign, the digits of the greatest double, point and decimals.
constexpr std::size_t longestNumber = std::numeric_limits<double>::max_exponent10 + 3 + decimals;

std::string_view trimmed(std::string_view number)
{
    // Infinity and what is no number have no point.
    if (number.find('.') == std::string_view::npos)
        return number;
    number.remove_suffix(number.size() - 1 - number.find_last_not_of('0'));
    if (number.back() == '.')
        number.remove_suffix(1);
    return number;
}

} // namespace

void Writer::write(const Value& value)
{
    m_buffered = 0;
    putValue(value);
    flush();
}

void Writer::write(const Object& object)
{
    if (!object.stream.empty()) {
        const auto length = std::get<double>(static_cast<const Value&>(object.value)["Length"]);
        if (toUnsigned32(length) != object.stream.size())
            throw JobParser::JobParserException("Inconsistent stream length");
    }
    m_buffered = 0;
    putInteger(object.reference.number);
    put(' ');
    putInteger(object.reference.generation);
    put(" obj\n");
    flush();
    const std::size_t start = m_text.size();
    putValue(object.value);
    flush();
    m_text.erase(std::min(m_text.find('\0', start), m_text.size()));
    if (!object.stream.empty())
        m_text.append("\nstream\n").append(object.stream).append("\nendstream");
    m_text += "\nendobj\n";
}

void Writer::writeName(std::string_view name)
{
    m_buffered = 0;
    putName(name);
    flush();
}

void Writer::writeReference(const Reference& reference)
{
    m_buffered = 0;
    putReference(reference);
    flush();
}

// Where up to so many characters may be written, of which taken() then tells the end.
inline char* Writer::roomFor(std::size_t size)
{
    if (size > m_buffer.size() - m_buffered)
        flush();
    return m_buffer.data() + m_buffered;
}

void Writer::put(char character)
{
    *roomFor(1) = character;
    ++m_buffered;
}

void Writer::put(std::string_view text)
{
    if (text.size() > m_buffer.size() - m_buffered) {
        flush();
        if (text.size() > m_buffer.size()) {
            m_text += text;
            return;
        }
    }
    // Most texts are too small for a call.
    char* end = m_buffer.data() + m_buffered;
    for (const char character : text)
        *end++ = character;
    taken(end);
}

void Writer::flush()
{
    m_text.append(m_buffer.data(), m_buffered);
    m_buffered = 0;
}

void Writer::putValue(const Value& value)
{
    m_frames.clear();
    begin(value);
    while (!m_frames.empty()) {
        Frame& frame = m_frames.back();
        if (frame.isArray ? frame.item == frame.lastItem : frame.entry == frame.lastEntry) {
            put(frame.isArray ? "]" : ">>");
            m_frames.pop_back();
        } else if (frame.isArray) {
            beginItem(*frame.item++);
        } else {
            beginEntry(*frame.entry++);
        }
    }
}

void Writer::begin(const Value& value)
{
    if (const auto* array = std::get_if<Array>(&value)) {
        const auto items = array->items();
        put('[');
        m_frames.push_back({true, items.data(), items.data() + items.size(), nullptr, nullptr});
    } else if (const auto* dictionary = std::get_if<Dictionary>(&value)) {
        const auto entries = dictionary->entries();
        put("<<");
        m_frames.push_back({false, nullptr, nullptr, entries.data(), entries.data() + entries.size()});
    } else {
        putScalar(value);
    }
}

// Entries that were only looked up stand as None, and are no part of the text.
void Writer::beginItem(const Value& item)
{
    if (!std::holds_alternative<None>(item))
        begin(item);
}

void Writer::beginEntry(const DictionaryEntry& entry)
{
    if (std::holds_alternative<None>(entry.value))
        return;
    putName(entry.key);
    begin(entry.value);
}

void Writer::putScalar(const Value& value)
{
    if (const auto* number = std::get_if<double>(&value)) {
        putNumber(*number);
    } else if (const auto* name = std::get_if<Name>(&value)) {
        putName(name->text);
    } else if (const auto* reference = std::get_if<Reference>(&value)) {
        putReference(*reference);
    } else if (const auto* string = std::get_if<ByteString>(&value)) {
        put('(');
        put(string->view().substr(0, string->view().find('\0')));
        put(')');
    } else if (const auto* hexString = std::get_if<HexString>(&value)) {
        put(hexString->serialize());
    } else if (const auto* boolean = std::get_if<bool>(&value)) {
        put(*boolean ? " true" : " false");
    } else if (std::holds_alternative<Null>(value)) {
        put(" null");
    } else if (std::holds_alternative<None>(value)) {
        throw JobParser::JobParserException("None not allowed in real objects");
    } else if (std::holds_alternative<FalseReference>(value)) {
        throw JobParser::JobParserException("FalseRef not allowed in real objects");
    }
}

void Writer::putNumber(double number)
{
    constexpr double mostExact = 1e15;

    if (number >= 1 && number < mostExact && number == std::trunc(number)) {
        char* const room = roomFor(1 + mostDigits);
        *room = ' ';
        taken(std::to_chars(room + 1, room + 1 + mostDigits, static_cast<std::uint64_t>(number)).ptr);
        return;
    }
    if (number == 0 && !std::signbit(number)) {
        put(" 0");
        return;
    }
    std::array<char, longestNumber + 1> buffer;
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                            std::chars_format::fixed, decimals);
    put(' ');
    if (error == std::errc())
        put(trimmed({buffer.data(), end}));
}

void Writer::putInteger(std::uint64_t number)
{
    char* const room = roomFor(mostDigits);
    taken(std::to_chars(room, room + mostDigits, number).ptr);
}

void Writer::putReference(const Reference& reference)
{
    char* end = roomFor(2 * mostDigits + 4);
    *end++ = ' ';
    end = std::to_chars(end, end + mostDigits, reference.number).ptr;
    *end++ = ' ';
    end = std::to_chars(end, end + mostDigits, reference.generation).ptr;
    *end++ = ' ';
    *end++ = 'R';
    taken(end);
}

void Writer::putName(std::string_view name)
{
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::size_t escapeSize = 3;
    constexpr std::size_t mostAtOnce = 64;

    put('/');
    while (!name.empty()) {
        const std::string_view part = name.substr(0, mostAtOnce);
        name.remove_prefix(part.size());
        char* end = roomFor(escapeSize * part.size());
        for (const char character : part) {
            const auto byte = static_cast<unsigned char>(character);
            if (isNameCharacter[byte]) {
                *end++ = character;
            } else {
                *end++ = '#';
                *end++ = digits[byte >> 4];
                *end++ = digits[byte & 15];
            }
        }
        taken(end);
    }
}

} // namespace Pdf
