#include "worker/BodyReader.h"

#include <algorithm>

#include "JobParser/JobFile.h"

namespace JobParser::Worker
{

BodyReader::BodyReader(JobFile& file, const Body& body) : m_file(file), m_ranges(body.ranges)
{
    for (const Range& range : m_ranges)
        m_size += range.size;
    map();
}

void BodyReader::seek(std::int64_t position)
{
    m_position = std::clamp<std::int64_t>(position, 0, m_size);
    if (m_position < m_rangeStart) {
        m_range = 0;
        m_rangeStart = 0;
    }
    map();
}

std::int64_t BodyReader::skip(std::int64_t count)
{
    const std::int64_t possible = std::clamp<std::int64_t>(count, 0, m_size - m_position);
    if (possible < static_cast<std::int64_t>(m_bytes.size())) {
        m_position += possible;
        m_bytes = m_bytes.subspan(static_cast<std::size_t>(possible));
    } else {
        seek(m_position + possible);
    }
    return possible;
}

std::span<const std::uint8_t> BodyReader::take(std::int64_t count)
{
    const auto wanted = static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, m_size - m_position));
    // The window must stay mapped while the caller looks at it, so that its last byte is not taken here.
    if (wanted < m_bytes.size()) {
        const auto bytes = m_bytes.first(wanted);
        m_bytes = m_bytes.subspan(wanted);
        m_position += static_cast<std::int64_t>(wanted);
        return bytes;
    }
    m_joined.clear();
    while (m_joined.size() < wanted && !m_bytes.empty()) {
        const auto part = m_bytes.first(std::min(m_bytes.size(), wanted - m_joined.size()));
        m_joined.insert(m_joined.end(), part.begin(), part.end());
        skip(static_cast<std::int64_t>(part.size()));
    }
    return m_joined;
}

std::vector<Range> BodyReader::placesOf(const Range& stretch) const
{
    std::vector<Range> places;
    std::int64_t start = 0;
    const std::int64_t end = stretch.size <= m_size - stretch.offset ? stretch.offset + stretch.size : m_size;
    for (const Range& range : m_ranges) {
        const std::int64_t from = std::max(stretch.offset, start);
        const std::int64_t to = std::min(end, start + range.size);
        if (from < to)
            places.push_back({range.offset + (from - start), to - from});
        start += range.size;
    }
    return places;
}

// Finds the mapped bytes for the position.
void BodyReader::map()
{
    while (m_range < m_ranges.size() && m_position >= m_rangeStart + m_ranges[m_range].size)
        m_rangeStart += m_ranges[m_range++].size;
    m_bytes = {};
    if (m_range == m_ranges.size())
        return;
    const Range& range = m_ranges[m_range];
    const std::int64_t within = m_position - m_rangeStart;
    if (range.offset + within >= m_file.m_realDataSize) {
        // The file became shorter while it was read.
        m_size = m_position;
        return;
    }
    m_file.setPos(range.offset + within);
    const auto bytes = m_file.window();
    const auto left = static_cast<std::size_t>(range.size - within);
    m_bytes = bytes.first(std::min(bytes.size(), left));
}

} // namespace JobParser::Worker
