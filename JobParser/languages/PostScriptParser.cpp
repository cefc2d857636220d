// A token is a line, and only its first bytes decide what it is. So while no feature is open, lines go by in
// bulk: what is looked for is a line end with a byte behind it that can begin something. The functions named
// as places in a line are the states of the machine that reads the other tokens; each reads on until the next
// state is known, and ends with it.

#include "JobParser/languages/PostScriptParser.h"

#include <algorithm>
#include <array>
#include <memory>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/languages/ChunkPsComment.h"
#include "JobParser/languages/PjlParser.h"
#include "JobParser/languages/PostScriptFeatureText.h"
#include "JobParser/languages/PrescribeParser.h"
#include "JobParser/model/ChunkRawData.h"

#include "Torv/Ascii.h"
#include "Torv/BytePairs.h"
#include "Torv/EightBytes.h"
#include "Torv/Text.h"

namespace JobParser::PostScript
{
namespace
{

constexpr std::uint8_t binaryStart = 1;
constexpr std::uint8_t endOfTransmission = 4;
constexpr std::uint8_t escape = 0x1B;
constexpr std::uint8_t firstPrintable = 32;

constexpr std::array<std::uint8_t, 2> lineEnds{'\n', '\r'};

// All that can begin another token than a plain line, and what stands before it.
constexpr Torv::NibbleSet tokenStarts{'%', escape, binaryStart, endOfTransmission};
constexpr Torv::NibbleSet lineEndSet{'\n', '\r'};

// Bytes of a comment, without its line ends and with them.
constexpr std::size_t longestComment = 255;
constexpr std::size_t longestCommentLine = 257;

constexpr std::string_view prescribeComment = "%%!R! ";
constexpr std::string_view prescribeStart = "!R! ";

// A body beyond this is reduced to what can matter of it.
constexpr std::size_t mostFeatureText = 65536;

bool isLineEnd(std::uint8_t byte)
{
    return byte == '\n' || byte == '\r';
}

// Whether another token than a plain line may begin with these bytes. Most that begin like one are told from
// it by the second byte.
bool mayBeginToken(std::span<const std::uint8_t> bytes)
{
    if (bytes.empty() || !tokenStarts.contains(bytes[0]))
        return false;
    if (bytes.size() == 1)
        return true;
    if (bytes[0] == '%' || bytes[0] == escape)
        return bytes[1] == '%';
    return tokenStarts.contains(bytes[1]) || bytes[1] == 'M';
}

// How many bytes from the first on can stand in the text of a comment.
std::size_t countText(std::span<const std::uint8_t> bytes)
{
    return Torv::EightBytes::countUnmarked(bytes.data(), bytes.size(), [](std::uint64_t word) {
        return Torv::EightBytes::markBelow(word, firstPrintable);
    });
}

[[noreturn]] void failAtEnd()
{
    throw JobParserException("GetPSToken(): Unexpected end of file");
}

enum class Match { AnyCase, Exact };

/// What a feature does, by what stands behind `%%BeginFeature: `. The effect is given that text.
struct Feature {
    std::string_view prefix;
    Match match;
    void (*effect)(Parser& parser, std::string_view text, JobInfo& info);
};

template <FeatureKind kind> void collectBody(Parser& parser, std::string_view, JobInfo&)
{
    parser.featureKind = kind;
}

void setOneSided(Parser&, std::string_view, JobInfo& info)
{
    info.setDuplex(Duplex::OneSided);
}

void setDuplexByTumble(Parser&, std::string_view text, JobInfo& info)
{
    info.setDuplex(Torv::icontains(text, "duplexnotumble") ? Duplex::LongEdge : Duplex::ShortEdge);
}

void setDuplexByEdge(Parser&, std::string_view text, JobInfo& info)
{
    info.setDuplex(Torv::icontains(text, "shortedge") ? Duplex::ShortEdge : Duplex::LongEdge);
}

void setPunchByUnit(Parser& parser, std::string_view text, JobInfo& info)
{
    if (Torv::icontains(text, "none"))
        info.setPunching(Punch::None, true);
    else
        info.setPunching(Torv::icontains(text, "main") ? Punch::DriverDefault : Punch::UnknownKind, true);
    parser.featureKind = PunchFeature;
}

void setStapleByWord(Parser&, std::string_view text, JobInfo& info)
{
    info.setStapling(Torv::icontains(text, "off") ? Staple::None : Staple::UnknownPosition, true);
}

void setPunchByWord(Parser&, std::string_view text, JobInfo& info)
{
    info.setPunching(Torv::icontains(text, "off") ? Punch::None : Punch::UnknownKind, true);
}

// The first that fits acts, so that the special case stands before the general one.
constexpr std::array<Feature, 12> features{{
    {"*duplex none", Match::AnyCase, setOneSided},
    {"*efduplex false", Match::AnyCase, setOneSided},
    {"*duplex ", Match::AnyCase, setDuplexByTumble},
    {"*efduplex ", Match::AnyCase, setDuplexByTumble},
    {"duplex ", Match::AnyCase, setDuplexByEdge},
    {"*pagesize ", Match::AnyCase, collectBody<PageSizeFeature>},
    {"*staple ", Match::AnyCase, collectBody<StapleFeature>},
    {"*punch ", Match::AnyCase, setPunchByUnit},
    {"*StapleLocation ", Match::Exact, collectBody<HpStapleFeature>},
    {"*Punching ", Match::Exact, collectBody<HpPunchFeature>},
    {"staple ", Match::AnyCase, setStapleByWord},
    {"punch ", Match::AnyCase, setPunchByWord},
}};

bool fits(const Feature& feature, std::string_view text)
{
    return feature.match == Match::Exact ? text.starts_with(feature.prefix)
                                         : Torv::istartsWith(text, feature.prefix);
}

} // namespace

void Parser::parse(JobInfo& info)
{
    std::int64_t rawStart = file.m_offset;
    for (;;) {
        if (featureKind == NoFeature)
            skipLines();
        const std::int64_t tokenStart = file.m_offset;
        switch (getPsToken()) {
        case PsToken::Line:
        case PsToken::Control: break;
        case PsToken::Comment:
            flushRawData(rawStart, tokenStart);
            job.appendChunk(std::make_shared<ChunkPsComment>(comment));
            rawStart = file.m_offset;
            parseComment(info);
            break;
        case PsToken::Prescribe:
            flushRawData(rawStart, file.m_offset);
            prescribe->parse();
            rawStart = file.m_offset;
            break;
        case PsToken::Uel:
        case PsToken::EndOfFile:
            flushRawData(rawStart, tokenStart);
            orientationParser.parse(info);
            return;
        }
    }
}

// From the start of one token to the start of another, passing nothing that is not part of a plain line.
void Parser::skipLines()
{
    bool isStart = true;
    while (!file.atEnd()) {
        const auto bytes = file.window();
        std::size_t at = 0;
        while (at < bytes.size()) {
            const auto rest = bytes.subspan(at);
            if (isStart && mayBeginToken(rest)) {
                if (at != 0)
                    file.advancePos(static_cast<std::int64_t>(at));
                return;
            }
            const std::size_t found = Torv::findPairOfSets(rest, lineEndSet, tokenStarts);
            isStart = found != rest.size();
            at += isStart ? found + 1 : found;
        }
        file.advancePos(static_cast<std::int64_t>(at));
    }
    if (!isStart)
        failAtEnd();
}

PsToken Parser::getPsToken()
{
    if (file.atEnd())
        return PsToken::EndOfFile;
    if (matchUel()) {
        file.returnChar(static_cast<std::int64_t>(uel.size()));
        return PsToken::Uel;
    }
    if (takeComment())
        return PsToken::Comment;
    const std::uint8_t byte = file.getChar();
    switch (byte) {
    case binaryStart: return control();
    case endOfTransmission: return PsToken::Control;
    case '\r':
    case '\n': return lineEnd();
    case '%':
        comment.reserve(longestCommentLine + 1);
        comment = '%';
        return percent();
    default: toFeature(static_cast<char>(byte)); return skip();
    }
}

// Nearly all comments lie in the view as a whole, with another byte behind their line ends, and are taken at
// once. False, with nothing taken, for all else.
bool Parser::takeComment()
{
    const auto bytes = file.window();
    if (bytes.size() < 3 || bytes[0] != '%' || bytes[1] != '%' || bytes[2] == '!')
        return false;
    const std::size_t textEnd = countText(bytes.first(std::min(bytes.size(), longestComment)));
    std::size_t end = textEnd;
    while (end < bytes.size() && isLineEnd(bytes[end]))
        ++end;
    if (end == textEnd || end > longestCommentLine || end == bytes.size())
        return false;
    comment.assign(reinterpret_cast<const char*>(bytes.data()), end);
    file.advancePos(static_cast<std::int64_t>(end));
    return true;
}

// Behind a byte 1.
PsToken Parser::control()
{
    if (!file.atEnd() && file.peekChar() == 'M')
        file.getChar();
    return PsToken::Control;
}

// Behind a `%` at the start of a line.
PsToken Parser::percent()
{
    if (file.atEnd())
        failAtEnd();
    const std::uint8_t byte = file.getChar();
    if (isLineEnd(byte))
        return lineEnd();
    if (byte == '%') {
        comment += '%';
        return commentBody();
    }
    toFeature(static_cast<char>(byte));
    return skip();
}

// Behind `%%`. What breaks a comment makes it a plain line, of which it is the first byte that is seen.
PsToken Parser::commentBody()
{
    for (;;) {
        const std::size_t space = takeCommentText();
        if (comment.size() > 2 && comment[2] == prescribeComment[2] &&
            comment.starts_with(prescribeComment)) {
            file.returnChar(
                static_cast<std::int64_t>(comment.size() - prescribeComment.size() + prescribeStart.size()));
            comment = prescribeComment;
            return PsToken::Prescribe;
        }
        if (file.atEnd())
            failAtEnd();
        const std::uint8_t byte = file.peekChar();
        if (isLineEnd(byte))
            return commentEnd();
        if (byte >= firstPrintable && space != 0)
            continue;
        file.getChar();
        toFeature(static_cast<char>(byte));
        return skip();
    }
}

// Takes what the view holds of the text, and gives how much more may come.
std::size_t Parser::takeCommentText()
{
    const auto window = file.window();
    const auto bytes = window.first(std::min(window.size(), longestComment - comment.size()));
    const std::size_t size = countText(bytes);
    comment.append(reinterpret_cast<const char*>(bytes.data()), size);
    if (size != 0)
        file.advancePos(static_cast<std::int64_t>(size));
    return longestComment - comment.size();
}

// The line ends behind a comment belong to it, unless they are too many.
PsToken Parser::commentEnd()
{
    while (!file.atEnd() && isLineEnd(file.peekChar())) {
        const std::uint8_t byte = file.getChar();
        if (comment.size() == longestCommentLine)
            return lineEnd();
        comment += static_cast<char>(byte);
    }
    return PsToken::Comment;
}

// Inside a line that means nothing but to a feature.
PsToken Parser::skip()
{
    while (!file.atEnd()) {
        const auto bytes = file.window();
        const std::size_t size = Torv::findByteOrPair(bytes, lineEnds, {'\n', '\n'});
        const std::size_t taken = std::min(size + 1, bytes.size());
        collect(bytes.first(taken));
        file.advancePos(static_cast<std::int64_t>(taken));
        if (size != bytes.size())
            return lineEnd();
    }
    failAtEnd();
}

// Behind the first byte of a line end.
PsToken Parser::lineEnd()
{
    while (!file.atEnd() && isLineEnd(file.peekChar()))
        file.getChar();
    return PsToken::Line;
}

void Parser::parseComment(JobInfo& info)
{
    constexpr std::string_view featureEnd = "%%EndFeature";
    constexpr std::string_view featureStart = "%%BeginFeature: ";

    // The first letter of the keyword tells most comments from the two.
    const std::uint8_t letter = comment.size() > 2 ? static_cast<std::uint8_t>(comment[2]) : std::uint8_t{0};
    if (Torv::Ascii::toLower(letter) != 'e' && Torv::Ascii::toLower(letter) != 'b')
        return;
    if (Torv::istartsWith(comment, featureEnd))
        endFeature(info);
    else if (Torv::istartsWith(comment, featureStart))
        beginFeature(std::string_view(comment).substr(featureStart.size()), info);
}

void Parser::beginFeature(std::string_view text, JobInfo& info)
{
    const auto found = std::ranges::find_if(features, [&](const Feature& row) { return fits(row, text); });
    if (found != features.end())
        found->effect(*this, text, info);
}

void Parser::endFeature(JobInfo& info)
{
    featureText = std::string(Torv::trim(featureText));
    if (!featureText.empty())
        parseFeatureDefinition(info);
    featureText.clear();
    featureKind = NoFeature;
}

void Parser::toFeature(char character)
{
    const auto byte = static_cast<std::uint8_t>(character);
    collect({&byte, 1});
}

void Parser::collect(std::span<const std::uint8_t> bytes)
{
    if (featureKind == NoFeature)
        return;
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), mostFeatureText));
        featureText.append(reinterpret_cast<const char*>(part.data()), part.size());
        bytes = bytes.subspan(part.size());
        if (featureText.size() > mostFeatureText)
            FeatureText::shorten(featureText);
    }
}

void Parser::parseFeatureDefinition(JobInfo& info)
{
    switch (featureKind) {
    case HpPunchFeature: pjl->parseHpPunching(FeatureText::mediaProcessingOption(featureText)); break;
    case HpStapleFeature: pjl->parseHpStapling(FeatureText::mediaProcessingOption(featureText)); break;
    case StapleFeature: parseStapleFeatureDefinition(info); break;
    default: break;
    }
}

void Parser::parseStapleFeatureDefinition(JobInfo& info)
{
    // The positions of this form, which counts the first two the other way round.
    constexpr std::array staples{Staple::None, Staple::RightTop, Staple::LeftTop, Staple::Two};

    const bool isStapled = FeatureText::staple(featureText) == 3;
    const auto position = static_cast<std::size_t>(FeatureText::staplePosition(featureText));
    info.setStapling(isStapled ? staples[position] : Staple::None, true);
}

void Parser::flushRawData(std::int64_t start, std::int64_t end)
{
    if (start != end)
        job.appendChunk(std::make_shared<ChunkRawData>(start, end - start));
}

} // namespace JobParser::PostScript
