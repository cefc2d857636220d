#include "JobParser/model/BaseParser.h"

#include <string>

#include "JobParser/JobFile.h"
#include "JobParser/JobParserException.h"

#include "Torv/Ascii.h"

namespace JobParser
{

bool BaseParser::match(std::string_view pattern, bool peek, bool upcase)
{
    std::int64_t count = 0;
    bool matches = true;
    for (std::size_t index = 0; matches && index < pattern.size(); ++index) {
        if (file.atEnd()) {
            matches = false;
            break;
        }
        const std::uint8_t byte = file.getChar();
        ++count;
        matches = (upcase ? Torv::Ascii::toUpper(byte) : byte) == static_cast<std::uint8_t>(pattern[index]);
    }
    if (peek || !matches)
        file.returnChar(count);
    return matches;
}

bool BaseParser::matchUel()
{
    if (file.peekChar() != static_cast<std::uint8_t>(uel.front()))
        return false;
    // Escape sequences are many in some languages, and the second byte tells nearly all of them from a UEL.
    const auto bytes = file.window();
    if (bytes.size() > 1 && bytes[1] != static_cast<std::uint8_t>(uel[1]))
        return false;
    return match(uel, false, false);
}

std::string_view BaseParser::unQuote(std::string_view s, char q)
{
    if (s.size() < 2 || s.front() != q || s.back() != q)
        throw JobParserException("Not a quoted string: " + std::string(s));
    return s.substr(1, s.size() - 2);
}

} // namespace JobParser
