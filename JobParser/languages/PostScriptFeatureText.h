#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What the bodies of PostScript features say, as `<< /Staple 3 /StaplePosition 1 >> setpagedevice`. Words
/// and keys count by case.
namespace JobParser::PostScript::FeatureText
{

/// The bytes of a word of HP drivers that count.
inline constexpr std::size_t longestWord = 4096;

/// The word of the first `/MediaProcessingOption (word)`, cut after longestWord bytes; empty if there is
/// none. A view into the text.
std::string_view mediaProcessingOption(std::string_view text);

/// The number of the first `/Staple 0 ` or `/Staple 3 `, with the blank behind it; 0 if there is none.
int staple(std::string_view text);

/// The number of the first `/StaplePosition 1 ` up to 3, with the blank behind it; 0 if there is none.
int staplePosition(std::string_view text);

/// Takes out of a text what none of the above can need, whatever is still appended to it and however much
/// white space is trimmed off its end, so that about ten thousand bytes remain of a text of any length.
void shorten(std::string& text);

} // namespace JobParser::PostScript::FeatureText
