#include "pdf/ObjectStream.h"

#include <algorithm>
#include <limits>

#include "pdf/Lexer.h"
#include "pdf/StreamDecompressionException.h"

namespace Pdf::Parser
{
namespace
{

// A table of objects and the objects themselves inflate to some ten times their size at most. Many small
// values could otherwise take many thousand times what they take in the file.
constexpr std::uint64_t alwaysInflated = 8 * 1024 * 1024;
constexpr std::uint64_t mostInflatedPerByte = 16;

// How often compressed bytes of a known count are read. Each time all of them are inflated, so that a small
// count would make the work grow with the square of the file.
constexpr int mostFills = 16;

[[noreturn]] void throwError(int code, const z_stream& inflater)
{
    throw StreamDecompressionException(code, inflater.msg != nullptr ? inflater.msg : "");
}

} // namespace

ObjectStream::ObjectStream(Lexer& fileLexer, std::optional<std::uint64_t> compressedSize,
                           std::uint64_t& inflatedOfFile)
    : m_lexer(fileLexer), m_compressedSize(compressedSize), m_inflatedOfFile(inflatedOfFile),
      m_outputCursor(m_output.data()),
      m_source([this] { return next(); }, [this](unsigned long long count) { skip(count); })
{
    m_inflater.next_out = m_output.data();
    m_inflater.avail_out = outputSize;
    fillInput();
    const int code = inflateInit(&m_inflater);
    if (code != Z_OK)
        throwError(code, m_inflater);
}

ObjectStream::~ObjectStream()
{
    finish();
}

void ObjectStream::finish()
{
    if (!m_isFinished)
        inflateEnd(&m_inflater);
    m_isFinished = true;
}

void ObjectStream::setLimit(std::int32_t objectLimit)
{
    m_objectLimit = objectLimit;
    showWindow();
}

std::uint8_t ObjectStream::next()
{
    while (isBelowLimit()) {
        if (available() != 0) {
            const std::uint8_t byte = *m_outputCursor;
            take(1);
            return byte;
        }
        if (!inflateStep())
            break;
    }
    throw ISource::EofException();
}

void ObjectStream::skip(unsigned long long count)
{
    while (count > available()) {
        count -= available();
        take(available());
        if (!inflateStep())
            throw ISource::EofException();
    }
    take(static_cast<std::size_t>(count));
}

void ObjectStream::take(std::size_t count)
{
    m_outputCursor += count;
    m_servedBytes += count;
    showWindow();
}

void ObjectStream::showWindow()
{
    if (!isBelowLimit()) {
        m_source.setWindow({});
        return;
    }
    const auto left = static_cast<std::uint64_t>(m_objectLimit - static_cast<std::int64_t>(m_servedBytes));
    m_source.setWindow(
        {m_outputCursor, static_cast<std::size_t>(std::min<std::uint64_t>(available(), left))});
}

// Makes more bytes available, maybe none. False at the end of the compressed data.
bool ObjectStream::inflateStep()
{
    if (m_isFinished)
        return false;
    if (m_inflater.avail_out == 0) {
        m_inflater.next_out = m_output.data();
        m_inflater.avail_out = outputSize;
        m_outputCursor = m_output.data();
    }
    if (m_inflater.avail_in == 0)
        giveInput();
    const uInt roomBefore = m_inflater.avail_out;
    const int code = inflate(&m_inflater, Z_NO_FLUSH);
    countInflated(roomBefore - m_inflater.avail_out);
    if (code == Z_STREAM_END)
        finish();
    else if (code != Z_OK)
        throwError(code, m_inflater);
    return true;
}

void ObjectStream::countInflated(std::uint64_t bytes)
{
    m_inflatedOfFile += bytes;
    if (m_inflatedOfFile > alwaysInflated + mostInflatedPerByte * m_lexer.position())
        throw PdfParserException("The object streams of the PDF inflate to too much");
}

void ObjectStream::giveInput()
{
    if (m_given == m_filled)
        fillInput();
    constexpr std::size_t most = std::numeric_limits<uInt>::max();
    const std::size_t count = std::min(most, m_filled - m_given);
    m_inflater.next_in = reinterpret_cast<Bytef*>(m_compressed.data()) + m_given;
    m_inflater.avail_in = static_cast<uInt>(count);
    m_given += count;
}

// Where the count of bytes was wrong, the inflater asks for more and is given all of them from the start. If
// the file ends here it gets nothing, however often a value that was cut off by that lets it ask again.
void ObjectStream::fillInput()
{
    if (m_compressedSize) {
        if (++m_fills > mostFills)
            throwError(Z_BUF_ERROR, m_inflater);
        m_lexer.readBytes(m_compressed, *m_compressedSize);
    } else {
        m_compressed.clear();
        m_lexer.readLine(m_compressed);
    }
    m_filled = m_compressed.size();
    m_given = 0;
}

} // namespace Pdf::Parser
