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

void requireShort(const std::string& info)
{
    if (info.size() > longestInfo)
        throw JobParserException("The summary of the PDF is too long");
}

std::string infoText(const Pdf::Parser::DocumentInfo& document)
{
    constexpr std::size_t usualObject = 192;
    std::string info;
    info.reserve(usualObject * (document.pages.size() + 2));
    Pdf::Writer writer(info);
    writer.write(document.catalog);
    for (const auto* objects : {&document.pages, &document.embeddable}) {
        for (const auto& [reference, object] : *objects) {
            writer.write(object);
            requireShort(info);
        }
    }
    info += "trailer";
    writer.write(document.trailer);
    info += "startxref0\n";
    requireShort(info);
    return info;
}

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

std::string ChunkPdfDocumentInfo::toJson(SerializationContext&) const
{
    const std::string info = infoText(*documentInfo);
    std::string json = "{\"info\":";
    // Room for the line ends, which become two characters each.
    json.reserve(info.size() + info.size() / 8);
    Torv::Json::appendString(json, info);
    json += '}';
    return json;
}

} // namespace JobParser
