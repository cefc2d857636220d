#include "worker/PagePrinter.h"

#include <algorithm>

namespace JobParser::Worker
{

void PagePrinter::mark(PageClass pageClass)
{
    m_isTouched = true;
    m_class = std::max(m_class, pageClass);
}

void PagePrinter::eject()
{
    m_facts.addPage(std::max(m_class, m_overlay), m_size);
    m_class = PageClass::Blank;
    m_isTouched = false;
}

void PagePrinter::ejectIfTouched()
{
    if (m_isTouched)
        eject();
}

PagePrinter PagePrinter::beginScratch()
{
    PagePrinter saved = *this;
    m_class = PageClass::Blank;
    m_isTouched = false;
    return saved;
}

PageClass PagePrinter::endScratch(const PagePrinter& saved)
{
    const PageClass painted = m_class;
    *this = saved;
    return painted;
}

} // namespace JobParser::Worker
