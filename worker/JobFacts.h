#pragma once

#include <cstdint>
#include <string>

#include "worker/PageClass.h"

namespace JobParser::Worker
{

/// A size of paper in tenths of a millimetre, as the page is oriented. 0 by 0 if it is not known.
struct PageSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// A size in points, of which 72 make an inch; not known if it is no size that paper could have.
PageSize pageSizeOfPoints(double width, double height);

/// What is learned of a job: pages by class, copies, and the size of the largest page.
class JobFacts
{
public:
    /// Counts a page.
    void addPage(PageClass pageClass, PageSize size);
    /// Takes a size if none of the pages told one.
    void suggestSize(PageSize size);
    /// Takes the greater number of copies. Numbers below 1 say nothing.
    void setCopies(std::int32_t copies);
    /// Adds the pages of another body of the same job.
    void add(const JobFacts& other);

    std::int64_t pageCount() const { return m_blank + m_mono + m_gray + m_color; }
    std::int64_t count(PageClass pageClass) const;
    std::int32_t copies() const { return m_copies; }
    PageSize size() const { return m_size; }

    /// The answer to a request to parse.
    std::string toJson() const;

private:
    void takeSize(PageSize size);

    std::int64_t m_blank = 0;
    std::int64_t m_mono = 0;
    std::int64_t m_gray = 0;
    std::int64_t m_color = 0;
    std::int32_t m_copies = 1;
    PageSize m_size;
};

} // namespace JobParser::Worker
