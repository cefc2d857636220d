#include "pdf/EndOfStreamMatcher.h"

#include <string_view>

#include "pdf/WhiteSpace.h"

namespace Pdf::Parser
{
namespace
{

constexpr std::string_view word = "endstream";
constexpr unsigned lettersBeforeA = 7;

} // namespace

bool EndOfStreamMatcher::accept(std::uint8_t byte)
{
    if (m_matched == word.size()) {
        if (isWsCharacter[byte])
            return true;
    } else if (byte == static_cast<std::uint8_t>(word[m_matched])) {
        ++m_matched;
        return false;
    } else if (m_matched == lettersBeforeA && byte == 'n') {
        m_matched = 2;
        m_triesAgain = true;
        return false;
    }
    const bool triesAgain = m_triesAgain || m_matched >= lettersBeforeA;
    m_matched = triesAgain && byte == 'e' ? 1 : 0;
    m_triesAgain = false;
    return false;
}

} // namespace Pdf::Parser
