#include "tools/ShowPage.h"

#include <array>
#include <charconv>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "JobParser/ChunkPlaces.h"
#include "JobParser/Job.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/model/Reflection.h"
#include "tools/RecordWords.h"
#include "tools/ShowPageParts.h"
#include "tools/StandardStreams.h"

#include "Torv/Json/Json.h"
#include "Torv/Log/ILog.h"

namespace JobParser::Tool
{
namespace
{

/// How chunks of a class are shown. The group names a colour of the page.
struct KindRow {
    std::string_view tag;
    std::string_view label;
    std::string_view group;
    std::string_view
        meaning; ///< Of those that do not say what they mean by their dump; empty for the others.
};

constexpr std::string_view bytesOfItsOwn = "bytes that come from metadata, not from the file";

constexpr std::array kindRows{
    KindRow{"UelE", "Universal exit", "exit", "leaves the language; PJL or the end of the job follows"},
    KindRow{"PjlCmdE", "PJL", "pjl", ""},
    KindRow{"PjlCmdBase64StringE", "PJL", "pjl", ""},
    KindRow{"RawDataE", "Data", "raw", "bytes that are kept as they are"},
    KindRow{"TextE", "Inserted text", "text", bytesOfItsOwn},
    KindRow{"FormFeedE", "Form feed", "page-mark", "a page ends"},
    KindRow{"FirstPageStartE", "First page", "page-mark", "the first page begins; no byte of the file"},
    KindRow{"PclEscE", "PCL sequence", "sequence", ""},
    KindRow{"PrescribeE", "PRESCRIBE block", "block", "commands from !R! to EXIT;"},
    KindRow{"PsCommentE", "PostScript comment", "comment", ""},
    KindRow{"PclXLOperatorE", "PCL XL operator", "operator", ""},
    KindRow{"PclXLAttributeE", "PCL XL attribute", "operator", ""},
    KindRow{"PclXLAttributeValueE", "PCL XL value", "operator", "a value of an attribute"},
    KindRow{"PclXLRawE", "PCL XL data", "raw", "bytes that are kept as they are"},
    KindRow{"PclXLRawWithDataE", "PCL XL data", "text", bytesOfItsOwn},
    KindRow{"PclXLEmbeddedDataE", "PCL XL embedded data", "text", bytesOfItsOwn},
    KindRow{"PclXLWatermarkE", "PCL XL watermark", "text", ""},
    KindRow{"XpsE", "XPS package", "document", "the whole package"},
    KindRow{"PdfE", "PDF", "text", bytesOfItsOwn},
    KindRow{"PdfDocumentInfoE", "PDF summary", "document", "catalog, pages and trailer; no byte of the file"},
    KindRow{"", "Nothing", "other", "null in metadata"},
};

/// Collects what a chunk says about itself, a line a message.
class LinesLog : public Torv::Log::ILog
{
public:
    explicit LinesLog(std::string& lines) : m_lines(lines) {}

    bool isEnabled(int level) const override { return level == Torv::Log::LevelDump; }
    void write(int level, const std::string& message, const std::string&, bool, const char*, int) override
    {
        if (isEnabled(level))
            m_lines.append(m_lines.empty() ? "" : "\n").append(message);
    }

private:
    std::string& m_lines;
};

void appendNumber(std::string& out, std::int64_t number)
{
    std::array<char, 20> digits{};
    out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

/// A less-than sign is the only character that could end the page's data, and in JSON it stands in strings
/// alone.
void appendText(std::string& out, std::string_view bytes)
{
    const std::size_t start = out.size();
    Torv::Json::appendString(out, bytes);
    for (std::size_t place = start; (place = out.find('<', place)) != std::string::npos;)
        out.replace(place, 1, "\\u003C");
}

/// Writes the page's data, an object of JSON, to a stream.
class Writer
{
public:
    Writer(const Job& job, const ShownFile& file, Torv::IO::IStream& stream)
        : m_job(job), m_file(file), m_stream(stream)
    {
    }

    void write()
    {
        writeFile();
        writeRecord();
        writeChunks();
        writeKinds();
        m_out += '}';
        flush();
    }

private:
    void writeFile();
    void writeRecord();
    void writeChunks();
    void writeChunk(IChunk* chunk, const ChunkPlace& place);
    void writeKinds();
    const std::string& wordsOf(IChunk& chunk);
    std::size_t kindOf(const IChunk* chunk);
    void flush();

    const Job& m_job;
    const ShownFile& m_file;
    Torv::IO::IStream& m_stream;
    std::string m_out;
    std::string m_words;
    LinesLog m_log{m_words};
    std::vector<KindRow> m_kinds; ///< Those that the job has, in the order in which they come.
    std::unordered_map<std::string_view, std::size_t> m_kindOfTag;
};

void Writer::writeFile()
{
    m_out += "{\"name\":";
    appendText(m_out, m_file.name);
    m_out += ",\"size\":";
    appendNumber(m_out, m_file.size);
    m_out.append(",\"parsed\":").append(m_file.cause.empty() ? "true" : "false").append(",\"cause\":");
    appendText(m_out, m_file.cause);
}

void Writer::writeRecord()
{
    m_out += ",\"record\":[";
    for (const RecordWord& word : recordWords(m_job.jobInfo)) {
        m_out += m_out.back() == '[' ? "[" : ",[";
        appendText(m_out, word.label);
        m_out += ',';
        if (word.text)
            appendText(m_out, *word.text);
        else
            m_out += "null";
        m_out += ']';
    }
    m_out += ']';
}

void Writer::writeChunks()
{
    constexpr std::size_t enough = 1 << 20;
    const std::vector<ChunkPlace> places = chunkPlaces(m_job, m_file.size);
    m_out += ",\"chunks\":[";
    for (std::size_t index = 0; index < places.size(); ++index) {
        m_out += index == 0 ? "[" : ",[";
        writeChunk(m_job.chunks[index].get(), places[index]);
        m_out += ']';
        if (m_out.size() > enough)
            flush();
    }
    m_out += ']';
}

void Writer::writeChunk(IChunk* chunk, const ChunkPlace& place)
{
    const std::size_t kind = kindOf(chunk);
    appendNumber(m_out, static_cast<std::int64_t>(kind));
    for (const std::int64_t number : {place.range.offset, place.range.size, chunk ? chunk->size() : 0}) {
        m_out += ',';
        appendNumber(m_out, number);
    }
    const bool saysMore = m_kinds[kind].meaning.empty();
    if (saysMore || !place.isExact)
        m_out += ',';
    if (saysMore) {
        appendText(m_out, wordsOf(*chunk));
    } else if (!place.isExact) {
        m_out += "\"\"";
    }
    if (!place.isExact)
        m_out += ",1";
}

/// The dump leaves out a PJL line that is no UTF-8.
const std::string& Writer::wordsOf(IChunk& chunk)
{
    m_words.clear();
    if (const auto* const command = dynamic_cast<const ChunkPjlCmd*>(&chunk)) {
        m_words.append("@PJL ").append(command->cmd).append(" ").append(command->param);
        return m_words;
    }
    chunk.dump(m_log);
    return m_words;
}

std::size_t Writer::kindOf(const IChunk* chunk)
{
    const std::string_view tag = chunk != nullptr ? std::string_view(Reflection::chunkClass(*chunk)) : "";
    const auto [found, isNew] = m_kindOfTag.emplace(tag, m_kinds.size());
    if (isNew) {
        KindRow kind{tag, tag, "other", ""};
        for (const KindRow& row : kindRows) {
            if (row.tag == tag)
                kind = row;
        }
        m_kinds.push_back(kind);
    }
    return found->second;
}

void Writer::writeKinds()
{
    m_out += ",\"kinds\":[";
    for (const KindRow& kind : m_kinds) {
        m_out += m_out.back() == '[' ? "[" : ",[";
        appendText(m_out, kind.tag);
        m_out += ',';
        appendText(m_out, kind.label);
        m_out += ',';
        appendText(m_out, kind.group);
        m_out += ',';
        appendText(m_out, kind.meaning);
        m_out += ']';
    }
    m_out += ']';
}

void Writer::flush()
{
    writeText(m_stream, m_out);
    m_out.clear();
}

} // namespace

void writeShowPage(const Job& job, const ShownFile& file, Torv::IO::IStream& stream)
{
    writeText(stream, showPageHead);
    Writer(job, file, stream).write();
    writeText(stream, showPageTail);
}

} // namespace JobParser::Tool
