#include "pdf/ValueScanner.h"

#include <array>
#include <cstring>
#include <string_view>

#include "pdf/Numbers.h"
#include "pdf/WhiteSpace.h"

#include "Torv/Ascii.h"

namespace Pdf::Parser
{
namespace
{

using Kind = Token::Kind;

// With no more digits than these every number is exact, in whatever way it is put together.
constexpr int mostDigits = 15;
constexpr std::array<double, mostDigits + 1> powersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                         1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

struct Number {
    double value;
    std::uint64_t digits; // Of an integer, its value.
    bool isInteger;
};

// The number as it counts in a reference.
std::uint32_t toUnsigned32(const Number& number)
{
    return number.isInteger ? static_cast<std::uint32_t>(number.digits) : Pdf::toUnsigned32(number.value);
}

constexpr std::array<bool, 256> plainNameCharacters()
{
    std::array<bool, 256> table = isNameCharacter;
    table['#'] = false;
    return table;
}

constexpr std::array<bool, 256> isPlainNameCharacter = plainNameCharacters();

bool isNumberStart(std::uint8_t byte)
{
    return Torv::Ascii::isDigit(byte) || byte == '.' || byte == '-' || byte == '+';
}

} // namespace

/// Where the scanner stands. Each function that gives a truth tells whether to go on: not for what is
/// unusual, the end of the stretch among it.
class ValueScanner::Cursor
{
public:
    Cursor(const std::uint8_t* begin, const std::uint8_t* end, ValueTape& tape)
        : m_begin(begin), m_at(begin), m_end(end), m_tape(tape)
    {
    }

    const std::uint8_t* at() const { return m_at; }
    bool isAtEnd() const { return m_at == m_end; }

    // Which container begins here, whose start is then passed.
    [[gnu::always_inline]] Frame::Kind passOpen()
    {
        if (*m_at == '[') {
            ++m_at;
            return Frame::Kind::Array;
        }
        if (*m_at == '<' && following() == '<') {
            m_at += 2;
            return Frame::Kind::Dictionary;
        }
        return Frame::Kind::None;
    }

    bool isAtClose(Frame::Kind kind) const { return *m_at == (kind == Frame::Kind::Array ? ']' : '>'); }

    bool passClose(Frame::Kind kind)
    {
        const bool isArray = kind == Frame::Kind::Array;
        if (!isArray && following() != '>')
            return false;
        m_at += isArray ? 1 : 2;
        return true;
    }

    [[gnu::always_inline]] bool skipWhiteSpace()
    {
        for (; m_at != m_end; ++m_at) {
            if (!isWsCharacter[*m_at])
                return true;
            if (*m_at == '%')
                return false;
        }
        return false;
    }

    // A value that is no container, or two of them: how many it was.
    [[gnu::always_inline]] bool scanScalar(bool isInArray, std::uint64_t& values)
    {
        switch (*m_at) {
        case '/': return scanName(Kind::Name);
        case '(': return scanString();
        case '<': return scanHexString();
        case 't': return scanKeyword("true", Kind::True);
        case 'f': return scanKeyword("false", Kind::False);
        case 'n': return scanKeyword("null", Kind::Null);
        default: return isNumberStart(*m_at) && scanNumbers(isInArray, values);
        }
    }

    // A key and the white space behind it.
    [[gnu::always_inline]] bool scanKey() { return *m_at == '/' && scanName(Kind::Key) && skipWhiteSpace(); }

private:
    [[gnu::always_inline]] bool scanNumber(Number& number)
    {
        const bool isNegative = *m_at == '-';
        if (isNegative || *m_at == '+')
            ++m_at;
        const std::uint8_t* const start = m_at;
        const std::uint8_t* point = nullptr;
        std::uint64_t digits = 0;
        for (; m_at != m_end; ++m_at) {
            if (Torv::Ascii::isDigit(*m_at)) {
                digits = digits * 10 + (*m_at - '0');
            } else if (*m_at == '.' && point == nullptr) {
                point = m_at;
            } else {
                break;
            }
        }
        const std::ptrdiff_t count = m_at - start - (point != nullptr ? 1 : 0);
        if (m_at == m_end || *m_at == '.' || count == 0 || count > mostDigits)
            return false;
        number.isInteger = point == nullptr && !isNegative;
        number.value = static_cast<double>(digits);
        number.digits = digits;
        if (point != nullptr)
            number.value /= powersOfTen[static_cast<std::size_t>(m_at - point - 1)];
        if (isNegative)
            number.value = -number.value;
        return true;
    }

    // A number, a reference or, in an array, two numbers: how many values it was.
    [[gnu::always_inline]] bool scanNumbers(bool isInArray, std::uint64_t& values)
    {
        Number first;
        if (!scanNumber(first))
            return false;
        values = 1;
        if (!first.isInteger) {
            addNumber(first.value);
            return true;
        }
        if (!skipWhiteSpace())
            return false;
        if (!Torv::Ascii::isDigit(*m_at)) {
            addNumber(first.value);
            return true;
        }
        Number second;
        if (!scanNumber(second) || !skipWhiteSpace())
            return false;
        const std::uint32_t whole = toUnsigned32(second);
        if (*m_at == 'R' && static_cast<double>(whole) == second.value) {
            ++m_at;
            m_tape.addReference({toUnsigned32(first), whole});
            return true;
        }
        if (*m_at == 'R' || !isInArray)
            return false;
        addNumber(toUnsigned32(first));
        addNumber(second.value);
        values = 2;
        return true;
    }

    [[gnu::always_inline]] bool scanName(Kind kind)
    {
        const std::uint8_t* const start = ++m_at;
        while (m_at != m_end && isPlainNameCharacter[*m_at])
            ++m_at;
        if (m_at == m_end || *m_at == '#')
            return false;
        addText(kind, start);
        return true;
    }

    [[gnu::always_inline]] bool scanString()
    {
        const std::uint8_t* const start = ++m_at;
        for (std::uint64_t depth = 1; m_at != m_end; ++m_at) {
            if (*m_at == '\\') {
                if (++m_at == m_end)
                    return false;
            } else if (*m_at == '(') {
                ++depth;
            } else if (*m_at == ')' && --depth == 0) {
                addText(Kind::String, start);
                ++m_at;
                return true;
            }
        }
        return false;
    }

    [[gnu::always_inline]] bool scanHexString()
    {
        const std::uint8_t* const start = ++m_at;
        if (m_at == m_end || *m_at == '>')
            return false;
        const auto* const close =
            static_cast<const std::uint8_t*>(std::memchr(m_at, '>', static_cast<std::size_t>(m_end - m_at)));
        if (close == nullptr)
            return false;
        m_at = close;
        addText(Kind::HexString, start);
        ++m_at;
        return true;
    }

    [[gnu::always_inline]] bool scanKeyword(std::string_view keyword, Kind kind)
    {
        if (static_cast<std::size_t>(m_end - m_at) < keyword.size() ||
            std::memcmp(m_at, keyword.data(), keyword.size()) != 0)
            return false;
        m_at += keyword.size();
        m_tape.add({kind, 0, 0, {}});
        return true;
    }

    std::uint8_t following() const { return m_end - m_at > 1 ? m_at[1] : std::uint8_t{0}; }

    [[gnu::always_inline]] void addNumber(double value) { m_tape.addNumber(value); }

    [[gnu::always_inline]] void addText(Kind kind, const std::uint8_t* start)
    {
        m_tape.addText(kind, static_cast<std::size_t>(start - m_begin),
                       static_cast<std::size_t>(m_at - start));
    }

    const std::uint8_t* const m_begin;
    const std::uint8_t* m_at;
    const std::uint8_t* const m_end;
    ValueTape& m_tape;
};

const std::uint8_t* ValueScanner::scan(const std::uint8_t* begin, const std::uint8_t* end, ValueTape& tape)
{
    tape.useTextsIn(begin);
    m_outer.clear();
    Cursor cursor(begin, end, tape);
    Frame frame;
    while (!cursor.isAtEnd()) {
        if (frame.kind != Frame::Kind::None) {
            if (!cursor.skipWhiteSpace())
                return nullptr;
            if (cursor.isAtClose(frame.kind)) {
                if (!cursor.passClose(frame.kind))
                    return nullptr;
                closeContainer(frame, tape);
                if (frame.kind == Frame::Kind::None)
                    break;
                continue;
            }
            if (frame.kind == Frame::Kind::Dictionary && !cursor.scanKey())
                return nullptr;
        }
        if (const Frame::Kind opened = cursor.passOpen(); opened != Frame::Kind::None) {
            openContainer(opened, frame, tape);
            continue;
        }
        std::uint64_t values = 1;
        if (!cursor.scanScalar(frame.kind == Frame::Kind::Array, values))
            return nullptr;
        if (frame.kind == Frame::Kind::None)
            break;
        frame.count += values;
    }
    return cursor.isAtEnd() ? nullptr : cursor.at();
}

inline void ValueScanner::openContainer(Frame::Kind kind, Frame& frame, ValueTape& tape)
{
    m_outer.push_back(frame);
    const bool isArray = kind == Frame::Kind::Array;
    frame = {kind, tape.open(isArray ? Kind::OpenArray : Kind::OpenDictionary), 0};
}

// The container is a value of the one around it.
inline void ValueScanner::closeContainer(Frame& frame, ValueTape& tape)
{
    tape.close(frame.open, frame.count);
    frame = m_outer.back();
    m_outer.pop_back();
    ++frame.count;
}

} // namespace Pdf::Parser
