#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Text operations on bytes. Case means the case of ASCII letters; no operation follows a locale.
namespace Torv
{

bool iequals(std::string_view a, std::string_view b);
bool istartsWith(std::string_view text, std::string_view prefix);
bool icontains(std::string_view text, std::string_view word);

std::string toLower(std::string_view text);
std::string toUpper(std::string_view text);

/// The text without the white space (bytes 9 to 13 and blank) at both ends.
std::string_view trim(std::string_view text);
/// The text without the white space in front.
std::string_view trimLeft(std::string_view text);

/// Wide text (UTF-16) as UTF-8. A lone surrogate becomes U+FFFD.
std::string narrow(std::u16string_view text);

/// Splits a text at each byte of `delimiters` into at most `limit` parts; the last part holds all that is
/// left, delimiters included. With `dropEmpty`, empty parts are left out and do not count, and the last part
/// begins behind the delimiters that stand before it.
std::vector<std::string> explode(std::string_view text, std::string_view delimiters, std::size_t limit,
                                 bool dropEmpty);

/// Reads a whole decimal number with an optional sign and white space around it. False, with `value` as it
/// was, for anything else: text behind the number, no number, a number that does not fit.
bool tryParseInt(std::string_view text, int& value);

} // namespace Torv
