#include "JobParser/model/GlobalParser.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <variant>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/model/ChunkRawData.h"
#include "JobParser/model/ChunkUel.h"
#include "JobParser/xps/ChunkXps.h"
#include "JobParser/xps/XpsParser.h"
#include "pdf/ChunkPdfDocumentInfo.h"
#include "pdf/DocumentInfo.h"
#include "pdf/JobFileSource.h"
#include "pdf/Parser.h"
#include "pdf/RestrictedPdfNotAllowedException.h"

#include "Torv/BytePairs.h"

namespace JobParser::Global
{
namespace
{

struct Signature {
    std::string_view bytes;
    Pdl pdl;
};

using namespace std::string_view_literals;

// The first that fits decides. A JPEG counts only in its JFIF form.
constexpr std::array<Signature, 8> signatures{{
    {"%!PS"sv, Pdl::PostScript},
    {"%PDF-"sv, Pdl::Pdf},
    {"\xFF\xD8\xFF\xE0"sv, Pdl::Jpeg},
    {"!R!"sv, Pdl::Prescribe},
    {"\x1B"
     "E"sv,
     Pdl::Pcl5},
    {") HP-PCL XL;"sv, Pdl::PclXl},
    {"PK\x03\x04"sv, Pdl::Xps},
    {"UNIRAST"sv, Pdl::Urf},
}};

// All that can begin something where no language is active: a UEL, and a PRESCRIBE block.
constexpr std::array<Torv::BytePair, 2> rawStarts{{{0x1B, '%'}, {'!', 'R'}}};
// The same where no PRESCRIBE block can be.
constexpr std::array<Torv::BytePair, 2> uelStarts{{{0x1B, '%'}, {0x1B, '%'}}};

constexpr std::string_view pjlKeyword = "@PJL";
constexpr std::string_view pdfHeader = "%PDF-";

} // namespace

Parser::Parser(Job& theJob, JobFile& theFile, PaperSizeManager& papers)
    : BaseParser(theJob, theFile, papers), pjl(*this), prescribe(pjl), pcl5(prescribe),
      postScript{
          BaseParser(prescribe), &prescribe, &pjl, PostScript::PaperOrientationParser(prescribe), {}, {}, 0}
{
    file.setPos(0);
}

Pdl Parser::autoDetectPdl()
{
    for (const auto& [bytes, pdl] : signatures) {
        if (match(bytes, true, false))
            return pdl;
    }
    return Pdl::Unknown;
}

void Parser::rawMode(bool allowRestrictedPdf)
{
    std::int64_t start = file.m_offset;
    while (!file.atEnd()) {
        skipRawBytes();
        if (file.atEnd())
            break;
        const std::int64_t end = file.m_offset;
        if (matchUel()) {
            flushRawData(start, end);
            job.appendChunk(std::make_shared<ChunkUel>());
            if (match(pjlKeyword, true, true))
                parseBody(pjl.parse(), allowRestrictedPdf);
        } else if (prescribe.guessPrescribe()) {
            flushRawData(start, end);
            prescribe.parse();
        } else {
            file.getChar();
            continue;
        }
        start = file.m_offset;
    }
    flushRawData(start, file.m_offset);
}

// The bodies of other languages are left to the raw loop.
void Parser::parseBody(Pdl pdl, bool allowRestrictedPdf)
{
    switch (pdl) {
    case Pdl::Pcl5: return pcl5.parse(pdlJobInfo);
    case Pdl::PostScript: return postScript.parse(pdlJobInfo);
    case Pdl::Prescribe: return prescribe.parse();
    case Pdl::PclXl: return pcl6Mode();
    case Pdl::Pdf: return pdfMode(allowRestrictedPdf);
    case Pdl::Detect:
    case Pdl::Unknown:
    case Pdl::EscP:
    case Pdl::Jpeg:
    case Pdl::Xps:
    case Pdl::Urf: break;
    }
}

void Parser::jpegMode(bool allowRestrictedPdf)
{
    pdlJobInfo.setPageCount(0, 0, 1);
    rawMode(allowRestrictedPdf);
}

void Parser::xpsMode()
{
    const std::int64_t start = file.m_offset;
    pdlJobInfo = XpsParser(file).parse();
    job.appendChunk(std::make_shared<ChunkXps>(start, file.m_offset - start));
}

void Parser::pdfMode(bool allowRestrictedPdf)
{
    if (!match(pdfHeader, true, false))
        return;
    const std::int64_t start = file.m_offset;
    Pdf::Parser::JobFileSource source(file);
    const auto info = Pdf::Parser::Parser(source).parse(true);
    const auto& trailer = std::get<Pdf::Dictionary>(info->trailer);
    if (!allowRestrictedPdf && trailer.find("Encrypt") != nullptr)
        throw Pdf::Parser::RestrictedPdfNotAllowedException();
    // The byte that told where the PDF ends belongs to what follows.
    if (!file.atEnd())
        file.returnChar(1);
    job.appendChunk(std::make_shared<ChunkRawData>(start, file.m_offset - start));
    job.appendChunk(std::make_shared<ChunkPdfDocumentInfo>(info));
}

// Stops at the first byte from which on something may begin, which may be the last one of a view.
void Parser::skipRawBytes()
{
    while (!file.atEnd()) {
        auto bytes = file.window();
        const std::int64_t known = prescribe.noBlockBefore() - file.m_offset;
        if (known > 0)
            bytes = bytes.first(std::min(bytes.size(), static_cast<std::size_t>(known)));
        const std::size_t count = Torv::findPair(bytes, known > 0 ? uelStarts : rawStarts);
        if (count != 0)
            file.advancePos(static_cast<std::int64_t>(count));
        if (count != bytes.size())
            return;
    }
}

Pjl::PjlToken Parser::getRawToken()
{
    if (file.atEnd())
        return Pjl::PjlToken::EndOfFile;
    if (matchUel())
        return match(pjlKeyword, true, true) ? Pjl::PjlToken::UelPjl : Pjl::PjlToken::Uel;
    if (prescribe.guessPrescribe())
        return Pjl::PjlToken::Prescribe;
    file.getChar();
    return Pjl::PjlToken::Raw;
}

void Parser::flushRawData(std::int64_t start, std::int64_t end)
{
    if (start != end)
        job.appendChunk(std::make_shared<ChunkRawData>(start, end - start));
}

} // namespace JobParser::Global
