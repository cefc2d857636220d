#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

/// Builds the bytes of a print job, as in JobBytes().uel().pjl("SET COPIES=2").pjl("ENTER
/// LANGUAGE=PCL").esc("E").
class JobBytes
{
public:
    JobBytes() = default;

    JobBytes& uel() { return raw("\x1B%-12345X"); }
    /// A PJL line with its CR LF; without a text a bare `@PJL`.
    JobBytes& pjl(std::string_view text = {})
    {
        raw("@PJL");
        if (!text.empty())
            raw(" ").raw(text);
        return raw("\r\n");
    }
    /// An escape character and what follows it.
    JobBytes& esc(std::string_view sequence) { return raw("\x1B").raw(sequence); }
    JobBytes& raw(std::string_view text)
    {
        m_bytes += text;
        return *this;
    }
    JobBytes& fill(std::size_t count, char byte)
    {
        m_bytes.append(count, byte);
        return *this;
    }

    const std::string& str() const { return m_bytes; }

private:
    std::string m_bytes;
};
