#include "JobParser/languages/PrescribeParser.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/languages/PjlParser.h"
#include "JobParser/paper/PaperSizeManager.h"

#include "Torv/Ascii.h"
#include "Torv/BytePairs.h"
#include "Torv/Number.h"

namespace JobParser::Prescribe
{
namespace
{

constexpr std::string_view blockStart = "!R!";
constexpr std::string_view blockEnd = "EXIT;";
constexpr std::int64_t shortestBlock = 8;
// Where `EXIT;` may begin, counted from the `!`, for the bytes to be taken for a block.
constexpr std::int64_t firstExit = 3;
constexpr std::int64_t lastExit = 99;

// How far a guess that failed looks ahead for the next `EXIT;`, so that a file full of `!R!` is not searched
// again for each of them.
constexpr std::int64_t lookAhead = 65536;

// Of four letters.
constexpr std::uint32_t nameOf(std::string_view letters)
{
    std::uint32_t name = 0;
    for (const char letter : letters)
        name = (name << 8) | static_cast<unsigned char>(letter);
    return name;
}

struct PaperCode {
    int code;
    Paper paper;
};

constexpr std::array<PaperCode, 8> paperCodes{{
    {6, PaperLetter},
    {7, PaperLegal},
    {8, PaperA4},
    {10, PaperA3},
    {11, PaperB4},
    {12, PaperLedger},
    {13, PaperA5},
    {18, PaperB5},
}};

Paper paperOfCode(int code)
{
    const auto found = std::ranges::find(paperCodes, code, &PaperCode::code);
    return found == paperCodes.end() ? PaperOther : found->paper;
}

bool isBlank(std::uint8_t byte)
{
    return byte == ' ' || byte == '\r' || byte == '\n';
}

enum class State { Start, Name, Separator, Plain, Quoted, AfterQuote };

} // namespace

Parser::Parser(Pjl::Parser& pjlParser) : BaseParser(pjlParser), pjl(&pjlParser)
{
    jobInfo.reset(JobInfo::AllFlags);
}

bool Parser::guessPrescribe()
{
    if (file.atEnd() || file.peekChar() != '!' || file.m_realDataSize - file.m_offset < shortestBlock)
        return false;
    const std::int64_t first = file.m_offset + firstExit;
    const std::int64_t last = file.m_offset + lastExit;
    const bool isKnown = first >= m_noExitFrom && last < m_noExitBefore;
    return !isKnown && match(blockStart, true, false) && findExit(first, last);
}

std::int64_t Parser::noBlockBefore() const
{
    const std::int64_t position = file.m_offset;
    if (position + firstExit < m_noExitFrom)
        return position;
    return std::max(position, m_noExitBefore - lastExit);
}

// Looks for the first `EXIT;` from `first` on, further than this guess needs, for the sake of those to come.
bool Parser::findExit(std::int64_t first, std::int64_t last)
{
    // Whatever the case of its letters, an `EXIT;` ends in one of these.
    static constexpr std::array<Torv::BytePair, 2> ends{{{'T', ';'}, {'t', ';'}}};
    constexpr std::int64_t endPlace = 3;

    const std::int64_t position = file.m_offset;
    const std::int64_t limit = first + lookAhead;
    file.advancePos(first + endPlace - position);
    bool found = false;
    while (!found) {
        skipTo(ends, limit);
        if (file.atEnd() || file.m_offset >= limit)
            break;
        file.returnChar(endPlace);
        found = match(blockEnd, true, true);
        if (!found)
            file.advancePos(endPlace + 1);
    }
    m_noExitFrom = first;
    if (found)
        m_noExitBefore = file.m_offset;
    else
        m_noExitBefore = file.atEnd() ? std::numeric_limits<std::int64_t>::max() : file.m_offset - endPlace;
    file.returnChar(file.m_offset - position);
    return found && m_noExitBefore <= last;
}

// Stops where one of the pairs may begin, at the limit and at the end of the data.
void Parser::skipTo(const std::array<Torv::BytePair, 2>& pairs, std::int64_t limit)
{
    while (!file.atEnd() && file.m_offset < limit) {
        const auto window = file.window();
        const auto bytes =
            window.first(std::min(window.size(), static_cast<std::size_t>(limit - file.m_offset)));
        const std::size_t count = Torv::findPair(bytes, pairs);
        if (count != 0)
            file.advancePos(static_cast<std::int64_t>(count));
        if (count != bytes.size())
            return;
    }
}

void Parser::parse()
{
    const std::int64_t start = file.m_offset;
    file.advancePos(static_cast<std::int64_t>(blockStart.size()));
    const auto atEnd = [this] { return file.atEnd(); };
    const auto next = [this] { return file.getChar(); };
    const auto back = [this](std::int64_t count) { file.returnChar(count); };
    Chunks chunks;
    while (processToken(getToken(atEnd, next, back), start, chunks, jobInfo)) {
    }
    job.appendChunks(chunks);
}

std::vector<std::shared_ptr<IChunk>> Parser::getChunks(const std::string& text)
{
    std::size_t index = blockStart.size();
    const auto atEnd = [&] { return index >= text.size(); };
    const auto next = [&] { return static_cast<std::uint8_t>(text[index++]); };
    const auto back = [&](std::int64_t count) { index -= static_cast<std::size_t>(count); };
    Chunks chunks;
    while (processToken(getToken(atEnd, next, back), 0, chunks, jobInfo)) {
    }
    return chunks;
}

template <typename AtEnd, typename Next, typename Back>
Parser::ETokens Parser::getToken(const AtEnd& atEnd, const Next& next, const Back& back)
{
    if (atEnd())
        return ETokens::EndOfSource;
    cmd.clear();
    std::uint8_t quote = 0;
    for (State state = State::Start;;) {
        if (atEnd())
            throw JobParserException("GetPrescribeToken(): Unexpected EOF");
        const std::uint8_t byte = next();
        switch (state) {
        case State::Start:
            if (!isBlank(byte)) {
                back(1);
                state = State::Name;
            }
            break;
        case State::Name:
            if (Torv::Ascii::isLetter(byte)) {
                cmd.addCmdChar(Torv::Ascii::toUpper(byte));
            } else {
                back(1);
                state = State::Separator;
            }
            break;
        case State::Separator:
            if (byte == ';')
                return ETokens::Command;
            if (byte == '"' || byte == '\'') {
                cmd.startParam();
                quote = byte;
                state = State::Quoted;
            } else if (!isBlank(byte)) {
                back(1);
                cmd.startParam();
                state = State::Plain;
            }
            break;
        case State::Plain:
            if (byte != ',' && byte != ';') {
                cmd.addData(byte);
                break;
            }
            cmd.finishParam();
            if (byte == ';')
                return ETokens::Command;
            state = State::Separator;
            break;
        case State::Quoted:
            if (byte != quote) {
                cmd.addData(byte);
                break;
            }
            cmd.finishParam();
            state = State::AfterQuote;
            break;
        case State::AfterQuote:
            if (byte == ';')
                return ETokens::Command;
            if (byte == ',')
                state = State::Separator;
            break;
        }
    }
}

bool Parser::processToken(ETokens token, std::int64_t start, Chunks& chunks, JobInfo& info)
{
    if (token == ETokens::EndOfSource || cmd.name == nameOf("EXIT")) {
        info.setOriginalBrand(Zem::Printer::OriginalBrand::KxDriver);
        chunks.push_back(std::make_shared<ChunkPrescribe>(start, file.m_offset - start));
        return false;
    }
    if (cmd.m_paramCount == 0)
        return true;
    switch (cmd.name) {
    case nameOf("CMNT"): kxDrvComment(cmd, info); break;
    case nameOf("COPY"): info.setCopies(cmd.getParamInt(0)); break;
    case nameOf("DUPX"): info.setDuplex(static_cast<Duplex>(cmd.getParamInt(0))); break;
    case nameOf("SPSZ"): info.setPaper(paperOfCode(cmd.getParamInt(0))); break;
    default: break;
    }
    return true;
}

void Parser::kxDrvComment(const PrescribeCmd& comment, JobInfo& info)
{
    constexpr std::string_view paperKey = "PaperSize=";
    constexpr std::string_view colorKey = "Color=";
    constexpr std::string_view monoKey = "Mono=";
    constexpr std::string_view pageKey = "Page=";

    const std::string_view text = comment.getParamString(0);
    if (text.starts_with(paperKey)) {
        if (text.size() > paperKey.size())
            info.setPaper(paperList.paperById(std::string(text.substr(paperKey.size())), true));
    } else if (text.starts_with(colorKey)) {
        if (comment.m_paramCount != 2)
            return;
        const std::string_view second = comment.getParamString(1);
        if (!second.starts_with(monoKey))
            return;
        const int copies = pjl->jobInfo.copies;
        if (copies == 0)
            throw JobParserException("KX Driver: cannot set the page count, because PJL copy count is zero");
        info.setPageCount(Torv::atoi(second.substr(monoKey.size())) / copies, 0,
                          Torv::atoi(text.substr(colorKey.size())) / copies);
        kxPageCountSet = true;
    } else if (!kxPageCountSet && text.starts_with(pageKey)) {
        if (text.size() > pageKey.size() && text[pageKey.size()] == '1')
            info.incColorCount();
        else
            info.incMonoCount();
    }
}

} // namespace JobParser::Prescribe
