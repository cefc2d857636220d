#include "worker/DocumentMedia.h"

#include <string>
#include <string_view>

#include "worker/BodyReader.h"

#include "Torv/Number.h"

namespace JobParser::Worker
{
namespace
{

// Comments of the whole document stand in front of everything else.
constexpr std::int64_t longestHeader = 8192;
constexpr std::string_view keyword = "%%DocumentMedia:";

/// The next word of a line, which is shortened by it.
std::string_view takeWord(std::string_view& line)
{
    const std::size_t start = std::min(line.find_first_not_of(" \t"), line.size());
    const std::size_t end = std::min(line.find_first_of(" \t", start), line.size());
    const std::string_view word = line.substr(start, end - start);
    line.remove_prefix(end);
    return word;
}

PageSize sizeOf(std::string_view line)
{
    takeWord(line); // The name
    const double width = Torv::atoi(takeWord(line));
    const double height = Torv::atoi(takeWord(line));
    return pageSizeOfPoints(width, height);
}

} // namespace

PageSize documentMedia(BodyReader& reader)
{
    reader.seek(0);
    const auto bytes = reader.take(longestHeader);
    const std::string_view header(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    PageSize size;
    const std::size_t place = header.find(keyword);
    if (place != std::string_view::npos &&
        (place == 0 || header[place - 1] == '\n' || header[place - 1] == '\r')) {
        const std::string_view rest = header.substr(place + keyword.size());
        size = sizeOf(rest.substr(0, rest.find_first_of("\r\n")));
    }
    reader.seek(0);
    return size;
}

} // namespace JobParser::Worker
