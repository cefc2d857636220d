#include "JobParser/languages/Pcl5Parser.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/languages/ChunkPclEsc.h"
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

// Bytes of a token from which on asking ahead for what stands behind it gains more than it costs.
constexpr std::size_t farHop = 192;

// The sequences that say something about the job.
constexpr std::int32_t reset = 0x450000;              // ESC E
constexpr std::int32_t paperSize = 0x266C41;          // ESC & l # A
constexpr std::int32_t orientation = 0x266C4F;        // ESC & l # O
constexpr std::int32_t duplex = 0x266C53;             // ESC & l # S
constexpr std::int32_t copies = 0x266C58;             // ESC & l # X
constexpr std::int32_t textParsingMethods = 0x267450; // ESC & t # P

enum class Use { None, Fact, Chunk };

// A rewriter may want to touch what becomes a chunk, all of which belongs to the setup of the job.
Use useOf(std::int32_t opGroupParam)
{
    switch (opGroupParam) {
    case reset:
    case paperSize:
    case duplex:
    case copies: return Use::Chunk;
    case orientation:
    case textParsingMethods: return Use::Fact;
    default: return Use::None;
    }
}

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

bool isOpOfGroup(std::uint8_t byte)
{
    return byte >= 33 && byte <= 47;
}

bool isFinalOrGroup(std::uint8_t byte)
{
    return byte >= 48 && byte <= 126;
}

bool isNumberCharacter(std::uint8_t byte)
{
    return Torv::Ascii::isDigit(byte) || byte == '+' || byte == '-' || byte == '.';
}

bool isLastParam(std::uint8_t byte)
{
    return byte >= 64 && byte <= 95;
}

bool isCombiningParam(std::uint8_t byte)
{
    return byte >= 96 && byte <= 126;
}

// Asks the machine for the next 2 KiB, since it does not foresee where reading goes on behind a far hop. What
// lies before `asked` was asked for already. No result: g++ drops the calls of a function that asks and gives
// a number which nobody but it uses.
void askAhead(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t& asked)
{
    constexpr std::size_t wanted = 2048;
    constexpr std::size_t cacheLine = 64;

    const std::size_t end = std::min(at + wanted, bytes.size());
    for (asked = std::max(asked, at); asked < end; asked += cacheLine)
        __builtin_prefetch(bytes.data() + asked);
}

// The size of an escape token that says nothing and stands whole in these bytes, with its payload. 0 if it is
// not as simple as that, and for bytes that are no escape token.
std::size_t idleTokenSize(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t maxDigits = 9;
    constexpr int base = 10;

    if (bytes.size() < 3 || bytes[0] != escape)
        return 0;
    const std::uint8_t op = bytes[1];
    const std::uint8_t group = bytes[2];
    if (isFinalOrGroup(op))
        return useOf(op << 16) == Use::None ? 2 : 0;
    // A UEL is among these, since its third byte is no group.
    if (!isOpOfGroup(op) || !isFinalOrGroup(group))
        return 0;
    for (std::size_t at = 3; bytes.size() - at > maxDigits;) {
        int number = 0;
        for (const std::size_t end = at + maxDigits; at < end && Torv::Ascii::isDigit(bytes[at]); ++at)
            number = number * base + (bytes[at] - '0');
        const std::uint8_t param = bytes[at++];
        const bool isLast = isLastParam(param);
        if (!isLast && !isCombiningParam(param))
            return 0;
        const std::int32_t sequence = op << 16 | group << 8 | Torv::Ascii::toUpper(param);
        if (useOf(sequence) != Use::None)
            return 0;
        const auto payload = static_cast<std::size_t>(ChunkPclEsc::hasPayload(sequence) ? number : 0);
        if (isLast)
            return payload <= bytes.size() - at ? at + payload : 0;
        if (payload != 0)
            return 0;
    }
    return 0;
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
        skipIdleTokens();
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
        case Pcl5Token::Escape:
            if (m_hasFacts)
                takeEscapes(tokenStart, info);
            break;
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
    if (byte == escape) {
        isKept = false;
        m_hasFacts = false;
        readEscape([this](const ChunkPclEsc& sequence) {
            const Use use = useOf(sequence.opGroupParam);
            isKept |= use == Use::Chunk;
            m_hasFacts |= use != Use::None;
        });
        return Pcl5Token::Escape;
    }
    file.getChar();
    if (byte == formFeed)
        return Pcl5Token::FormFeed;
    if (isLeadByte(textParsingMethod, byte))
        file.getChar();
    return Pcl5Token::Text;
}

// Reads one token, through the states Op, Group and Value, and calls `visit` for each of its sequences.
template <typename Visit> void Parser::readEscape(const Visit& visit)
{
    file.getChar();
    ChunkPclEsc sequence;

    const std::uint8_t op = nextOfEscape();
    if (!isOpOfGroup(op) && !isFinalOrGroup(op))
        throw JobParserException(Torv::format("PCL: Invalid operation character 0x%x", op));
    sequence.opGroupParam = op << 16;
    if (isFinalOrGroup(op))
        return visit(sequence);

    const std::uint8_t group = nextOfEscape();
    if (!isFinalOrGroup(group))
        throw JobParserException(Torv::format("PCL: Invalid group character 0x%x", group));

    for (std::uint8_t param = 0; !isLastParam(param);) {
        sequence.value.fill('\0');
        param = readValue(sequence);
        if (param == escape && sequence.value[0] == '\0') {
            // Some drivers end a combined sequence with a lower-case letter and begin the next one at once.
            file.returnChar(1);
            return;
        }
        if (!isLastParam(param) && !isCombiningParam(param))
            throw JobParserException(Torv::format("PCL: Invalid param/value character '%c'", param));
        sequence.opGroupParam = op << 16 | group << 8 | Torv::Ascii::toUpper(param);
        sequence.process();
        if (sequence.binSize != 0)
            takePayload(sequence, param);
        visit(sequence);
    }
}

// Reads the value and gives the byte behind it.
std::uint8_t Parser::readValue(ChunkPclEsc& sequence)
{
    for (std::size_t length = 0;; ++length) {
        const std::uint8_t byte = nextOfEscape();
        if (!isNumberCharacter(byte))
            return byte;
        if (length == ChunkPclEsc::maxValueLength)
            throw JobParserException("PCL: ESC value too long");
        sequence.value[length] = static_cast<char>(byte);
    }
}

void Parser::takePayload(ChunkPclEsc& sequence, std::uint8_t param)
{
    if (!isLastParam(param))
        throw JobParserException("GetPclToken(): ESC with binary date not expected");
    sequence.binOffset = file.m_offset;
    if (!file.advancePos(sequence.binSize))
        throw JobParserException("GetPclToken(): Unexpected EOF");
}

std::uint8_t Parser::nextOfEscape()
{
    if (file.atEnd())
        throw JobParserException("GetPclToken(): Unexpected EOF");
    return file.getChar();
}

// Passes the escape tokens that change nothing in the record and in the chunks, which nearly all do: rows of
// pictures, and moves of the cursor.
void Parser::skipIdleTokens()
{
    const auto bytes = file.window();
    std::size_t at = 0;
    std::size_t asked = 0;
    for (;;) {
        const std::size_t size = idleTokenSize(bytes.subspan(at));
        if (size == 0)
            break;
        at += size;
        if (size >= farHop)
            askAhead(bytes, at, asked);
    }
    if (at != 0)
        file.advancePos(static_cast<std::int64_t>(at));
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

// Reads a token again that says something. It becomes chunks as a whole if one of its sequences is kept, and
// stays raw data otherwise.
void Parser::takeEscapes(std::int64_t tokenStart, JobInfo& info)
{
    if (isKept)
        flushRawData(tokenStart);
    file.setPos(tokenStart);
    readEscape([this, &info](const ChunkPclEsc& sequence) {
        processEsc(sequence, info);
        if (!isKept)
            return;
        job.appendChunk(std::make_shared<ChunkPclEsc>(sequence));
        if (m_firstPage && useOf(sequence.opGroupParam) == Use::Chunk)
            firstPageChunk = static_cast<std::int32_t>(job.chunks.size());
    });
    if (isKept)
        m_rawStart = file.m_offset;
}

void Parser::processEsc(const ChunkPclEsc& sequence, JobInfo& info)
{
    const auto number = [&] { return Torv::atoi(sequence.value.data()); };
    switch (sequence.opGroupParam) {
    case paperSize: info.setPaper(getPaper(number())); break;
    case orientation: info.setOrientation(static_cast<Orientation>(number())); break;
    case duplex: info.setDuplex(static_cast<Duplex>(number())); break;
    case copies: info.setCopiesMax(number()); break;
    case textParsingMethods: textParsingMethod = number(); break;
    default: break;
    }
}

void Parser::flushRawData(std::int64_t end)
{
    if (m_rawStart != end)
        job.appendChunk(std::make_shared<ChunkRawData>(m_rawStart, end - m_rawStart));
}

} // namespace JobParser::Pcl5
