#pragma once

#include <string>
#include <string_view>

/// The standard conversions from text to numbers, always in the C locale.
///
/// Like their namesakes of the standard library they skip leading white space, read the longest number that
/// stands there and ignore what follows. Those that take a string throw std::invalid_argument if there is
/// none and std::out_of_range if it does not fit.
namespace Torv
{

int stoi(const std::string& text);
float stof(const std::string& text);
double stod(const std::string& text);

/// The whole number at the start of the text, behind white space and with a sign or without; 0 if there is
/// none. A number too large for 64 bits counts as the limit that it passes, and of the result only the low 32
/// bits are taken.
int atoi(std::string_view text);

} // namespace Torv
