// The persistence of Job: its metadata text, and the way back.

#include <algorithm>
#include <limits>

#include "JobParser/Job.h"
#include "JobParser/model/SerializationContext.h"
#include "JobParser/model/UnserializationContext.h"

#include "Torv/Data/FileReader.h"
#include "Torv/Format.h"
#include "Torv/GenericException.h"
#include "Torv/IO/IStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Variant.h"
#include "Torv/VariantInvalidOperationException.h"
#include "Torv/VariantIterator.h"

namespace JobParser
{
namespace
{

constexpr std::string_view metadataSuffix = ".meta.json";
// Bytes that a chunk's text seldom exceeds, so that the text of a long list grows without being moved.
constexpr std::size_t usualChunkText = 96;
// Bytes that are written at once. They stay in the processor's cache from the first to the last piece.
constexpr std::size_t pieceSize = 64 * 1024;

/// Appends the text to `text`, and calls `pass` behind each chunk, which may take away what is there.
template <typename Pass> void appendMetadata(const Job& job, std::string& text, Pass pass)
{
    SerializationContext context;
    text += "{\"jobInfo\":" + job.jobInfo.toJsonFull() + ",\"chunks\":[";
    bool isFirst = true;
    for (const auto& chunk : job.chunks) {
        if (!isFirst)
            text += ',';
        isFirst = false;
        context.appendListed(text, chunk);
        pass();
    }
    text += "]}";
}

void writePiece(Torv::IO::IStream& stream, const std::string& piece)
{
    constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t written = 0; written < piece.size(); written += most)
        stream.write(piece.data() + written,
                     static_cast<std::uint32_t>(std::min(most, piece.size() - written)));
}

} // namespace

Job::Job(const Torv::Variant& metadata)
{
    fillFrom(metadata);
}

Job::Job(const std::string& path)
{
    const std::string metadataPath = getMedataFile(path);
    try {
        fillFrom(Torv::Json::parse(Torv::Data::FileReader::load(metadataPath)));
    } catch (const std::exception& error) {
        throw Torv::GenericException(Torv::format("Error while reading job metadata. | path=%s | error=%s",
                                                  metadataPath.c_str(), error.what()));
    }
}

std::string Job::toJson() const
{
    std::string text;
    text.reserve(chunks.size() * usualChunkText);
    appendMetadata(*this, text, [] {});
    return text;
}

void Job::writeMetadata(Torv::IO::IStream& stream) const
{
    std::string piece;
    piece.reserve(pieceSize + usualChunkText);
    appendMetadata(*this, piece, [&] {
        if (piece.size() < pieceSize)
            return;
        writePiece(stream, piece);
        piece.clear();
    });
    writePiece(stream, piece);
}

void Job::fillFrom(const Torv::Variant& metadata)
{
    jobInfo = JobInfo(metadata["jobInfo"]);
    const Torv::Variant list = metadata["chunks"];
    if (!list.isArray())
        throw Torv::VariantInvalidOperationException("The value of the key chunks is no array");
    UnserializationContext context(list.size());
    chunks.reserve(chunks.size() + list.size());
    for (Torv::VariantIterator it = list.begin(), end = list.end(); !(it == end); ++it)
        chunks.push_back(context.unserializeChunk(it.value()));
}

std::string Job::getMedataFile(const std::string& path)
{
    const std::size_t found = path.rfind(metadataSuffix);
    // Where the suffix does not occur the place is -1, so that a path of nine bytes stays as it is. Hosts
    // have stored files by this rule.
    const std::int64_t place = found == std::string::npos ? -1 : static_cast<std::int64_t>(found);
    const auto behind = place + static_cast<std::int64_t>(metadataSuffix.size());
    return behind == static_cast<std::int64_t>(path.size()) ? path : path + std::string(metadataSuffix);
}

} // namespace JobParser
