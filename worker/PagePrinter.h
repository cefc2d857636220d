#pragma once

#include <cstdint>

#include "worker/JobFacts.h"

namespace JobParser::Worker
{

/// The pages of a stream that is printed page by page: what is marked on the current one, and what came out.
class PagePrinter
{
public:
    /// Paints on the page. Blank says that the page was touched, as by white: it comes out at the end of the
    /// job too.
    void mark(PageClass pageClass);
    /// Whether painting with this would tell anything new of the page.
    bool matters(PageClass pageClass) const { return !m_isTouched || pageClass > m_class; }
    bool isTouched() const { return m_isTouched; }

    /// Sets the size of the current page and of those to come.
    void setSize(PageSize size) { m_size = size; }
    /// What is painted on each page that comes out from now on.
    void setOverlay(PageClass pageClass) { m_overlay = pageClass; }

    /// Puts the page out, whatever is on it.
    void eject();
    /// The same if something is on it.
    void ejectIfTouched();

    /// Sets the page aside and begins an empty one, and undoes that; gives what was painted meanwhile.
    PagePrinter beginScratch();
    PageClass endScratch(const PagePrinter& saved);

    void setCopies(std::int32_t copies) { m_facts.setCopies(copies); }
    const JobFacts& facts() const { return m_facts; }

private:
    JobFacts m_facts;
    PageSize m_size;
    PageClass m_class = PageClass::Blank;
    PageClass m_overlay = PageClass::Blank;
    bool m_isTouched = false;
};

} // namespace JobParser::Worker
