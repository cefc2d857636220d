#include "worker/JobFacts.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Torv/Json/Object.h"

namespace JobParser::Worker
{
namespace
{

constexpr double tenthsPerPoint = 254.0 / 72.0;
// Beyond ten metres a number is no paper but nonsense.
constexpr double greatestSide = 100000;

// Hosts read 32-bit numbers.
std::int32_t told(std::int64_t count)
{
    return static_cast<std::int32_t>(std::min<std::int64_t>(count, std::numeric_limits<std::int32_t>::max()));
}

std::int64_t area(PageSize size)
{
    return std::int64_t{size.width} * size.height;
}

} // namespace

PageSize pageSizeOfPoints(double width, double height)
{
    const double w = width * tenthsPerPoint;
    const double h = height * tenthsPerPoint;
    const bool isPaper = w >= 1 && h >= 1 && w <= greatestSide && h <= greatestSide;
    if (!isPaper)
        return {};
    return {static_cast<std::int32_t>(std::lround(w)), static_cast<std::int32_t>(std::lround(h))};
}

void JobFacts::addPage(PageClass pageClass, PageSize size)
{
    switch (pageClass) {
    case PageClass::Blank: ++m_blank; break;
    case PageClass::Mono: ++m_mono; break;
    case PageClass::Gray: ++m_gray; break;
    case PageClass::Color: ++m_color; break;
    }
    takeSize(size);
}

void JobFacts::suggestSize(PageSize size)
{
    if (area(m_size) == 0)
        m_size = size;
}

void JobFacts::setCopies(std::int32_t copies)
{
    m_copies = std::max(m_copies, copies);
}

void JobFacts::add(const JobFacts& other)
{
    m_blank += other.m_blank;
    m_mono += other.m_mono;
    m_gray += other.m_gray;
    m_color += other.m_color;
    setCopies(other.m_copies);
    takeSize(other.m_size);
}

std::int64_t JobFacts::count(PageClass pageClass) const
{
    switch (pageClass) {
    case PageClass::Blank: return m_blank;
    case PageClass::Mono: return m_mono;
    case PageClass::Gray: return m_gray;
    case PageClass::Color: break;
    }
    return m_color;
}

// Of pages of the same size the first one tells how pages lie.
void JobFacts::takeSize(PageSize size)
{
    if (area(size) > area(m_size))
        m_size = size;
}

std::string JobFacts::toJson() const
{
    Torv::Json::Object reply;
    reply.add("errorCode", 0);
    reply.add("errorMessage", "");
    reply.add("blankCount", told(m_blank));
    reply.add("monoCount", told(m_mono));
    reply.add("grayCount", told(m_gray));
    reply.add("colorCount", told(m_color));
    reply.add("copies", m_copies);
    reply.add("pageWidth", m_size.width);
    reply.add("pageHeight", m_size.height);
    return reply.take();
}

} // namespace JobParser::Worker
