#include "tools/RewriteStep.h"

#include <array>
#include <charconv>
#include <optional>

#include "JobParser/Job.h"

namespace JobParser::Tool
{
namespace
{

constexpr const char* setCommand = "SET";

bool readAsIs(RewriteStep&)
{
    return true;
}

bool readLanguage(RewriteStep& step)
{
    return PdlUtils::fromPjlEnterLang(step.first) != Pdl::Unknown;
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

template <bool sameValueOnly, bool quoted> void insertSetting(Job& job, const RewriteStep& step)
{
    job.insertPjlCmd(setCommand, step.first.c_str(), step.second, sameValueOnly, quoted);
}

constexpr std::array rows = {
    RewriteStepRow{"wrap", "LANGUAGE", "NAME", "put a job without PJL into an envelope: JOB, ENTER, EOJ",
                   readLanguage,
                   [](Job& job, const RewriteStep& step) {
                       job.wrapIntoPjlJob(PdlUtils::fromPjlEnterLang(step.first), step.second);
                   }},
    RewriteStepRow{"job-name", "NAME", nullptr, "make NAME=\"NAME\" the whole parameter of every JOB",
                   readAsIs, [](Job& job, const RewriteStep& step) { job.setJobName(step.first); }},
    RewriteStepRow{"job-param", "NAME", "VALUE", "set one parameter of the first JOB and keep the others",
                   readAsIs,
                   [](Job& job, const RewriteStep& step) { job.setPjlJobParam(step.first, step.second); }},
    RewriteStepRow{"set", "NAME=VALUE", nullptr, "SET NAME=VALUE, instead of every other SET NAME",
                   readNameAndValue, insertSetting<false, false>},
    RewriteStepRow{"set-quoted", "NAME=VALUE", nullptr, "the same as NAME=\"VALUE\"", readNameAndValue,
                   insertSetting<false, true>},
    RewriteStepRow{"add", "NAME=VALUE", nullptr, "SET NAME=VALUE, beside a SET NAME with another value",
                   readNameAndValue, insertSetting<true, false>},
    RewriteStepRow{"add-quoted", "NAME=VALUE", nullptr, "the same as NAME=\"VALUE\"", readNameAndValue,
                   insertSetting<true, true>},
    RewriteStepRow{"unset", "NAME=VALUE", nullptr, "remove every SET NAME=VALUE", readNameAndValue,
                   [](Job& job, const RewriteStep& step) {
                       job.removePjlSetCmd(step.first.c_str(), step.second.c_str());
                   }},
    RewriteStepRow{"unset-first", "PREFIX", nullptr, "remove the first SET that begins so, case as it stands",
                   readAsIs,
                   [](Job& job, const RewriteStep& step) { job.removePjlSetCmd(step.first.c_str(), false); }},
    RewriteStepRow{"unset-all", "PREFIX", nullptr, "remove every SET that begins so, case as it stands",
                   readAsIs,
                   [](Job& job, const RewriteStep& step) { job.removePjlSetCmd(step.first.c_str(), true); }},
    RewriteStepRow{"finishing", "TYPE", "OPTION",
                   "the four SETs of one finishing step of HP drivers, instead of one of that type", readAsIs,
                   [](Job& job, const RewriteStep& step) {
                       job.insertHpPjlProcessingAction(step.first.c_str(), step.second.c_str());
                   }},
    RewriteStepRow{"pjl-code", "TEXT", nullptr,
                   "insert TEXT; \\r \\n \\t \\\\ and \\xHH in it stand for bytes", readEscapedText,
                   [](Job& job, const RewriteStep& step) { job.insertPjlCode(step.first); }},
    RewriteStepRow{"strip-pjl", nullptr, nullptr, "remove every PJL line and every UEL", readAsIs,
                   [](Job& job, const RewriteStep&) { job.removePjl(); }},
    RewriteStepRow{"strip-prescribe", nullptr, nullptr, "remove every PRESCRIBE block", readAsIs,
                   [](Job& job, const RewriteStep&) { job.removePrescribe(); }},
};

} // namespace

std::span<const RewriteStepRow> rewriteStepRows()
{
    return rows;
}

} // namespace JobParser::Tool
