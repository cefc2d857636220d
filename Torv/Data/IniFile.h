#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Torv/Export.h"

namespace Torv::Data
{

/// A configuration file of sections with `key = value` lines. Sections and keys are found ignoring case; of a
/// key that stands twice in a section the last one counts. Lines that begin with `;` or `#` are comments.
///
/// Until open has read a file, and in a section that is not there, every value is the default.
class TORV_EXPORT IniFile
{
public:
    IniFile();
    ~IniFile();
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;

    /// Reads the file. False if it cannot be read; then there are no values.
    bool open(const std::string& path);

    /// Chooses the section that the values are taken from.
    void setSection(const std::string& section);

    /// A number in the C locale; the default if the key is absent or its text does not begin with a number.
    float valueFloat(const std::string& key, float fallback) const;

    /// A list separated by commas, without the white space around its items. An item in double quotes may
    /// hold commas; the quotes go. Items without any text are left out. Empty if the key is absent.
    std::vector<std::string> valueStringArray(const std::string& key) const;

private:
    struct Content;
    std::unique_ptr<Content> m_content;
    std::string m_section;
};

} // namespace Torv::Data
