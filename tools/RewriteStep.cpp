#include "tools/RewriteStep.h"

#include <array>
#include <charconv>
#include <optional>

namespace JobParser::Tool
{
namespace
{

bool readAsIs(RewriteStep&)
{
    return true;
}

bool readLanguage(RewriteStep& step)
{
    return step.makesSense();
}

bool readNameAndValue(RewriteStep& step)
{
    const std::size_t separator = step.first.find('=');
    if (separator == std::string::npos)
        return false;
    step.second = step.first.substr(separator + 1);
    step.first.resize(separator);
    return true;
}

/// Takes the byte of a `\xHH` from behind its `x`.
std::optional<char> takeHexByte(std::string_view& rest)
{
    constexpr std::size_t digits = 2;
    unsigned byte = 0;
    const char* const end = rest.data() + digits;
    if (rest.size() < digits || std::from_chars(rest.data(), end, byte, 16).ptr != end)
        return std::nullopt;
    rest.remove_prefix(digits);
    return static_cast<char>(byte);
}

/// Takes what stands for one byte from behind its backslash.
std::optional<char> takeEscape(std::string_view& rest)
{
    if (rest.empty())
        return std::nullopt;
    const char letter = rest.front();
    rest.remove_prefix(1);
    switch (letter) {
    case 'r': return '\r';
    case 'n': return '\n';
    case 't': return '\t';
    case '\\': return '\\';
    case 'x': return takeHexByte(rest);
    default: return std::nullopt;
    }
}

bool readEscapedText(RewriteStep& step)
{
    std::string text;
    for (std::string_view rest = step.first; !rest.empty();) {
        const char byte = rest.front();
        rest.remove_prefix(1);
        const std::optional<char> meant = byte == '\\' ? takeEscape(rest) : byte;
        if (!meant)
            return false;
        text += *meant;
    }
    step.first = std::move(text);
    return true;
}

constexpr std::array rows = {
    RewriteStepRow{"wrap", "LANGUAGE", "NAME", "put a job without PJL into an envelope: JOB, ENTER, EOJ",
                   readLanguage, RewriteStep::Kind::Wrap},
    RewriteStepRow{"job-name", "NAME", nullptr, "make NAME=\"NAME\" the whole parameter of every JOB",
                   readAsIs, RewriteStep::Kind::JobName},
    RewriteStepRow{"job-param", "NAME", "VALUE", "set one parameter of the first JOB and keep the others",
                   readAsIs, RewriteStep::Kind::JobParam},
    RewriteStepRow{"set", "NAME=VALUE", nullptr, "SET NAME=VALUE, instead of every other SET NAME",
                   readNameAndValue, RewriteStep::Kind::Set},
    RewriteStepRow{"set-quoted", "NAME=VALUE", nullptr, "the same as NAME=\"VALUE\"", readNameAndValue,
                   RewriteStep::Kind::SetQuoted},
    RewriteStepRow{"add", "NAME=VALUE", nullptr, "SET NAME=VALUE, beside a SET NAME with another value",
                   readNameAndValue, RewriteStep::Kind::Add},
    RewriteStepRow{"add-quoted", "NAME=VALUE", nullptr, "the same as NAME=\"VALUE\"", readNameAndValue,
                   RewriteStep::Kind::AddQuoted},
    RewriteStepRow{"unset", "NAME=VALUE", nullptr, "remove every SET NAME=VALUE", readNameAndValue,
                   RewriteStep::Kind::Unset},
    RewriteStepRow{"unset-first", "PREFIX", nullptr, "remove the first SET that begins so, case as it stands",
                   readAsIs, RewriteStep::Kind::UnsetFirst},
    RewriteStepRow{"unset-all", "PREFIX", nullptr, "remove every SET that begins so, case as it stands",
                   readAsIs, RewriteStep::Kind::UnsetAll},
    RewriteStepRow{"finishing", "TYPE", "OPTION",
                   "the four SETs of one finishing step of HP drivers, instead of one of that type", readAsIs,
                   RewriteStep::Kind::Finishing},
    RewriteStepRow{"pjl-code", "TEXT", nullptr,
                   "insert TEXT; \\r \\n \\t \\\\ and \\xHH in it stand for bytes", readEscapedText,
                   RewriteStep::Kind::PjlCode},
    RewriteStepRow{"strip-pjl", nullptr, nullptr, "remove every PJL line and every UEL", readAsIs,
                   RewriteStep::Kind::StripPjl},
    RewriteStepRow{"strip-prescribe", nullptr, nullptr, "remove every PRESCRIBE block", readAsIs,
                   RewriteStep::Kind::StripPrescribe},
};

} // namespace

std::span<const RewriteStepRow> rewriteStepRows()
{
    return rows;
}

} // namespace JobParser::Tool
