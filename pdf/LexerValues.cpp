// Reads values. What is nested waits on a stack of its own, so that the depth is the file's to choose; each
// container is in one of the steps below. The end of the source never ends a value in an exception: whatever
// was being read at that moment is given back as far as it came.

#include <array>
#include <span>
#include <variant>

#include "pdf/Lexer.h"
#include "pdf/Numbers.h"

#include "Torv/Ascii.h"

namespace Pdf::Parser
{
namespace
{

using Kind = Token::Kind;

constexpr double wholeNumberTolerance = 0.000001;

bool isWholeNumber(double number)
{
    return !(number < 0) && number - toUnsigned32(number) < wholeNumberTolerance;
}

Token numberToken(double number)
{
    Token token;
    token.kind = Kind::Number;
    token.real = number;
    return token;
}

Token scalarToken(Kind kind)
{
    Token token;
    token.kind = kind;
    return token;
}

} // namespace

// At the end of the source the byte that would have been read counts as a NUL, which begins and ends nothing.
bool Lexer::nextOrZero()
{
    if (tryNext())
        return true;
    current = 0;
    return false;
}

Token Lexer::readNumber(bool allowReference)
{
    const bool hasSign = current == '-' || current == '+';
    const bool isNegative = current == '-';
    if (hasSign && !nextOrZero())
        return {};

    double value = 0;
    double divisor = 0;
    if (Torv::Ascii::isDigit(current) || current == '.') {
        bool hasDigits = false;
        do {
            if (current == '.') {
                divisor = 1;
            } else {
                value = value * 10 + (current - '0');
                divisor *= 10;
                hasDigits = true;
            }
            if (!nextOrZero() && !hasDigits)
                return {};
        } while (Torv::Ascii::isDigit(current) || current == '.');
    } else if (!hasSign) {
        return {};
    }

    if (allowReference && !isNegative && divisor == 0) {
        ws();
        if (Torv::Ascii::isDigit(current))
            return readReferenceTo(value);
    }
    const double number = divisor == 0 ? value : value / divisor;
    return numberToken(isNegative ? -number : number);
}

Token Lexer::readReferenceTo(double value)
{
    const double second = readNumber(false).real;
    ws();
    Token token;
    token.number = toUnsigned32(value);
    if (current == 'R' && isWholeNumber(second)) {
        nextOrZero();
        token.kind = Kind::Reference;
        token.at = toUnsigned32(second);
    } else {
        token.kind = Kind::FalseReference;
        token.real = second;
    }
    return token;
}

void Lexer::readValue(ValueTape& tape)
{
    if (scanValue(tape))
        return;
    tape.clear();
    m_frames.clear();
    for (Step step = Step::Value; step != Step::Done;) {
        try {
            while (step != Step::Done)
                step = take(step, tape);
        } catch (const ISource::EofException&) {
            current = 0;
            step = cut(step, tape);
        }
    }
    tape.finish();
}

// Reads the value where it stands in the window, if it is a usual one that ends there.
bool Lexer::scanValue(ValueTape& tape)
{
    m_usualValue = {};
    if (m_at == m_begin || m_at[-1] != current)
        return false;
    const std::uint8_t* const begin = m_at - 1;
    const std::uint8_t* const behind = m_scanner.scan(begin, m_end, tape);
    if (behind == nullptr)
        return false;
    m_usualValue = {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(behind - begin)};
    current = *behind;
    m_at = behind + 1;
    return true;
}

Lexer::Step Lexer::take(Step step, ValueTape& tape)
{
    switch (step) {
    case Step::Value: return takeValue(tape);
    case Step::BeginArray: next(); return Step::Element;
    case Step::Element: ws(); return Step::Value;
    case Step::Delivered: return deliver(tape);
    case Step::EndArray: return takeEndOfArray(tape);
    case Step::BeginDictionary: next(); return Step::Key;
    case Step::Key: return takeKey(tape);
    case Step::EndDictionary: return takeEndOfDictionary(tape);
    case Step::Done: break;
    }
    return Step::Done;
}

// What the end of the source leaves of a value: nothing of a scalar, and all that is complete of a container.
Lexer::Step Lexer::cut(Step step, ValueTape& tape)
{
    if (step != Step::Value)
        return close(tape);
    tape.add({});
    return Step::Delivered;
}

Lexer::Step Lexer::takeValue(ValueTape& tape)
{
    switch (current) {
    case '(': takeString(tape); break;
    case '/': takeName(tape); break;
    case '<': return takeAngleBracket(tape);
    case '[': return open(tape, Kind::OpenArray);
    case 't': takeKeyword(tape, "true", Kind::True); break;
    case 'f': takeKeyword(tape, "false", Kind::False); break;
    case 'n': takeKeyword(tape, "null", Kind::Null); break;
    default: tape.add(readNumber(true)); break;
    }
    return Step::Delivered;
}

Lexer::Step Lexer::takeAngleBracket(ValueTape& tape)
{
    if (next() == '<')
        return open(tape, Kind::OpenDictionary);
    const std::size_t start = tape.bytes().size();
    // The first byte goes in unseen, so that an empty string runs on to the next bracket.
    do
        tape.bytes() += static_cast<char>(current);
    while (next() != '>');
    tape.addText(Kind::HexString, start, tape.bytes().size() - start);
    nextOrZero();
    return Step::Delivered;
}

void Lexer::takeName(ValueTape& tape)
{
    const std::size_t start = tape.bytes().size();
    next();
    readName(tape.bytes());
    tape.addText(Kind::Name, start, tape.bytes().size() - start);
}

void Lexer::takeString(ValueTape& tape)
{
    std::string& bytes = tape.bytes();
    const std::size_t start = bytes.size();
    for (std::uint64_t depth = 1; depth > 0;) {
        bytes += static_cast<char>(next());
        if (current == '\\')
            bytes += static_cast<char>(next());
        else if (current == '(')
            ++depth;
        else if (current == ')')
            --depth;
    }
    bytes.pop_back();
    tape.addText(Kind::String, start, bytes.size() - start);
    nextOrZero();
}

void Lexer::takeKeyword(ValueTape& tape, std::string_view keyword, Kind kind)
{
    match(keyword);
    tape.add(scalarToken(kind));
}

Lexer::Step Lexer::open(ValueTape& tape, Kind kind)
{
    const bool isArray = kind == Kind::OpenArray;
    m_frames.push_back({tape.open(kind), isArray, 0});
    return isArray ? Step::BeginArray : Step::BeginDictionary;
}

Lexer::Step Lexer::close(ValueTape& tape)
{
    tape.close(m_frames.back().open, m_frames.back().count);
    m_frames.pop_back();
    return Step::Delivered;
}

// A value is complete and stands last on the tape.
Lexer::Step Lexer::deliver(ValueTape& tape)
{
    if (m_frames.empty())
        return Step::Done;
    if (m_frames.back().isArray)
        return deliverElement(tape);
    ++m_frames.back().count;
    return Step::Key;
}

Lexer::Step Lexer::deliverElement(ValueTape& tape)
{
    const Token token = tape[tape.size() - 1];
    if (token.kind == Kind::None) {
        tape.removeLast(1);
        if (current != 'R')
            return Step::EndArray;
        joinReference(tape);
        next();
    } else if (token.kind == Kind::FalseReference) {
        tape.removeLast(1);
        tape.addNumber(token.number);
        tape.addNumber(token.real);
        m_frames.back().count += 2;
    } else {
        ++m_frames.back().count;
    }
    return Step::Element;
}

// The two numbers went into the array because a third had stood in front of them.
void Lexer::joinReference(ValueTape& tape)
{
    Frame& array = m_frames.back();
    if (array.count < 2 || tape[tape.size() - 1].kind != Kind::Number ||
        tape[tape.size() - 2].kind != Kind::Number)
        throw std::bad_variant_access();
    Token reference;
    reference.kind = Kind::Reference;
    reference.number = toUnsigned32(tape[tape.size() - 2].real);
    reference.at = toUnsigned32(tape[tape.size() - 1].real);
    tape.removeLast(2);
    tape.add(reference);
    --array.count;
}

Lexer::Step Lexer::takeEndOfArray(ValueTape& tape)
{
    ws();
    if (current != ']')
        throw expected("Array closing ']'");
    nextOrZero();
    return close(tape);
}

Lexer::Step Lexer::takeKey(ValueTape& tape)
{
    ws();
    if (current != '/')
        return Step::EndDictionary;
    next();
    const std::size_t start = tape.bytes().size();
    readName(tape.bytes());
    tape.addText(Kind::Key, start, tape.bytes().size() - start);
    ws();
    return Step::Value;
}

Lexer::Step Lexer::takeEndOfDictionary(ValueTape& tape)
{
    constexpr std::string_view closing = "Dictionary closing '>>'";

    ws();
    if (current != '>' || next() != '>')
        throw expected(closing);
    nextOrZero();
    return close(tape);
}

} // namespace Pdf::Parser
