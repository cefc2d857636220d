#include "Torv/Data/IniFile.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <string_view>

// Bytes stay as they are, so the compiled library, which is for wide text too, is not needed.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

#include "Torv/Data/FileReader.h"
#include "Torv/GenericException.h"
#include "Torv/Number.h"
#include "Torv/Text.h"

namespace Torv::Data
{
namespace
{

/// Takes what stands before the next separator off the front, and the separator with it.
std::string_view takeUpTo(std::string_view& list, char separator)
{
    const std::size_t size = std::min(list.find(separator), list.size());
    const std::string_view taken = list.substr(0, size);
    list.remove_prefix(std::min(size + 1, list.size()));
    return taken;
}

std::string takeItem(std::string_view& list)
{
    list = trimLeft(list);
    std::string item;
    if (list.starts_with('"')) {
        list.remove_prefix(1);
        item = takeUpTo(list, '"');
    }
    item += trim(takeUpTo(list, ','));
    return item;
}

} // namespace

struct IniFile::Content {
    CSimpleIniA values;
};

IniFile::IniFile() : m_content(std::make_unique<Content>()) {}

IniFile::~IniFile() = default;

bool IniFile::open(const std::string& path)
{
    m_content = std::make_unique<Content>();
    try {
        return m_content->values.LoadData(FileReader::load(path)) >= SI_OK;
    } catch (const GenericException&) {
        return false;
    }
}

void IniFile::setSection(const std::string& section)
{
    m_section = section;
}

float IniFile::valueFloat(const std::string& key, float fallback) const
{
    const char* const text = m_content->values.GetValue(m_section.c_str(), key.c_str());
    if (text == nullptr)
        return fallback;
    try {
        return stof(text);
    } catch (const std::exception&) {
        return fallback;
    }
}

std::vector<std::string> IniFile::valueStringArray(const std::string& key) const
{
    std::vector<std::string> items;
    const char* const text = m_content->values.GetValue(m_section.c_str(), key.c_str());
    for (std::string_view list = text == nullptr ? "" : text; !list.empty();) {
        std::string item = takeItem(list);
        if (!item.empty())
            items.push_back(std::move(item));
    }
    return items;
}

} // namespace Torv::Data
