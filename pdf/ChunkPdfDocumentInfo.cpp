#include "pdf/ChunkPdfDocumentInfo.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "JobParser/JobParserException.h"
#include "pdf/DocumentInfo.h"
#include "pdf/Parser.h"
#include "pdf/StreamSource.h"
#include "pdf/Writer.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{
namespace
{

constexpr std::size_t longestInfo = 512UL * 1024 * 1024;

constexpr std::size_t usualObject = 192;

/// Writes the summary as the characters of a JSON string, an object at a time.
class InfoWriter
{
public:
    explicit InfoWriter(std::string& json) : m_json(json), m_start(json.size()) {}

    void write(const Pdf::Parser::DocumentInfo& document)
    {
        m_writer.write(document.catalog);
        pass();
        for (const auto* objects : {&document.pages, &document.embeddable}) {
            for (const auto& [reference, object] : *objects) {
                m_writer.write(object);
                pass();
            }
        }
        m_text += "trailer";
        m_writer.write(document.trailer);
        m_text += "startxref0\n";
        pass();
    }

private:
    // Objects end with a line end, so that no character goes over to the next one.
    void pass()
    {
        Torv::Json::appendCharacters(m_json, m_text);
        m_text.clear();
        // As it stands in JSON, where a control byte takes six characters.
        if (m_json.size() - m_start > longestInfo)
            throw JobParserException("The summary of the PDF is too long");
    }

    std::string& m_json;
    const std::size_t m_start; // Of the text in it.
    std::string m_text;
    Pdf::Writer m_writer{m_text};
};

void write(Torv::IO::IStream& stream, std::string_view text)
{
    constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
    for (; !text.empty(); text.remove_prefix(std::min(most, text.size())))
        stream.write(text.data(), static_cast<std::uint32_t>(std::min(most, text.size())));
}

} // namespace

ChunkPdfDocumentInfo::ChunkPdfDocumentInfo(UnserializationContext&, const Torv::Variant& dto)
{
    Torv::IO::StringStream stream;
    write(stream, dto["info"].toString());
    Pdf::Parser::StreamSource source(stream);
    if ((stream.capabilities() & Torv::IO::IStream::CanSeek) != 0)
        stream.seek(0, Torv::IO::IStream::FromStart);
    documentInfo = Pdf::Parser::Parser(source).parse(false);
}

void ChunkPdfDocumentInfo::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, "PdfChunkDocumentInfo", "", false, "", 0);
}

std::string ChunkPdfDocumentInfo::toJson(SerializationContext& context) const
{
    std::string json;
    appendJson(json, context);
    return json;
}

void ChunkPdfDocumentInfo::appendJson(std::string& json, SerializationContext&) const
{
    json.reserve(json.size() + usualObject * (documentInfo->pages.size() + 2));
    json += "{\"info\":\"";
    InfoWriter(json).write(*documentInfo);
    json += "\"}";
}

} // namespace JobParser
