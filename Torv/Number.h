#pragma once

#include <string>

/// The standard conversions from text to numbers, always in the C locale.
///
/// Like their namesakes of the standard library they skip leading white space, read the longest number that
/// stands there and ignore what follows. They throw std::invalid_argument if there is none and
/// std::out_of_range if it does not fit.
namespace Torv
{

int stoi(const std::string& text);
float stof(const std::string& text);
double stod(const std::string& text);

} // namespace Torv
