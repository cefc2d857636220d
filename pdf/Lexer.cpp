#include "pdf/Lexer.h"

#include <algorithm>
#include <array>
#include <span>

#include "pdf/EndOfStreamMatcher.h"
#include "pdf/Numbers.h"

#include "Torv/Ascii.h"
#include "Torv/BytePairs.h"
#include "Torv/Format.h"

namespace Pdf::Parser
{
namespace
{

constexpr std::array<Torv::BytePair, 2> wordStarts{{{'e', 'n'}, {'e', 'n'}}};

bool isLineEnd(std::uint8_t byte)
{
    return byte == '\r' || byte == '\n';
}

unsigned hexadecimalDigit(std::uint8_t byte)
{
    if (Torv::Ascii::isDigit(byte))
        return byte - '0';
    const std::uint8_t letter = Torv::Ascii::toLower(byte);
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10U : 0;
}

} // namespace

void Lexer::sync()
{
    const auto count = static_cast<std::uint64_t>(m_at - m_begin);
    m_readBefore += count;
    m_begin = m_at = m_end = nullptr;
    if (count != 0)
        source.skip(count);
}

// Whether the source has a window for the bytes behind those that were read.
bool Lexer::adoptWindow()
{
    sync();
    const auto window = source.window();
    m_begin = m_at = window.data();
    m_end = m_begin + window.size();
    return !window.empty();
}

std::uint8_t Lexer::nextFromSource()
{
    if (adoptWindow())
        return current = *m_at++;
    current = source.next();
    ++m_readBefore;
    return current;
}

bool Lexer::tryNextFromSource()
{
    try {
        nextFromSource();
        return true;
    } catch (const ISource::EofException&) {
        return false;
    }
}

void Lexer::skip(std::uint64_t count)
{
    if (count == 0)
        return;
    pass(count - 1);
    next();
}

void Lexer::pass(std::uint64_t count)
{
    if (count <= static_cast<std::uint64_t>(m_end - m_at)) {
        m_at += count;
        return;
    }
    sync();
    source.skip(count);
    m_readBefore += count;
}

// Passes over bytes of the window. The last of them is `current`, where the source may end behind it.
void Lexer::passTo(const std::uint8_t* end)
{
    if (end == m_at)
        return;
    current = end[-1];
    m_at = end;
}

bool Lexer::skipWhiteSpace()
{
    do {
        if (current == '%' && !skipComment())
            return false;
        if (!tryNext())
            return false;
    } while (isWsCharacter[current]);
    return true;
}

// A comment ends at either line end. What it ended at needs no second look: it is white space.
bool Lexer::skipComment()
{
    for (;;) {
        const std::uint8_t* const lineEnd = std::find_if(m_at, m_end, isLineEnd);
        passTo(lineEnd);
        if (!tryNext())
            return false;
        if (isLineEnd(current))
            return true;
    }
}

bool Lexer::isMatchByByte(std::string_view bytes)
{
    for (const char byte : bytes) {
        if (current != static_cast<std::uint8_t>(byte))
            return false;
        next();
    }
    return true;
}

PdfParserException Lexer::expected(std::string_view what) const
{
    const auto offset = static_cast<unsigned long long>(position());
    return PdfParserException(Torv::format("%s expected at 0x%llx!", std::string(what).c_str(), offset));
}

void Lexer::findNoBacktracking(std::string_view bytes)
{
    for (std::size_t cursor = 0; cursor < bytes.size();) {
        const std::uint8_t byte = current;
        next();
        cursor = byte == static_cast<std::uint8_t>(bytes[cursor]) ? cursor + 1 : 0;
    }
}

void Lexer::findEndOfStream()
{
    EndOfStreamMatcher matcher;
    while (!matcher.accept(current)) {
        if (matcher.isIdle())
            passUntilWord();
        next();
    }
}

// Goes to the next place in the window where a match may begin, which is an `en` whose `e` was not taken by
// an `e` before it: of a row of them, every second one goes by with the first.
void Lexer::passUntilWord()
{
    while (m_at != m_end) {
        const std::span<const std::uint8_t> bytes(m_at, m_end);
        const std::size_t hit = Torv::findPair(bytes, wordStarts);
        if (hit == bytes.size()) {
            m_at = m_end;
            return;
        }
        std::size_t row = hit;
        while (row > 0 && bytes[row - 1] == 'e')
            --row;
        if ((hit - row) % 2 == 0) {
            m_at += hit;
            return;
        }
        m_at += hit + 1;
    }
}

std::uint32_t Lexer::readInteger()
{
    if (!Torv::Ascii::isDigit(current))
        throw expected("Integer");
    std::uint32_t number = 0;
    do {
        number = number * 10 + (current - '0');
        next();
    } while (Torv::Ascii::isDigit(current));
    return number;
}

Reference Lexer::readReference()
{
    Reference reference;
    reference.number = readInteger();
    ws();
    reference.generation = readInteger();
    return reference;
}

void Lexer::readName(std::string& bytes)
{
    while (isNameCharacter[current]) {
        if (current == '#') {
            const unsigned high = hexadecimalDigit(next());
            bytes += static_cast<char>(high * 16 + hexadecimalDigit(next()));
        } else {
            bytes += static_cast<char>(current);
            const std::uint8_t* const end = std::find_if(
                m_at, m_end, [](std::uint8_t byte) { return !isNameCharacter[byte] || byte == '#'; });
            bytes.append(m_at, end);
            m_at = end;
        }
        next();
    }
}

void Lexer::readBytes(std::string& bytes, std::uint64_t count)
{
    while (count > 0) {
        bytes += static_cast<char>(current);
        const std::uint64_t more = std::min(count - 1, static_cast<std::uint64_t>(m_end - m_at));
        bytes.append(m_at, m_at + more);
        passTo(m_at + more);
        count -= more + 1;
        next();
    }
}

void Lexer::readLine(std::string& bytes)
{
    do {
        bytes += static_cast<char>(current);
        const std::uint8_t* const lineEnd = std::find(m_at, m_end, '\n');
        bytes.append(m_at, lineEnd);
        passTo(lineEnd);
        next();
    } while (current != '\n');
}

} // namespace Pdf::Parser
