#pragma once

#include <clocale>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "tests/Torv/TemporaryDirectory.h"

namespace Torv::Test
{

/// Puts the process, as long as it lives, into a locale that writes 1.234,5 for what C writes as 1234.5. The
/// locale is made on the spot, since a plain Debian has none like that.
class CommaLocale
{
public:
    CommaLocale()
    {
        const std::string call = "localedef -c --quiet -i '" + m_directory.file("source", source) + "' -f '" +
                                 m_directory.file("charmap", charmap()) + "' '" + m_directory.path("comma") +
                                 "' >/dev/null 2>&1";
        // Fails for the categories that are not there, and writes the one that is.
        [[maybe_unused]] const int status = std::system(call.c_str());
        ::setenv("LOCPATH", m_directory.path("").c_str(), 1);
        if (std::setlocale(LC_ALL, "comma") == nullptr || std::localeconv()->decimal_point[0] != ',')
            throw std::runtime_error("no locale with decimal commas");
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    ~CommaLocale()
    {
        std::setlocale(LC_ALL, "C");
        ::unsetenv("LOCPATH");
    }

private:
    static constexpr const char* source = "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\n"
                                          "END LC_NUMERIC\n";

    static std::string charmap()
    {
        std::string text =
            "<code_set_name> ASCII\n<escape_char> /\n<mb_cur_min> 1\n<mb_cur_max> 1\nCHARMAP\n";
        constexpr const char* digits = "0123456789abcdef";
        for (unsigned byte = 0; byte < 0x80; ++byte) {
            const std::string hex{digits[byte / 16], digits[byte % 16]};
            text += "<U00" + hex + "> /x" + hex + " character\n";
        }
        return text + "END CHARMAP\n";
    }

    TemporaryDirectory m_directory;
};

} // namespace Torv::Test
