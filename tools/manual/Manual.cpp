// Writes the manual page of the tool and its completion for shells from what the tool itself takes and says,
// so that the four cannot differ. Runs while the tool is built.
//
//     jobparser_manual man|bash|zsh FILE

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "JobParser/model/Pdl.h"
#include "tools/CommandLine.h"

#include "Torv/IO/OutputFile.h"
#include "Torv/Text.h"

namespace
{

using JobParser::Tool::OptionDescription;
using JobParser::Tool::SubcommandDescription;

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// The indented lines under a heading of the help.
std::vector<std::string> sectionOf(std::string_view heading)
{
    std::vector<std::string> found;
    bool isIn = false;
    for (const std::string& line : linesOf(JobParser::Tool::commandLineHelp())) {
        if (isIn && !line.starts_with(' '))
            break;
        if (isIn)
            found.push_back(line);
        isIn = isIn || line == heading;
    }
    return found;
}

bool isFile(const std::string& argument)
{
    constexpr std::array files{"FILE", "OUT", "META", "PATH"};
    return std::find(files.begin(), files.end(), argument) != files.end();
}

/// The words behind ENTER LANGUAGE.
std::string languages()
{
    std::string words;
    for (int number = 1; number <= static_cast<int>(JobParser::Pdl::Urf); ++number) {
        const std::string& word = JobParser::PdlUtils::toPjlEnterLang(static_cast<JobParser::Pdl>(number));
        if (!word.empty())
            words.append(words.empty() ? "" : " ").append(word);
    }
    return words;
}

std::vector<OptionDescription> all(const SubcommandDescription& subcommand)
{
    std::vector<OptionDescription> options = subcommand.options;
    options.insert(options.end(), subcommand.steps.begin(), subcommand.steps.end());
    return options;
}

// The manual page, in mdoc.

/// Text as it is shown: no request, no escape, and dashes that can be copied.
std::string roff(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else
            escaped += c;
    }
    return !escaped.empty() && (escaped.front() == '.' || escaped.front() == '\'') ? "\\&" + escaped
                                                                                   : escaped;
}

/// Text that is filled, in which every sentence begins a line.
std::string roffSentences(std::string_view text)
{
    std::string sentences;
    for (std::size_t end = 0; (end = text.find(". ")) != std::string_view::npos; text.remove_prefix(end + 2))
        sentences += roff(text.substr(0, end + 1)) + '\n';
    return sentences + roff(text) + '\n';
}

/// One argument of a macro, which blanks and quotation marks would split.
std::string roffArgument(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : roff(text))
        quoted += c == '"' ? std::string("\\(dq") : std::string(1, c);
    return quoted + '"';
}

std::string roffParagraphs(std::string_view text)
{
    std::string page;
    for (const std::string& line : linesOf(text))
        page += line.empty() ? ".Pp\n" : roffSentences(line);
    return page;
}

std::string roffOptions(const std::vector<OptionDescription>& options)
{
    std::string page = ".Bl -tag -width Ds\n";
    for (const OptionDescription& option : options) {
        page += ".It Fl " + roffArgument(option.name.substr(1));
        for (const std::string& argument : option.arguments)
            page += " Ar " + roffArgument(argument);
        page += '\n' + roffSentences(option.help);
    }
    return page + ".El\n";
}

std::string roffLiteral(const std::vector<std::string>& lines)
{
    std::string page = ".Bd -literal -offset indent\n";
    for (const std::string& line : lines)
        page += roff(Torv::trim(line)) + '\n';
    return page + ".Ed\n";
}

/// Lines such as `  0  done`, which may go on behind more blanks.
std::string roffStatuses(const std::vector<std::string>& lines)
{
    constexpr std::size_t behindNumber = 5;
    std::string page = ".Bl -tag -width Ds\n";
    for (const std::string& line : lines) {
        if (line[2] != ' ')
            page += ".It " + line.substr(2, 1) + '\n';
        page += roffSentences(line.substr(behindNumber));
    }
    return page + ".El\n";
}

std::string manualPage()
{
    const std::vector<SubcommandDescription> subcommands = JobParser::Tool::describeCommandLine();
    std::string page = ".Dd November 21, 2026\n.Dt JOBPARSER 1\n.Os JobParser\n.Sh NAME\n.Nm jobparser\n"
                       ".Nd tells what a spooled print job is, without rendering it\n.Sh SYNOPSIS\n";
    for (const SubcommandDescription& subcommand : subcommands)
        page += ".Nm\n.Cm " + subcommand.name + "\n.Ar " + roffArgument(subcommand.usage) + '\n';
    page += ".Nm\n.Fl \\-help\n.Nm\n.Fl \\-version\n.Sh DESCRIPTION\n"
            "The subcommands of\n.Nm\nread print jobs in PCL 5, PostScript, PRESCRIBE, PCL XL, PDF, JPEG and "
            "XPS,\n"
            "with or without an envelope of PJL, and write what they are and what they consist of.\n"
            "Files, options and steps may stand in any order; behind\n.Fl \\-\nthere are only files.\n";
    for (const SubcommandDescription& subcommand : subcommands) {
        page += ".Ss jobparser " + subcommand.name + ' ' + roff(subcommand.usage) + '\n';
        page += roffParagraphs(subcommand.summary) + roffOptions(subcommand.options);
        if (!subcommand.steps.empty())
            page += "The steps are\n" + roffOptions(subcommand.steps) + ".Ar LANGUAGE\nis one of " +
                    roff(languages()) + ".\n";
    }
    page += ".Sh FILES\n.Bl -tag -width Ds\n.It Pa ParserConfig/config.ini\n"
            "beside the tool: tolerance of paper sizes and further names of papers\n"
            ".It Pa FILE.meta.json\nwhere the metadata of a job belongs\n"
            ".It Pa share/jobparser/schema/record.schema.json , metadata.schema.json\n"
            "below the prefix: the form of the JSON, and what its numbers stand for\n.El\n";
    page += ".Sh EXIT STATUS\n" + roffStatuses(sectionOf("Exit status:"));
    page += ".Sh EXAMPLES\n" + roffLiteral(sectionOf("Examples:"));
    page += ".Sh SEE ALSO\n.Xr JobParserC 3 ,\n.Xr ZemJobProcessor 8\n";
    return page;
}

// Completion.

std::string namesOf(const std::vector<OptionDescription>& options)
{
    std::string names;
    for (const OptionDescription& option : options)
        names.append(names.empty() ? "" : " ").append(option.name);
    return names;
}

/// The options that are followed by something that is no file, as a pattern of the shell.
std::string bashPattern(const SubcommandDescription& subcommand)
{
    std::string pattern;
    for (const OptionDescription& option : all(subcommand)) {
        if (!option.arguments.empty() && !isFile(option.arguments.front()))
            pattern.append(pattern.empty() ? "" : "|").append(option.name);
    }
    return pattern;
}

std::string bashCompletion()
{
    std::string names;
    std::string cases;
    for (const SubcommandDescription& subcommand : JobParser::Tool::describeCommandLine()) {
        names.append(subcommand.name).append(" ");
        cases += "        " + subcommand.name + ")\n            options='" + namesOf(all(subcommand)) + "'\n";
        const std::string pattern = bashPattern(subcommand);
        if (!pattern.empty())
            cases += "            case $before in " + pattern + ") takes=text ;; esac\n";
        cases += "            ;;\n";
    }
    return "# Completion of jobparser for bash.\n"
           "_jobparser()\n{\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} options= takes=file\n"
           "    COMPREPLY=()\n"
           "    if [ \"$COMP_CWORD\" = 1 ]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W '" +
           names +
           "--help --version' -- \"$word\")\n        return\n    fi\n"
           "    case ${COMP_WORDS[1]} in\n" +
           cases +
           "    esac\n"
           "    if [ \"$before\" = --wrap ]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W '" +
           languages() +
           "' -- \"$word\")\n"
           "    elif [ \"$takes\" = file ] && [[ $word == -* ]]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
           "    elif [ \"$takes\" = file ]; then\n"
           "        compopt -o filenames 2>/dev/null\n"
           "        mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
           "    fi\n"
           "}\n"
           "complete -F _jobparser jobparser\n";
}

/// Text between square brackets of a specification.
std::string zshText(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '\'')
            escaped += "'\\''";
        else if (c == '[' || c == ']' || c == ':' || c == '\\')
            escaped.append("\\").append(1, c);
        else
            escaped += c;
    }
    return escaped;
}

std::string zshArgument(const std::string& argument)
{
    const std::string action = isFile(argument)         ? "_files"
                               : argument == "LANGUAGE" ? "(" + languages() + ")"
                                                        : " ";
    return ":" + zshText(argument) + ":" + action;
}

std::string zshCompletion()
{
    std::string names;
    std::string cases;
    for (const SubcommandDescription& subcommand : JobParser::Tool::describeCommandLine()) {
        const std::string summary = linesOf(subcommand.summary).front();
        names += "        '" + subcommand.name + ":" + zshText(summary) + "'\n";
        cases += "    " + subcommand.name + ")\n        _arguments -S \\\n";
        for (const OptionDescription& option : all(subcommand)) {
            cases += "            '*" + option.name + "[" + zshText(option.help) + "]";
            for (const std::string& argument : option.arguments)
                cases += zshArgument(argument);
            cases += "' \\\n";
        }
        cases += "            '*:FILE:_files'\n        ;;\n";
    }
    return "#compdef jobparser\n"
           "# Completion of jobparser for zsh.\n"
           "local -a subcommands\n"
           "if (( CURRENT == 2 )); then\n"
           "    subcommands=(\n" +
           names +
           "    )\n"
           "    _describe subcommand subcommands\n"
           "    _arguments '--help[what there is]' '--version[the version]'\n"
           "    return\n"
           "fi\n"
           "local subcommand=$words[2]\n"
           "shift words\n"
           "(( CURRENT-- ))\n"
           "case $subcommand in\n" +
           cases + "esac\n";
}

std::string made(std::string_view what)
{
    if (what == "man")
        return manualPage();
    return what == "bash" ? bashCompletion() : zshCompletion();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    try {
        const std::string text = made(argv[1]);
        Torv::IO::OutputFile file(argv[2]);
        file.stream().write(text.data(), static_cast<std::uint32_t>(text.size()));
        file.commit();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
