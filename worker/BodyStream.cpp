#include "worker/BodyStream.h"

#include <exception>

#include "worker/BodyReader.h"

namespace JobParser::Worker
{
namespace
{

BodyReader& readerOf(const fz_stream* stream)
{
    return *static_cast<BodyReader*>(stream->state);
}

/// Moves the reader. False if the file cannot be read there.
bool moveTo(BodyReader& reader, std::int64_t position)
{
    try {
        if (reader.position() != position)
            reader.seek(position);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

int nextBytes(fz_context* context, fz_stream* stream, std::size_t)
{
    BodyReader& reader = readerOf(stream);
    if (!moveTo(reader, stream->pos))
        fz_throw(context, FZ_ERROR_GENERIC, "The job file cannot be read");
    const auto bytes = reader.window();
    if (bytes.empty())
        return EOF;
    // MuPDF reads through these pointers only.
    stream->rp = const_cast<unsigned char*>(bytes.data());
    stream->wp = stream->rp + bytes.size();
    stream->pos += static_cast<std::int64_t>(bytes.size());
    return *stream->rp++;
}

void seekTo(fz_context*, fz_stream* stream, std::int64_t offset, int whence)
{
    const BodyReader& reader = readerOf(stream);
    std::int64_t base = 0;
    if (whence == SEEK_CUR)
        base = stream->pos;
    else if (whence == SEEK_END)
        base = reader.size();
    const bool fits = offset >= -base && offset <= reader.size() - base;
    stream->pos = fits ? base + offset : (offset < 0 ? 0 : reader.size());
    stream->rp = stream->wp;
}

} // namespace

fz_stream* openBodyStream(fz_context* context, BodyReader& reader)
{
    fz_stream* stream = fz_new_stream(context, &reader, nextBytes, nullptr);
    stream->seek = seekTo;
    return stream;
}

} // namespace JobParser::Worker
