#include "Torv/Json/Array.h"

#include "Torv/Json/Json.h"

namespace Torv::Json
{

void Array::addJson(std::string_view json)
{
    openForElement();
    m_text += json;
    m_text += ']';
}

void Array::add(std::string_view value)
{
    openForElement();
    appendString(m_text, value);
    m_text += ']';
}

void Array::openForElement()
{
    const bool isFirst = m_text.size() == 2;
    m_text.pop_back();
    if (!isFirst)
        m_text += ',';
}

} // namespace Torv::Json
