#include "JobParser/languages/Pcl5Parser.h"

#include <algorithm>
#include <array>
#include <memory>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/languages/PrescribeParser.h"
#include "JobParser/model/ChunkFormFeed.h"
#include "JobParser/model/ChunkRawData.h"

#include "Torv/Ascii.h"
#include "Torv/BytePairs.h"
#include "Torv/Format.h"
#include "Torv/Number.h"

namespace JobParser::Pcl5
{
namespace
{

constexpr std::uint8_t escape = 0x1B;
constexpr std::uint8_t formFeed = 12;

// Bytes of a payload from which on asking ahead for what stands behind it gains more than it costs.
constexpr std::int64_t farHop = 192;

struct PaperCode {
    int code;
    Paper paper;
};

constexpr std::array<PaperCode, 14> paperCodes{{
    {2, PaperLetter},
    {3, PaperLegal},
    {4, PaperFolio},
    {6, PaperLedger},
    {12, PaperB5},
    {13, PaperA5},
    {15, PaperStatement},
    {25, PaperA5},
    {26, PaperA4},
    {27, PaperA3},
    {45, PaperB5},
    {46, PaperB4},
    {100, PaperB5},
    {139, PaperStatement},
}};

Paper getPaper(int code)
{
    const auto found = std::ranges::find(paperCodes, code, &PaperCode::code);
    return found == paperCodes.end() ? PaperOther : found->paper;
}

// The text parsing methods with characters of two bytes; all others have one byte a character.
bool isLeadByte(std::int32_t textParsingMethod, std::uint8_t byte)
{
    switch (textParsingMethod) {
    case 21: return byte >= 33;
    case 31: return byte >= 0x81 && byte <= 0x9F;
    case 38: return byte >= 0x80;
    default: return false;
    }
}

bool hasTwoByteText(std::int32_t textParsingMethod)
{
    return textParsingMethod == 21 || textParsingMethod == 31 || textParsingMethod == 38;
}

bool isFinalOrGroup(std::uint8_t byte)
{
    return byte >= 48 && byte <= 126;
}

bool isNumberCharacter(std::uint8_t byte)
{
    return Torv::Ascii::isDigit(byte) || byte == '+' || byte == '-' || byte == '.';
}

} // namespace

Parser::Parser(Prescribe::Parser& prescribeParser) : BaseParser(prescribeParser), prescribe(&prescribeParser)
{
}

void Parser::parse(JobInfo& info)
{
    firstPageChunk = 0;
    m_firstPage = true;
    m_rawStart = file.m_offset;
    for (;;) {
        const std::int64_t tokenStart = file.m_offset;
        switch (getToken()) {
        case Pcl5Token::Text: skipText(); break;
        case Pcl5Token::Uel:
        case Pcl5Token::EndOfFile: flushRawData(tokenStart); return;
        case Pcl5Token::Prescribe:
            flushRawData(tokenStart);
            prescribe->parse();
            m_rawStart = file.m_offset;
            break;
        case Pcl5Token::FormFeed:
            flushRawData(tokenStart);
            job.appendChunk(std::make_shared<ChunkFormFeed>());
            m_firstPage = false;
            m_rawStart = file.m_offset;
            break;
        case Pcl5Token::Escape: takeEscapes(tokenStart, info); break;
        }
    }
}

Pcl5Token Parser::getToken()
{
    if (file.atEnd())
        return Pcl5Token::EndOfFile;
    const std::uint8_t byte = file.peekChar();
    if (byte == escape && matchUel()) {
        file.returnChar(static_cast<std::int64_t>(uel.size()));
        return Pcl5Token::Uel;
    }
    if (byte == '!' && prescribe->guessPrescribe())
        return Pcl5Token::Prescribe;
    escapes.clear();
    file.getChar();
    if (byte == formFeed)
        return Pcl5Token::FormFeed;
    if (byte == escape) {
        readEscape();
        return Pcl5Token::Escape;
    }
    if (isLeadByte(textParsingMethod, byte))
        file.getChar();
    return Pcl5Token::Text;
}

void Parser::readEscape()
{
    escapes.emplace_back();
    for (State state = State::Op; state != State::Done;) {
        if (file.atEnd())
            throw JobParserException("GetPclToken(): Unexpected EOF");
        state = accept(state, file.getChar());
    }
}

Parser::State Parser::accept(State state, std::uint8_t byte)
{
    switch (state) {
    case State::Op: return takeOp(byte);
    case State::Group: return takeGroup(byte);
    case State::Value: return takeValue(byte);
    case State::Done: break;
    }
    return State::Done;
}

Parser::State Parser::takeOp(std::uint8_t byte)
{
    if (byte < 33 || byte > 126)
        throw JobParserException(Torv::format("PCL: Invalid operation character 0x%x", byte));
    escapes.back().opGroupParam = byte << 16;
    return isFinalOrGroup(byte) ? State::Done : State::Group;
}

Parser::State Parser::takeGroup(std::uint8_t byte)
{
    if (!isFinalOrGroup(byte))
        throw JobParserException(Torv::format("PCL: Invalid group character 0x%x", byte));
    escapes.back().opGroupParam |= byte << 8;
    m_valueLength = 0;
    return State::Value;
}

Parser::State Parser::takeValue(std::uint8_t byte)
{
    if (isNumberCharacter(byte)) {
        if (m_valueLength == ChunkPclEsc::maxValueLength)
            throw JobParserException("PCL: ESC value too long");
        escapes.back().value[static_cast<std::size_t>(m_valueLength++)] = static_cast<char>(byte);
        return State::Value;
    }
    if (byte >= 96 && byte <= 126)
        return endCombinedSequence(byte);
    if (byte >= 64 && byte <= 95)
        return endSequence(byte);
    if (byte == escape && m_valueLength == 0) {
        // Some drivers end a combined sequence with a lower-case letter and begin the next one at once.
        escapes.pop_back();
        file.returnChar(1);
        return State::Done;
    }
    throw JobParserException(Torv::format("PCL: Invalid param/value character '%c'", byte));
}

// Ends one sequence of a combined one; the next one has the same op and group.
Parser::State Parser::endCombinedSequence(std::uint8_t byte)
{
    ChunkPclEsc& sequence = escapes.back();
    const std::int32_t opGroup = sequence.opGroupParam;
    sequence.opGroupParam |= Torv::Ascii::toUpper(byte);
    sequence.process();
    if (sequence.binSize != 0)
        throw JobParserException("GetPclToken(): ESC with binary date not expected");
    escapes.emplace_back().opGroupParam = opGroup;
    m_valueLength = 0;
    return State::Value;
}

Parser::State Parser::endSequence(std::uint8_t byte)
{
    ChunkPclEsc& sequence = escapes.back();
    sequence.opGroupParam |= byte;
    sequence.process();
    if (sequence.binSize != 0) {
        sequence.binOffset = file.m_offset;
        if (!file.advancePos(sequence.binSize))
            throw JobParserException("GetPclToken(): Unexpected EOF");
        if (sequence.binSize >= farHop)
            file.prefetch();
    }
    return State::Done;
}

// Passes the text that cannot begin anything. Text of two-byte characters is left to the tokens.
void Parser::skipText()
{
    static constexpr std::array<std::uint8_t, 2> singles{escape, formFeed};
    static constexpr Torv::BytePair blockStart{'!', 'R'};
    static constexpr Torv::BytePair nothingElse{escape, escape};

    if (hasTwoByteText(textParsingMethod))
        return;
    while (!file.atEnd()) {
        auto bytes = file.window();
        const std::int64_t known = prescribe->noBlockBefore() - file.m_offset;
        if (known > 0)
            bytes = bytes.first(std::min(bytes.size(), static_cast<std::size_t>(known)));
        const std::size_t count = Torv::findByteOrPair(bytes, singles, known > 0 ? nothingElse : blockStart);
        if (count != 0)
            file.advancePos(static_cast<std::int64_t>(count));
        if (count != bytes.size())
            return;
    }
}

// A token becomes chunks as a whole if one of its sequences is kept, and stays raw data otherwise.
void Parser::takeEscapes(std::int64_t tokenStart, JobInfo& info)
{
    bool kept = false;
    std::size_t behindSetup = 0;
    for (std::size_t index = 0; index < escapes.size(); ++index) {
        if (!processEsc(escapes[index], info))
            continue;
        kept = true;
        if (m_firstPage)
            behindSetup = index + 1;
    }
    if (!kept)
        return;
    flushRawData(tokenStart);
    for (const ChunkPclEsc& sequence : escapes)
        job.appendChunk(std::make_shared<ChunkPclEsc>(sequence));
    if (behindSetup != 0)
        firstPageChunk = static_cast<std::int32_t>(job.chunks.size() - (escapes.size() - behindSetup));
    m_rawStart = file.m_offset;
}

bool Parser::processEsc(const ChunkPclEsc& sequence, JobInfo& info)
{
    const auto number = [&] { return Torv::atoi(sequence.value.data()); };
    switch (sequence.opGroupParam) {
    case 0x266C41: // ESC & l # A, paper
        info.setPaper(getPaper(number()));
        return true;
    case 0x266C4F: // ESC & l # O, orientation
        info.setOrientation(static_cast<Orientation>(number()));
        return false;
    case 0x266C53: // ESC & l # S, duplex
        info.setDuplex(static_cast<Duplex>(number()));
        return true;
    case 0x266C58: // ESC & l # X, copies
        info.setCopiesMax(number());
        return true;
    case 0x267450: // ESC & t # P, text parsing method
        textParsingMethod = number();
        return false;
    case 0x450000: // ESC E, reset
        return true;
    default: return false;
    }
}

void Parser::flushRawData(std::int64_t end)
{
    if (m_rawStart != end)
        job.appendChunk(std::make_shared<ChunkRawData>(m_rawStart, end - m_rawStart));
}

} // namespace JobParser::Pcl5
