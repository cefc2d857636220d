#pragma once

#include <fstream>
#include <sstream>
#include <string>

/// The bytes of a file; empty if there is none.
inline std::string fileText(const std::string& path)
{
    const std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}
