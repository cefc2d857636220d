#pragma once

#include <cstdlib>
#include <string>

/// Has another PATH as long as it lives.
class OtherPath
{
public:
    explicit OtherPath(const std::string& path) : m_former(::getenv("PATH"))
    {
        ::setenv("PATH", path.c_str(), 1);
    }
    OtherPath(const OtherPath&) = delete;
    OtherPath& operator=(const OtherPath&) = delete;
    ~OtherPath() { ::setenv("PATH", m_former.c_str(), 1); }

private:
    std::string m_former;
};
