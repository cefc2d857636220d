#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "pdf/ISource.h"
#include "pdf/Reference.h"
#include "pdf/ValueScanner.h"
#include "pdf/ValueTape.h"
#include "pdf/WhiteSpace.h"

namespace Pdf::Parser
{

/// Reads PDF syntax strictly forwards, with one byte of look-ahead, `current`.
///
/// Bytes are taken out of the source's window wherever there is one, so that the source stays behind what was
/// read until sync() accounts for it.
class Lexer
{
public:
    explicit Lexer(ISource& theSource) : source(theSource) {}

    /// Reads one byte. Throws ISource::EofException at the end, with nothing changed.
    std::uint8_t next();
    /// The same, but false at the end.
    bool tryNext();
    /// Moves by `count` bytes, of which the last one becomes `current`. Nothing for 0.
    void skip(std::uint64_t count);
    /// Says that a skip by about `count` bytes will follow soon. The memory there is fetched meanwhile.
    void expectSkip(std::uint64_t count) const
    {
        constexpr std::uint64_t cacheLine = 64;
        const auto left = static_cast<std::uint64_t>(m_end - m_at);
        const std::uint64_t end = count < left ? std::min(left, count + 3 * cacheLine) : 0;
        for (std::uint64_t ahead = count; ahead < end; ahead += cacheLine)
            __builtin_prefetch(m_at + ahead);
    }
    /// Passes over bytes that nobody looks at; `current` is not valid until the next read.
    void pass(std::uint64_t count);

    /// Goes to the next byte that is no white space. False at the end of the source, with `current` on the
    /// last byte of it.
    bool ws() { return !isWsCharacter[current] || skipWhiteSpace(); }
    /// Whether the bytes from `current` on are these. Those that are go by, even if later ones are not.
    bool isMatch(std::string_view bytes) { return isMatchInWindow(bytes) || isMatchByByte(bytes); }
    /// Throws expected(bytes) unless isMatch.
    void match(std::string_view bytes)
    {
        if (!isMatch(bytes))
            throw expected(bytes);
    }
    PdfParserException expected(std::string_view what) const;
    void findNoBacktracking(std::string_view bytes);
    /// Goes to the white space behind the next `endstream`.
    void findEndOfStream();

    std::uint32_t readInteger();
    Reference readReference();
    /// Reads a name behind its solidus and appends its bytes.
    void readName(std::string& bytes);
    /// Reads a number, a reference or two numbers that might have been one, or None if there is no number.
    Token readNumber(bool allowReference);
    /// Reads any value onto the tape. Its texts may be gone as soon as anything else is read.
    void readValue(ValueTape& tape);
    /// The bytes of the last value, if it was a usual one that stands in the window; otherwise empty. Valid
    /// until anything else is read.
    std::string_view usualValue() const { return m_usualValue; }
    /// Appends `count` bytes from `current` on, and goes behind them.
    void readBytes(std::string& bytes, std::uint64_t count);
    /// Appends the bytes from `current` on up to a line feed, which becomes `current`.
    void readLine(std::string& bytes);

    /// Moves the source behind what was read.
    void sync();

    /// Of `current` in the source; -1, all bits set, before the first read.
    std::uint64_t position() const { return m_readBefore + static_cast<std::uint64_t>(m_at - m_begin) - 1; }

    std::uint8_t current = 0;
    ISource& source;

private:
    /// What is to be read next.
    enum class Step {
        Value,
        Delivered,
        BeginArray,
        Element,
        EndArray,
        BeginDictionary,
        Key,
        EndDictionary,
        Done
    };

    bool isMatchInWindow(std::string_view bytes);
    bool isMatchByByte(std::string_view bytes);
    std::uint8_t nextFromSource();
    bool tryNextFromSource();
    bool adoptWindow();
    bool nextOrZero();
    void passTo(const std::uint8_t* end);
    bool skipWhiteSpace();
    bool skipComment();
    bool scanValue(ValueTape& tape);
    void passUntilWord();

    Token readReferenceTo(double value);
    Step take(Step step, ValueTape& tape);
    Step cut(Step step, ValueTape& tape);
    Step takeValue(ValueTape& tape);
    Step takeAngleBracket(ValueTape& tape);
    void takeName(ValueTape& tape);
    void takeString(ValueTape& tape);
    void takeKeyword(ValueTape& tape, std::string_view keyword, Token::Kind kind);
    Step takeEndOfArray(ValueTape& tape);
    Step takeKey(ValueTape& tape);
    Step takeEndOfDictionary(ValueTape& tape);
    Step open(ValueTape& tape, Token::Kind kind);
    Step close(ValueTape& tape);
    Step deliver(ValueTape& tape);
    Step deliverElement(ValueTape& tape);
    void joinReference(ValueTape& tape);

    std::uint64_t m_readBefore = 0; // Bytes in front of m_begin.
    const std::uint8_t* m_begin = nullptr;
    const std::uint8_t* m_at = nullptr;
    const std::uint8_t* m_end = nullptr;

    /// A container that is not closed yet: its opening token, and how many values it has.
    struct Frame {
        std::size_t open;
        bool isArray;
        std::uint64_t count;
    };
    std::vector<Frame> m_frames;
    ValueScanner m_scanner;
    std::string_view m_usualValue;
};

inline std::uint8_t Lexer::next()
{
    if (m_at == m_end) [[unlikely]]
        return nextFromSource();
    return current = *m_at++;
}

// Most texts are known to the compiler, which then compares them without a call.
inline bool Lexer::isMatchInWindow(std::string_view bytes)
{
    if (m_at == m_begin || m_at[-1] != current || static_cast<std::size_t>(m_end - m_at) < bytes.size() ||
        std::memcmp(m_at - 1, bytes.data(), bytes.size()) != 0)
        return false;
    m_at += bytes.size();
    current = m_at[-1];
    return true;
}

inline bool Lexer::tryNext()
{
    if (m_at == m_end) [[unlikely]]
        return tryNextFromSource();
    current = *m_at++;
    return true;
}

} // namespace Pdf::Parser
