#include "Torv/Regex.h"

#include <re2/re2.h>
#include <vector>

#include "Torv/GenericException.h"

namespace Torv
{
namespace
{

constexpr std::string_view spaceRange = R"(\x09-\x0d\x20)";
constexpr std::string_view spaceClass = R"([\x09-\x0d\x20])";
constexpr std::string_view notSpaceClass = R"([^\x09-\x0d\x20])";
constexpr std::string_view dotClass = R"([^\n\r])";

[[noreturn]] void rejectPattern(std::string_view pattern, const std::string& error)
{
    throw GenericException("Regex: The pattern does not compile | pattern=" + std::string(pattern) +
                           " | error=" + error);
}

/// Writes a pattern anew where RE2 means something else by it: its `\s` lacks the vertical tab, and its `.`
/// takes a carriage return.
class Translation
{
public:
    explicit Translation(std::string_view pattern) : m_pattern(pattern), m_rest(pattern) {}

    std::string run()
    {
        while (!m_rest.empty())
            m_bracket == Bracket::Outside ? translateOutside() : translateInside();
        return std::move(m_result);
    }

private:
    /// A `]` that stands first in brackets does not close them.
    enum class Bracket { Outside, First, Inside };

    void translateOutside()
    {
        if (m_rest.front() == '\\') {
            translateEscape(spaceClass, notSpaceClass);
        } else if (m_rest.front() == '.') {
            m_result += dotClass;
            m_rest.remove_prefix(1);
        } else if (m_rest.front() == '[') {
            keep(m_rest.starts_with("[^") ? 2 : 1);
            m_bracket = Bracket::First;
        } else {
            keep(1);
        }
    }

    void translateInside()
    {
        const bool isFirst = m_bracket == Bracket::First;
        m_bracket = Bracket::Inside;
        if (m_rest.front() == '\\') {
            translateEscape(spaceRange, {});
        } else if (m_rest.starts_with("[:")) {
            const std::size_t end = m_rest.find(":]");
            keep(end == m_rest.npos ? 1 : end + 2);
        } else {
            if (m_rest.front() == ']' && !isFirst)
                m_bracket = Bracket::Outside;
            keep(1);
        }
    }

    void translateEscape(std::string_view space, std::string_view notSpace)
    {
        if (m_rest.starts_with(R"(\s)"))
            replaceEscape(space);
        else if (m_rest.starts_with(R"(\S)"))
            replaceEscape(notSpace);
        else if (m_rest.starts_with(R"(\Q)"))
            replaceEscape({});
        else
            keep(2);
    }

    void replaceEscape(std::string_view text)
    {
        if (text.empty())
            rejectPattern(m_pattern, "unsupported escape: " + std::string(m_rest.substr(0, 2)));
        m_result += text;
        m_rest.remove_prefix(2);
    }

    void keep(std::size_t size)
    {
        const std::string_view kept = m_rest.substr(0, size);
        m_result += kept;
        m_rest.remove_prefix(kept.size());
    }

    std::string_view m_pattern;
    std::string_view m_rest;
    std::string m_result;
    Bracket m_bracket = Bracket::Outside;
};

RE2::Options optionsFor(Regex::Case letterCase)
{
    RE2::Options options;
    options.set_encoding(RE2::Options::EncodingLatin1);
    options.set_log_errors(false);
    options.set_case_sensitive(letterCase == Regex::Case::Exact);
    return options;
}

} // namespace

struct Regex::Compiled {
    RE2 expression;
};

Regex::Regex(std::string_view pattern, Case letterCase)
    : m_compiled(new Compiled{RE2(Translation(pattern).run(), optionsFor(letterCase))})
{
    if (!m_compiled->expression.ok())
        rejectPattern(pattern, m_compiled->expression.error());
}

Regex::~Regex() = default;

std::optional<std::string_view> Regex::find(std::string_view subject, int group) const
{
    if (group < 0 || group > groupCount())
        return std::nullopt;
    std::vector<re2::StringPiece> groups(static_cast<std::size_t>(group) + 1);
    // Null marks a group that took no part, so even an empty subject needs a place.
    const re2::StringPiece text(subject.data() == nullptr ? "" : subject.data(), subject.size());
    if (!m_compiled->expression.Match(text, 0, text.size(), RE2::UNANCHORED, groups.data(), group + 1))
        return std::nullopt;
    const re2::StringPiece& found = groups.back();
    if (found.data() == nullptr)
        return std::nullopt;
    return std::string_view(found.data(), found.size());
}

int Regex::groupCount() const
{
    return m_compiled->expression.NumberOfCapturingGroups();
}

} // namespace Torv
