#pragma once

#include <cstdint>

namespace Pdf::Parser
{

/// Recognises the word `endstream` with white space behind it in one pass, without ever going back.
///
/// A byte that breaks a match is tried again as a first letter only where that costs nothing to know: from
/// the eighth letter on. There `endstren` also counts as the `en` of a new word, whose other letters are then
/// tried again as well.
class EndOfStreamMatcher
{
public:
    /// Takes the next byte. True if it is the white space behind the word.
    bool accept(std::uint8_t byte);

    /// Whether nothing of a word was seen, so that only an `e` can change anything.
    bool isIdle() const { return m_matched == 0; }

private:
    unsigned m_matched = 0; // Letters.
    bool m_triesAgain = false;
};

} // namespace Pdf::Parser
