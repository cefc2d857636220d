#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "JobParser/ExtJobProcessor.h"
#include "tools/RewriteStep.h"
#include "tools/WorkerOptions.h"

namespace JobParser::Tool
{

enum class Subcommand { Info, Scan, Meta, Dump, Check, Save, Rewrite, Show, Convert };

/// What the command line asks for. The defaults are those of the options that are not given.
struct Options {
    Subcommand subcommand = Subcommand::Info;
    std::vector<std::string> files;            ///< At least one; exactly one but for Info, Scan and Convert.
    int pdl = -1;                              ///< The number of a Pdl.
    bool collectJobInfo = true;                ///< As in Parser::ParseOptions.
    bool allowRestrictedPdf = true;            ///< As in Parser::ParseOptions.
    bool beside = false;                       ///< Write the metadata where Job looks for it.
    std::optional<std::string> output;         ///< Where the output goes instead of standard output.
    std::optional<std::string> metadataOutput; ///< Where the metadata of a rewritten job goes, too.
    std::vector<RewriteStep> steps;            ///< In the order in which they are done.
    std::optional<std::string> config; ///< The configuration file to use instead of the one beside the tool.
    std::optional<std::string> metadata; ///< Where to load the job from instead of parsing it.
    std::optional<int> logLevel;         ///< The least important level to show; no log if absent.
    WorkerOptions worker;
    std::optional<Torv::Security::Endecryptor::Options> decryption; ///< How jobs are encrypted, if they are.
    ConvertParams conversion;                                       ///< For Convert, without the paths.
    bool hasFormat = false;    ///< The format of the conversion was given.
    int jobs = 0;              ///< Threads of Scan; 0 for the number of cores.
    bool showsProgress = true; ///< Scan, on a terminal.
};

/// A command line that is answered with a text: help, the version, or what is wrong with it.
struct Answer {
    std::string text; ///< Whole lines.
    bool isError;     ///< The command line is wrong.
};

/// Reads the arguments as main gets them. Not to be called on two threads at once.
std::variant<Options, Answer> readCommandLine(int argc, char** argv);

/// An option or a step, as the help shows it.
struct OptionDescription {
    std::string name;                   ///< With its dashes.
    std::vector<std::string> arguments; ///< What stands behind it, in capitals; up to two.
    std::string help;                   ///< One line.
};

struct SubcommandDescription {
    std::string name;
    std::string usage;   ///< What stands behind the name.
    std::string summary; ///< Whole lines.
    std::vector<OptionDescription> options;
    std::vector<OptionDescription> steps;
};

/// All that the command line takes, for manual and completion.
std::vector<SubcommandDescription> describeCommandLine();

/// What --help prints without a subcommand.
std::string_view commandLineHelp();

} // namespace JobParser::Tool
