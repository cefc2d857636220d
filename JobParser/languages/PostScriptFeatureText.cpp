// A feature that is never closed collects the whole rest of its job. Of the text that came so far only this
// can still matter: for each of the three patterns what it finds first, or else the end of the text, where a
// match may have begun. The patterns have no other memory: all but two of their parts are of fixed length, of
// a run of white space nothing but its first byte and whether it is longer counts, and of a word its first
// bytes.

#include "JobParser/languages/PostScriptFeatureText.h"

#include "Torv/Ascii.h"
#include "Torv/Regex.h"

namespace JobParser::PostScript::FeatureText
{
namespace
{

constexpr std::string_view optionPattern = R"(/MediaProcessingOption\s+\((\w+)\))";
constexpr std::string_view staplePattern = R"(/Staple (0|3) )";
constexpr std::string_view positionPattern = R"(/StaplePosition ([1-3]) )";
constexpr std::string_view anyOptionPattern = R"((/MediaProcessingOption\s+\(\w+\)))";
constexpr std::string_view anyStaplePattern = R"((/Staple [03] ))";
constexpr std::string_view anyPositionPattern = R"((/StaplePosition [1-3] ))";
constexpr std::string_view openWordPattern = R"(/MediaProcessingOption\s+\((\w+)$)";

// The longest match that may have begun: the key, white space, a parenthesis and the word.
constexpr std::size_t longestMatch = 32 + longestWord;
// Stands between what is kept, so that nothing new comes of the parts. It belongs to no pattern.
constexpr char divider = '.';

// Leaves the first byte of each run, and one more if it is longer: a single blank is not two.
void collapseWhiteSpace(std::string& text)
{
    std::size_t run = 0;
    std::size_t kept = 0;
    for (const char character : text) {
        run = Torv::Ascii::isSpace(static_cast<std::uint8_t>(character)) ? run + 1 : 0;
        if (run <= 2)
            text[kept++] = run == 2 ? '\n' : character;
    }
    text.resize(kept);
}

void cutOpenWord(std::string& text)
{
    const std::string_view word = Torv::Regex::search<openWordPattern, std::string_view>(text, {}, 1);
    if (word.size() > longestWord)
        text.resize(text.size() - (word.size() - longestWord));
}

std::string optionWith(std::string_view word)
{
    return "/MediaProcessingOption (" + std::string(word) + ")";
}

} // namespace

std::string_view mediaProcessingOption(std::string_view text)
{
    return Torv::Regex::search<optionPattern, std::string_view>(text, {}, 1).substr(0, longestWord);
}

int staple(std::string_view text)
{
    return Torv::Regex::search<staplePattern, int>(text, 0, 1);
}

int staplePosition(std::string_view text)
{
    return Torv::Regex::search<positionPattern, int>(text, 0, 1);
}

void shorten(std::string& text)
{
    collapseWhiteSpace(text);
    cutOpenWord(text);
    if (text.size() <= longestMatch)
        return;
    const std::string_view end = std::string_view(text).substr(text.size() - longestMatch);
    std::string kept;
    const auto keep = [&](std::string_view found, std::string_view match) {
        if (!found.empty() && found.data() < end.data())
            kept.append(match).push_back(divider);
    };
    const auto aStaple = Torv::Regex::search<anyStaplePattern, std::string_view>(text, {}, 1);
    const auto aPosition = Torv::Regex::search<anyPositionPattern, std::string_view>(text, {}, 1);
    const auto anOption = Torv::Regex::search<anyOptionPattern, std::string_view>(text, {}, 1);
    keep(aStaple, aStaple);
    keep(aPosition, aPosition);
    keep(anOption, optionWith(mediaProcessingOption(text)));
    kept += end;
    text = std::move(kept);
}

} // namespace JobParser::PostScript::FeatureText
