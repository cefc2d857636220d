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
    m_frames.clear();
    begin(value);
    while (!m_frames.empty()) {
        Frame& frame = m_frames.back();
        if (frame.isArray ? frame.item == frame.lastItem : frame.entry == frame.lastEntry) {
            m_text += frame.isArray ? "]" : ">>";
            m_frames.pop_back();
        } else if (frame.isArray) {
            beginItem(*frame.item++);
        } else {
            beginEntry(*frame.entry++);
        }
    }
}

void Writer::write(const Object& object)
{
    if (!object.stream.empty()) {
        const auto length = std::get<double>(static_cast<const Value&>(object.value)["Length"]);
        if (toUnsigned32(length) != object.stream.size())
            throw JobParser::JobParserException("Inconsistent stream length");
    }
    writeInteger(object.reference.number);
    m_text += ' ';
    writeInteger(object.reference.generation);
    m_text += " obj\n";
    const std::size_t start = m_text.size();
    write(object.value);
    m_text.erase(std::min(m_text.find('\0', start), m_text.size()));
    if (!object.stream.empty())
        m_text.append("\nstream\n").append(object.stream).append("\nendstream");
    m_text += "\nendobj\n";
}

void Writer::begin(const Value& value)
{
    if (const auto* array = std::get_if<Array>(&value)) {
        const auto items = array->items();
        m_text += '[';
        m_frames.push_back({true, items.data(), items.data() + items.size(), nullptr, nullptr});
    } else if (const auto* dictionary = std::get_if<Dictionary>(&value)) {
        const auto entries = dictionary->entries();
        m_text += "<<";
        m_frames.push_back({false, nullptr, nullptr, entries.data(), entries.data() + entries.size()});
    } else {
        writeScalar(value);
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
    writeName(entry.key);
    begin(entry.value);
}

void Writer::writeScalar(const Value& value)
{
    if (const auto* number = std::get_if<double>(&value)) {
        writeNumber(*number);
    } else if (const auto* name = std::get_if<Name>(&value)) {
        writeName(name->text);
    } else if (const auto* reference = std::get_if<Reference>(&value)) {
        writeReference(*reference);
    } else if (const auto* string = std::get_if<ByteString>(&value)) {
        m_text += '(';
        m_text += string->view().substr(0, string->view().find('\0'));
        m_text += ')';
    } else if (const auto* hexString = std::get_if<HexString>(&value)) {
        m_text += hexString->serialize();
    } else if (const auto* boolean = std::get_if<bool>(&value)) {
        m_text += *boolean ? " true" : " false";
    } else if (std::holds_alternative<Null>(value)) {
        m_text += " null";
    } else if (std::holds_alternative<None>(value)) {
        throw JobParser::JobParserException("None not allowed in real objects");
    } else if (std::holds_alternative<FalseReference>(value)) {
        throw JobParser::JobParserException("FalseRef not allowed in real objects");
    }
}

void Writer::writeNumber(double number)
{
    constexpr double mostExact = 1e15;

    if (number >= 1 && number < mostExact && number == std::trunc(number)) {
        m_text += ' ';
        writeInteger(static_cast<std::uint64_t>(number));
        return;
    }
    if (number == 0 && !std::signbit(number)) {
        m_text += " 0";
        return;
    }
    std::array<char, longestNumber + 1> buffer;
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                            std::chars_format::fixed, decimals);
    m_text += ' ';
    if (error == std::errc())
        m_text += trimmed({buffer.data(), end});
}

void Writer::writeInteger(std::uint64_t number)
{
    std::array<char, std::numeric_limits<std::uint64_t>::digits10 + 1> buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    m_text.append(buffer.data(), result.ptr);
}

void Writer::writeReference(const Reference& reference)
{
    m_text += ' ';
    writeInteger(reference.number);
    m_text += ' ';
    writeInteger(reference.generation);
    m_text += " R";
}

void Writer::writeName(std::string_view name)
{
    constexpr std::string_view digits = "0123456789abcdef";

    m_text += '/';
    const auto isPlain = [](char character) {
        return isNameCharacter[static_cast<unsigned char>(character)];
    };
    if (std::ranges::all_of(name, isPlain)) {
        m_text += name;
        return;
    }
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        if (isNameCharacter[byte]) {
            m_text += character;
        } else {
            m_text += '#';
            m_text += digits[byte >> 4];
            m_text += digits[byte & 15];
        }
    }
}

} // namespace Pdf
