#include "worker/RasterRow.h"

#include <algorithm>

namespace JobParser::Worker
{
namespace
{

/// Takes bytes from the front of compressed data.
class Source
{
public:
    explicit Source(std::span<const std::uint8_t> data) : m_data(data) {}

    bool atEnd() const { return m_data.empty(); }

    std::uint8_t get()
    {
        const std::uint8_t byte = m_data.front();
        m_data = m_data.subspan(1);
        return byte;
    }

    std::span<const std::uint8_t> take(std::size_t count)
    {
        const auto taken = m_data.first(std::min(count, m_data.size()));
        m_data = m_data.subspan(taken.size());
        return taken;
    }

    /// A number that goes on in the next bytes as long as they are 255.
    std::size_t extended(std::size_t number, std::size_t escape)
    {
        if (number != escape)
            return number;
        for (bool goesOn = true; goesOn && !atEnd();) {
            const std::uint8_t more = get();
            number += more;
            goesOn = more == 255;
        }
        return number;
    }

private:
    std::span<const std::uint8_t> m_data;
};

} // namespace

void RasterRow::decode(RasterMode mode, std::span<const std::uint8_t> data)
{
    switch (mode) {
    case RasterMode::DeltaRow: return decodeDeltaRow(data);
    case RasterMode::ReplacementDelta: return decodeReplacementDelta(data);
    case RasterMode::Plain:
    case RasterMode::RunLength:
    case RasterMode::PackBits:
    case RasterMode::Adaptive: break;
    }
    m_bytes.clear();
    if (mode == RasterMode::RunLength)
        decodeRunLength(data);
    else if (mode == RasterMode::PackBits)
        decodePackBits(data);
    else
        append(data);
}

void RasterRow::decodeRunLength(std::span<const std::uint8_t> data)
{
    for (Source source(data); !source.atEnd();) {
        const std::size_t count = std::size_t{source.get()} + 1;
        if (!source.atEnd())
            append(count, source.get());
    }
}

void RasterRow::decodePackBits(std::span<const std::uint8_t> data)
{
    for (Source source(data); !source.atEnd();) {
        const std::size_t control = source.get();
        if (control < 128)
            append(source.take(control + 1));
        else if (control > 128 && !source.atEnd())
            append(257 - control, source.get());
    }
}

void RasterRow::decodeDeltaRow(std::span<const std::uint8_t> data)
{
    std::size_t at = 0;
    for (Source source(data); !source.atEnd();) {
        const std::size_t command = source.get();
        at += source.extended(command & 31U, 31);
        const auto bytes = source.take((command >> 5) + 1);
        replace(at, bytes);
        at += bytes.size();
    }
}

void RasterRow::decodeReplacementDelta(std::span<const std::uint8_t> data)
{
    std::size_t at = 0;
    for (Source source(data); !source.atEnd();) {
        const std::size_t command = source.get();
        if ((command & 128U) == 0) {
            at += source.extended((command >> 3) & 15U, 15);
            const auto bytes = source.take(source.extended(command & 7U, 7) + 1);
            replace(at, bytes);
            at += bytes.size();
            continue;
        }
        at += source.extended((command >> 5) & 3U, 3);
        const std::size_t count = std::min(source.extended(command & 31U, 31) + 2, longest);
        if (source.atEnd())
            return;
        const std::vector<std::uint8_t> run(count, source.get());
        replace(at, run);
        at += count;
    }
}

void RasterRow::append(std::size_t count, std::uint8_t byte)
{
    m_bytes.insert(m_bytes.end(), std::min(count, longest - m_bytes.size()), byte);
}

void RasterRow::append(std::span<const std::uint8_t> data)
{
    const auto part = data.first(std::min(data.size(), longest - m_bytes.size()));
    m_bytes.insert(m_bytes.end(), part.begin(), part.end());
}

void RasterRow::replace(std::size_t at, std::span<const std::uint8_t> data)
{
    if (at >= longest)
        return;
    const auto part = data.first(std::min(data.size(), longest - at));
    if (m_bytes.size() < at + part.size())
        m_bytes.resize(at + part.size());
    std::copy(part.begin(), part.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

} // namespace JobParser::Worker
