#include <algorithm>

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/languages/PjlParser.h"

#include "Torv/EightBytes.h"
#include "Torv/Text.h"

namespace JobParser::Pjl
{
namespace
{

constexpr std::uint8_t tab = 9;
constexpr std::uint8_t lineFeed = 10;
constexpr std::uint8_t carriageReturn = 13;
constexpr std::uint8_t escape = 27;
constexpr std::uint8_t lastControl = 31;
constexpr std::uint8_t lineStart = '@';
constexpr std::size_t maxLine = 1024;

[[noreturn]] void rejectByte()
{
    throw JobParserException("GetPjlToken(): Unexpected character");
}

} // namespace

/// Places in a line. Seek is before its `@`; P, J and L are before these letters; Done and PclBody end it.
enum class Parser::LineState { Seek, P, J, L, Body, AfterCr, Done, PclBody };

PjlToken Parser::getPjlToken()
{
    skipLineFeeds();
    if (file.atEnd())
        return PjlToken::EndOfFile;
    if (matchUel())
        return match("@PJL", true, true) ? PjlToken::UelPjl : PjlToken::Uel;
    if (match("!R!", true, true))
        return PjlToken::Prescribe;
    readCommand();
    return PjlToken::Command;
}

void Parser::skipLineFeeds()
{
    while (!file.atEnd() && file.peekChar() == lineFeed)
        file.getChar();
}

void Parser::readCommand()
{
    m_text.clear();
    LineState state = LineState::Seek;
    while (state != LineState::Done && state != LineState::PclBody)
        state = accept(state);
    if (state == LineState::Done) {
        splitLine();
    } else {
        currentCmd.cmd = "ENTER";
        currentCmd.param = "LANGUAGE=PCL";
    }
}

Parser::LineState Parser::accept(LineState state)
{
    switch (state) {
    case LineState::Seek: return seekLine();
    case LineState::P: return expect('P', LineState::J);
    case LineState::J: return expect('J', LineState::L);
    case LineState::L: return expect('L', LineState::Body);
    case LineState::Body: takePlainText(); return acceptInBody(file.getChar());
    case LineState::AfterCr: return acceptAfterCr(file.getChar());
    case LineState::Done:
    case LineState::PclBody: break;
    }
    rejectByte();
}

Parser::LineState Parser::seekLine()
{
    // Whole bodies of unknown languages may stand between two lines, so they go by in bulk. An escape
    // sequence begins a PCL body that was not announced; it stays unread.
    while (!file.atEnd()) {
        const auto bytes = file.window();
        const auto hit = std::find_if(bytes.begin(), bytes.end(),
                                      [](std::uint8_t byte) { return byte == lineStart || byte == escape; });
        if (hit != bytes.begin())
            file.advancePos(hit - bytes.begin());
        else if (*hit == escape)
            return LineState::PclBody;
        else
            return expect('@', LineState::P);
    }
    rejectByte();
}

Parser::LineState Parser::expect(char byte, LineState next)
{
    if (file.atEnd() || file.getChar() != static_cast<std::uint8_t>(byte))
        rejectByte();
    return next;
}

// What of the body is neither its end nor unusual, as far as the view and the longest line reach.
void Parser::takePlainText()
{
    const auto window = file.window();
    const auto bytes = window.first(std::min(window.size(), maxLine - m_text.size()));
    const std::size_t size =
        Torv::EightBytes::countUnmarked(bytes.data(), bytes.size(), [](std::uint64_t word) {
            using namespace Torv::EightBytes;
            return markBelow(word, lastControl + 1) | markEqual(word, lineStart);
        });
    if (size == 0)
        return;
    m_text.append(reinterpret_cast<const char*>(bytes.data()), size);
    file.advancePos(static_cast<std::int64_t>(size));
}

Parser::LineState Parser::acceptInBody(std::uint8_t byte)
{
    if (byte == lineStart && match("PJL ", true, false)) {
        // The line has lost its end; the next one is still good.
        file.returnChar(1);
        return LineState::Done;
    }
    if (byte > lastControl || byte == tab)
        return appendToBody(byte);
    if (byte == carriageReturn)
        return LineState::AfterCr;
    if (byte == lineFeed)
        return LineState::Done;
    rejectByte();
}

Parser::LineState Parser::acceptAfterCr(std::uint8_t byte)
{
    if (byte != lineFeed)
        rejectByte();
    return LineState::Done;
}

Parser::LineState Parser::appendToBody(std::uint8_t byte)
{
    m_text += static_cast<char>(byte);
    if (m_text.size() > maxLine)
        throw JobParserException("GetPjlToken(): PJL command too long");
    return LineState::Body;
}

void Parser::splitLine()
{
    const std::string_view text = Torv::trim(m_text);
    const std::size_t separator = text.find_first_of(" =");
    currentCmd.cmd = text.substr(0, separator);
    if (separator == std::string_view::npos)
        currentCmd.param.clear();
    else
        currentCmd.param = Torv::trimLeft(text.substr(separator + 1));
}

} // namespace JobParser::Pjl
