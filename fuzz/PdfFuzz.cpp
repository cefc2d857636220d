// Any bytes are a PDF, bare and behind PJL, and the text of a summary as metadata hold it.

#include <memory>
#include <optional>
#include <string>

#include "FuzzSupport.h"
#include "JobCheck.h"
#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"
#include "PdfSummaryCheck.h"
#include "pdf/ChunkPdfDocumentInfo.h"
#include "pdf/DocumentInfo.h"
#include "pdf/JobFileSource.h"
#include "pdf/Parser.h"

#include "Torv/Json/Json.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/LogNull.h"

namespace
{

using JobParser::ChunkPdfDocumentInfo;

/// Hands out one byte at a time and shows none in advance.
class PlainSource final : public Pdf::Parser::ISource
{
public:
    explicit PlainSource(std::string_view bytes) : m_bytes(bytes) {}

    std::uint8_t next() override
    {
        if (m_position == m_bytes.size())
            throw EofException();
        return static_cast<std::uint8_t>(m_bytes[m_position++]);
    }

    void skip(unsigned long long count) override
    {
        if (count > m_bytes.size() - m_position)
            throw EofException();
        m_position += static_cast<std::size_t>(count);
    }

    std::size_t position() const { return m_position; }

private:
    std::string_view m_bytes;
    std::size_t m_position = 0;
};

std::string dtoOf(const ChunkPdfDocumentInfo& chunk)
{
    JobParser::SerializationContext context;
    return chunk.toJson(context);
}

// Empty if the summary cannot be written.
std::string textOf(const std::shared_ptr<Pdf::Parser::DocumentInfo>& info)
{
    std::string text;
    Fuzz::survives([&] { text = Torv::Json::parse(dtoOf(ChunkPdfDocumentInfo(info)))["info"].toString(); });
    return text;
}

struct Outcome {
    bool isRead = false;
    bool isReloadable = false;
    std::string text;
    std::size_t end = 0;

    bool operator==(const Outcome&) const = default;
};

bool readInto(Outcome& outcome, Pdf::Parser::ISource& source)
{
    return Fuzz::survives([&] {
        const auto info = Pdf::Parser::Parser(source).parse(true);
        outcome.text = textOf(info);
        outcome.isReloadable = Fuzz::isReloadable(*info);
    });
}

Outcome readPlainly(std::string_view bytes)
{
    PlainSource source(bytes);
    Outcome outcome;
    outcome.isRead = readInto(outcome, source);
    outcome.end = source.position();
    return outcome;
}

Outcome readFile(const std::string& bytes)
{
    const Fuzz::MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    Pdf::Parser::JobFileSource source(file);
    Outcome outcome;
    outcome.isRead = readInto(outcome, source);
    outcome.end = static_cast<std::size_t>(file.m_offset);
    return outcome;
}

std::optional<std::string> reload(const std::string& text)
{
    std::optional<std::string> again;
    Fuzz::survives([&] {
        Torv::Json::Object dto;
        dto.add("info", text);
        JobParser::UnserializationContext context;
        again = textOf(ChunkPdfDocumentInfo(context, Torv::Json::parse(dto.str())).documentInfo);
    });
    return again;
}

void checkJob(const std::string& bytes)
{
    const Fuzz::MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    for (const bool allowRestrictedPdf : {true, false}) {
        Fuzz::survives([&] {
            const auto result = parser.parse(file, {JobParser::Pdl::Detect, true, allowRestrictedPdf});
            Fuzz::checkSaved(*result->job, file, bytes);
        });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string bytes(Fuzz::asText({data, size}));
    const Outcome outcome = readPlainly(bytes);
    Fuzz::require(readFile(bytes) == outcome, "a PDF is read through windows as it is byte by byte");
    if (outcome.isReloadable)
        Fuzz::require(reload(outcome.text) == outcome.text, "a summary reloads to the same text");
    reload(bytes);

    checkJob("%PDF-" + bytes);
    checkJob("\x1B%-12345X@PJL ENTER LANGUAGE=PDF\r\n%PDF-" + bytes + "\x1B%-12345X");
    return 0;
}
