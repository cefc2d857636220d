#include "Torv/Json/Object.h"

#include "Torv/Json/Array.h"
#include "Torv/Json/Json.h"

namespace Torv::Json
{
void Object::add(std::string_view key, std::string_view value)
{
    addKey(key);
    appendString(m_text, value);
    m_text += '}';
}

void Object::add(std::string_view key, const Array& value)
{
    addJson(key, value.str());
}

void Object::add(std::string_view key, const std::set<std::string>& values)
{
    Array array;
    for (const std::string& value : values)
        array.add(value);
    add(key, array);
}

void Object::addJson(std::string_view key, std::string_view json)
{
    addKey(key);
    m_text += json;
    m_text += '}';
}

/// Opens the object again, up to where the value goes.
void Object::addKey(std::string_view key)
{
    const bool isFirst = m_text.size() == 2;
    m_text.pop_back();
    if (!isFirst)
        m_text += ',';
    appendString(m_text, key);
    m_text += ':';
}

void Object::addSigned(std::string_view key, long long value)
{
    addKey(key);
    appendNumber(m_text, value);
    m_text += '}';
}

void Object::addUnsigned(std::string_view key, unsigned long long value)
{
    addKey(key);
    appendNumber(m_text, value);
    m_text += '}';
}

} // namespace Torv::Json
