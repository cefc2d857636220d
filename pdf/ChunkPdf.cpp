#include "pdf/ChunkPdf.h"

#include <algorithm>
#include <limits>

#include "Torv/IO/IStream.h"
#include "Torv/Json/Object.h"
#include "Torv/Log/ILog.h"
#include "Torv/Variant.h"

namespace JobParser
{

ChunkPdf::ChunkPdf(UnserializationContext&, const Torv::Variant& dto) : pdf(dto["pdf"].toString()) {}

void ChunkPdf::save(JobFile&, Torv::IO::IStream& stream) const
{
    constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t written = 0; written < pdf.size(); written += most)
        stream.write(pdf.data() + written, static_cast<std::uint32_t>(std::min(most, pdf.size() - written)));
}

void ChunkPdf::dump(Torv::Log::ILog& log)
{
    log.write(Torv::Log::LevelDump, "PdfChunk", "", false, "", 0);
}

std::string ChunkPdf::toJson(SerializationContext&) const
{
    Torv::Json::Object dto;
    dto.add("pdf", pdf);
    return dto.take();
}

} // namespace JobParser
