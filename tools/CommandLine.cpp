#include "tools/CommandLine.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <getopt.h>
#include <string_view>
#include <system_error>
#include <utility>

namespace JobParser::Tool
{
namespace
{

constexpr std::string_view helpText = R"(Tells what a spooled print job is, without rendering it.

Usage: jobparser SUBCOMMAND [OPTION...] FILE...

Subcommands:
  info FILE...       one line of JSON a file: language, pages, copies, paper, finishing
  scan PATH...       the same for files and whole folders, on all cores
  meta FILE          the job as metadata: the record and every chunk of the file, as JSON
  dump FILE          the job's chunks, one a line, for people
  check FILE         tests that every chunk writes as many bytes as it says
  convert FILE OUT --format N
                     has a worker process convert the job
  save FILE -o OUT   writes the job's bytes, chunk by chunk
  rewrite FILE -o OUT STEP...
                     changes the job and writes it: wrap it into PJL, set, add and remove PJL
                     commands, ask for finishing, strip PJL or PRESCRIBE, rename
  show FILE          writes one page of HTML that shows the job: record, file and chunks

  jobparser SUBCOMMAND --help   what a subcommand takes
  jobparser --version           the version

Examples:
  jobparser info spool/*.prn | jq .copies
  jobparser scan spool | jq -r 'select(.info.colorCount > 0).path'
  jobparser meta job.prn --beside
  jobparser save job.prn --from-meta job.prn.meta.json -o again.prn
  jobparser rewrite job.prn -o job.prn --set DUPLEX=ON --set BINDING=LONGEDGE
  jobparser show job.prn -o job.html

Exit status:
  0  done
  1  failed; the reason is on standard error, and nothing half-written stays
  2  the command line is wrong
  3  not info, scan and convert: the job is malformed; it was taken as one raw stretch, the output
     is written all the same, and the cause is on standard error
)";

struct SubcommandRow {
    std::string_view name;
    Subcommand subcommand;
    std::string_view usage;
    std::string_view summary;
};

constexpr std::array subcommandRows = {
    SubcommandRow{"info", Subcommand::Info, "FILE...",
                  "Prints the record of each job, one line of JSON a file.\n"
                  "A file that fails is reported on standard error, and the next one follows.\n"},
    SubcommandRow{"scan", Subcommand::Scan, "[OPTION...] PATH...",
                  "Prints a line of JSON for each file, and for every file below each folder:\n"
                  "{\"path\":...,\"info\":...}, or {\"path\":...,\"error\":...} for a file that fails.\n"
                  "Within a folder names are in order of their bytes. Links to folders are not followed\n"
                  "there, and what is no regular file is passed over.\n"},
    SubcommandRow{"meta", Subcommand::Meta, "[OPTION...] FILE",
                  "Writes the job as metadata, from which --from-meta makes the job again.\n"},
    SubcommandRow{"dump", Subcommand::Dump, "[OPTION...] FILE", "Prints the job's chunks, one a line.\n"},
    SubcommandRow{"check", Subcommand::Check, "[OPTION...] FILE",
                  "Tests that every chunk of the job writes as many bytes as it says.\n"},
    SubcommandRow{
        "convert", Subcommand::Convert, "[OPTION...] FILE OUT --format N",
        "Has a worker process convert the job. Formats of the usual worker: 0 PDF, 1 PNG, 2 JPEG,\n"
        "3 TIFF, 4 text, 5 PostScript; PNG and JPEG make a file for each page: of OUT page.png it is\n"
        "page-1.png and so on.\n"},
    SubcommandRow{"save", Subcommand::Save, "[OPTION...] FILE -o OUT",
                  "Writes the job's bytes, chunk by chunk.\n"
                  "OUT may be FILE: it changes only when the new bytes are complete.\n"},
    SubcommandRow{
        "rewrite", Subcommand::Rewrite, "[OPTION...] FILE -o OUT STEP...",
        "Changes the job by the steps, in the order in which they are given, and writes its bytes.\n"
        "OUT may be FILE: it changes only when the new bytes are complete.\n"
        "\n"
        "New commands stand before the job's first ENTER LANGUAGE line; where there is none, they are\n"
        "left out. Commands, names and values are compared in any case. Texts go in as they are: only\n"
        "the steps that show quotation marks below write them. A step that finds nothing to do is no\n"
        "failure.\n"},
    SubcommandRow{
        "show", Subcommand::Show, "[OPTION...] FILE",
        "Writes one page of HTML, which needs nothing else: the job's record in words, the file as a\n"
        "bar of its chunks, and the chunks as a list to search. What the job says is only text there.\n"},
};

/// The subcommands that take an option, as bits.
using Takers = unsigned;

constexpr Takers taker(Subcommand subcommand)
{
    return 1U << static_cast<unsigned>(subcommand);
}

constexpr Takers metaOnly = taker(Subcommand::Meta);
constexpr Takers rewriteOnly = taker(Subcommand::Rewrite);
constexpr Takers scanOnly = taker(Subcommand::Scan);
constexpr Takers convertOnly = taker(Subcommand::Convert);
constexpr Takers writers =
    taker(Subcommand::Meta) | taker(Subcommand::Save) | rewriteOnly | taker(Subcommand::Show);
constexpr Takers parsers = writers | taker(Subcommand::Dump) | taker(Subcommand::Check);
constexpr Takers walkers = parsers | scanOnly;
constexpr Takers askers = walkers | convertOnly;
constexpr Takers everybody = askers | taker(Subcommand::Info);

template <typename Number> bool readNumber(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

template <typename Number> bool readFrom(Number least, std::string_view text, Number& number)
{
    return readNumber(text, number) && number >= least;
}

bool readFormat(std::string_view text, Options& options)
{
    std::uint32_t number = 0;
    options.hasFormat = readNumber(text, number) && number <= 0x7FFFFFFF;
    options.conversion.conversionFormat = static_cast<ConversionFormat>(number);
    return options.hasFormat;
}

bool readLevel(std::string_view text, std::optional<int>& level)
{
    return readNumber(text, level.emplace()) && *level >= 0;
}

struct OptionRow {
    const char* name;     ///< Behind the dashes: two, or one for a single letter.
    const char* argument; ///< What stands behind it, for the help; null if nothing does.
    Takers takers;
    std::string_view help;
    bool (*apply)(Options& options, const char* text); ///< False if the text makes no sense.
    bool isSecret = false;                             ///< The text is not to be shown.
};

constexpr std::array optionRows = {
    OptionRow{"o", "OUT", writers, "where to write; meta, show: default is standard output",
              [](Options& options, const char* text) { return options.output.emplace(text), true; }},
    OptionRow{"beside", nullptr, metaOnly, "write to FILE.meta.json, where hosts look for it",
              [](Options& options, const char*) { return options.beside = true; }},
    OptionRow{"meta-out", "FILE", rewriteOnly,
              "write the changed job's metadata, too; it goes with the old bytes, not with those of OUT",
              [](Options& options, const char* text) { return options.metadataOutput.emplace(text), true; }},
    OptionRow{"pdl", "N", walkers, "the number of the job's language; default: -1, which finds out",
              [](Options& options, const char* text) { return readNumber(text, options.pdl); }},
    OptionRow{"no-collect", nullptr, walkers,
              "leave counts, paper, duplex, finishing and toner saving out of the record",
              [](Options& options, const char*) { return !(options.collectJobInfo = false); }},
    OptionRow{"refuse-restricted", nullptr, walkers, "fail for an encrypted or malformed PDF",
              [](Options& options, const char*) { return !(options.allowRestrictedPdf = false); }},
    OptionRow{"no-worker", nullptr, walkers, "ask no worker process for what the job does not tell",
              [](Options& options, const char*) { return !(options.worker.isUsed = false); }},
    OptionRow{"config", "FILE", walkers, "names of papers; default: ParserConfig/config.ini beside the tool",
              [](Options& options, const char* text) { return options.config.emplace(text), true; }},
    OptionRow{"log", "LEVEL", walkers,
              "show log messages of level 0 to LEVEL on standard error: 1 errors, 3 warnings, 4 all",
              [](Options& options, const char* text) { return readLevel(text, options.logLevel); }},
    OptionRow{"from-meta", "META", parsers, "load the job from this metadata; FILE still gives the bytes",
              [](Options& options, const char* text) { return options.metadata.emplace(text), true; }},
    OptionRow{"worker", "PATH", askers, "the worker's executable; default: ZemJobProcessor beside the tool",
              [](Options& options, const char* text) { return options.worker.path.emplace(text), true; }},
    OptionRow{"worker-args", "TEXT", askers, "the worker's command line, split at blanks outside quotes",
              [](Options& options, const char* text) { return options.worker.arguments = text, true; }},
    OptionRow{
        "worker-processes", "N", askers, "how many workers run; default: 2",
        [](Options& options, const char* text) { return readFrom(0, text, options.worker.processCount); }},
    OptionRow{"deadline", "MS", askers,
              "how long a worker may take for a job; default: 300000, 0 is for ever",
              [](Options& options, const char* text) {
                  return readFrom<std::int64_t>(0, text, options.worker.deadline);
              }},
    OptionRow{"tolerance", "N", askers, "what the worker still takes for gray; default: 0",
              [](Options& options, const char* text) { return readNumber(text, options.worker.tolerance); }},
    OptionRow{"decrypt", "A:KEY:IV", askers,
              "jobs are encrypted: algorithm, as aes-128-cbc, key and vector in hexadecimal",
              [](Options& options, const char* text) {
                  return (options.decryption = readDecryption(text)).has_value();
              },
              true},
    OptionRow{"format", "N", convertOnly, "the number of the format to convert to",
              [](Options& options, const char* text) { return readFormat(text, options); }},
    OptionRow{
        "pages", "N", convertOnly, "the first N pages only; default: 0, which is all",
        [](Options& options, const char* text) { return readNumber(text, options.conversion.pageCount); }},
    OptionRow{"force-mono", nullptr, convertOnly, "in black and white",
              [](Options& options, const char*) { return options.conversion.forceMono = true; }},
    OptionRow{"width", "N", convertOnly, "greatest width of a picture, in pixels",
              [](Options& options, const char* text) {
                  return readNumber(text, options.conversion.imgBoundingBoxWidth);
              }},
    OptionRow{"height", "N", convertOnly, "greatest height of a picture, in pixels",
              [](Options& options, const char* text) {
                  return readNumber(text, options.conversion.imgBoundingBoxHeight);
              }},
    OptionRow{"dpi", "N", convertOnly, "resolution of pictures",
              [](Options& options, const char* text) { return readNumber(text, options.conversion.imgDpi); }},
    OptionRow{"jobs", "N", scanOnly, "threads; default: the number of cores",
              [](Options& options, const char* text) { return readFrom(1, text, options.jobs); }},
    OptionRow{"no-progress", nullptr, scanOnly, "show no progress on a terminal",
              [](Options& options, const char*) { return !(options.showsProgress = false); }},
    OptionRow{"help", nullptr, everybody, "this text", nullptr},
};

/// What getopt_long gives for the first row, above all letters and its own codes. The steps follow the
/// options.
constexpr int firstCode = 256;
constexpr int firstStepCode = firstCode + static_cast<int>(optionRows.size());
constexpr int codeOfArgument = 1;

constexpr std::string_view rewriteExamples = R"(
LANGUAGE is PCL, POSTSCRIPT, ESCP, PRESCRIBE, PCLXL, PDF, JPEG, XPS or URF.

Examples:
  jobparser rewrite job.prn -o job.prn --set HOLD=ON --set HOLDTYPE=PRIVATE --set HOLDKEY=1234
  jobparser rewrite job.pcl -o out.prn --wrap PCL 'Annual report' --set COPIES=2
  jobparser rewrite job.prn -o out.prn --finishing '"STAPLING"' '"LEFT_1PT"'
  jobparser rewrite job.prn -o out.prn --pjl-code '@PJL COMMENT checked\r\n'
)";

std::string withDashes(const OptionRow& row)
{
    return (std::string_view(row.name).size() == 1 ? "-" : "--") + std::string(row.name);
}

/// A name with what stands behind it, and what it means.
struct HelpLine {
    std::string call;
    std::string_view help;
};

HelpLine helpLineOf(std::string call, const char* first, const char* second, std::string_view help)
{
    for (const char* argument : {first, second}) {
        if (argument != nullptr)
            call.append(" ").append(argument);
    }
    return {std::move(call), help};
}

std::string aligned(const std::vector<HelpLine>& lines)
{
    std::size_t width = 0;
    for (const HelpLine& line : lines)
        width = std::max(width, line.call.size());
    std::string text;
    for (HelpLine line : lines) {
        line.call.resize(width, ' ');
        text.append("  ").append(line.call).append("  ").append(line.help).append("\n");
    }
    return text;
}

std::string helpOfSteps()
{
    std::vector<HelpLine> lines;
    for (const RewriteStepRow& row : rewriteStepRows())
        lines.push_back(helpLineOf("--" + std::string(row.name), row.first, row.second, row.help));
    return "\nSteps:\n" + aligned(lines) + std::string(rewriteExamples);
}

std::string helpOf(const SubcommandRow& subcommand)
{
    std::vector<HelpLine> lines;
    for (const OptionRow& row : optionRows) {
        if ((row.takers & taker(subcommand.subcommand)) != 0)
            lines.push_back(helpLineOf(withDashes(row), row.argument, nullptr, row.help));
    }
    std::string text = "Usage: jobparser " + std::string(subcommand.name) + ' ';
    text.append(subcommand.usage).append("\n\n").append(subcommand.summary).append("\n");
    text += aligned(lines);
    return subcommand.subcommand == Subcommand::Rewrite ? text + helpOfSteps() : text;
}

Answer wrong(const std::string& message, std::string_view subcommand)
{
    const std::string name = subcommand.empty() ? "jobparser" : "jobparser " + std::string(subcommand);
    return {"jobparser: " + message + "\nTry: " + name + " --help\n", true};
}

/// Reads the arguments of one subcommand, from its name on.
class Reader
{
public:
    explicit Reader(const SubcommandRow& subcommand);

    std::variant<Options, Answer> read(int argc, char** argv);

private:
    void addName(const char* name, bool takesArgument, int code);
    std::optional<Answer> take(int code, int argc, char** argv);
    std::optional<Answer> takeOption(const OptionRow& row);
    std::optional<Answer> takeStep(const RewriteStepRow& row, int argc, char** argv);
    std::optional<Answer> findContradiction() const;
    std::optional<Answer> findContradictionInConvert() const;
    Answer wrongHere(const std::string& message) const { return wrong(message, m_subcommand.name); }

    const SubcommandRow& m_subcommand;
    /// A dash gives files in the order in which they stand, whatever the environment says; a colon tells a
    /// missing argument from an unknown option.
    std::string m_letters = "-:";
    std::vector<option> m_names;
    Options m_options;
};

Reader::Reader(const SubcommandRow& subcommand) : m_subcommand(subcommand)
{
    m_options.subcommand = subcommand.subcommand;
    int code = firstCode;
    for (const OptionRow& row : optionRows) {
        if ((row.takers & taker(subcommand.subcommand)) != 0)
            addName(row.name, row.argument != nullptr, code);
        ++code;
    }
    if (subcommand.subcommand == Subcommand::Rewrite) {
        for (const RewriteStepRow& row : rewriteStepRows())
            addName(row.name, row.first != nullptr, code++);
    }
    m_names.push_back({});
}

void Reader::addName(const char* name, bool takesArgument, int code)
{
    if (name[1] == '\0')
        m_letters.append(name).append(takesArgument ? ":" : "");
    else
        m_names.push_back({name, takesArgument ? required_argument : no_argument, nullptr, code});
}

std::variant<Options, Answer> Reader::read(int argc, char** argv)
{
    opterr = 0;
    optind = 0; // Begins anew, with the letters read again.
    for (int code = 0; (code = getopt_long(argc, argv, m_letters.c_str(), m_names.data(), nullptr)) != -1;)
        if (const std::optional<Answer> answer = take(code, argc, argv))
            return *answer;
    m_options.files.insert(m_options.files.end(), argv + optind, argv + argc);
    if (const std::optional<Answer> answer = findContradiction())
        return *answer;
    return m_options;
}

std::optional<Answer> Reader::take(int code, int argc, char** argv)
{
    if (code == codeOfArgument) {
        m_options.files.emplace_back(optarg);
        return std::nullopt;
    }
    if (code == ':')
        return wrongHere(std::string(argv[optind - 1]) + " needs something behind it");
    if (code == '?') {
        const bool isLetter = optopt > 0 && optopt < firstCode; // It may stand among others.
        const std::string found = isLetter ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1];
        return wrongHere("There is no such option: " + found);
    }
    if (code >= firstStepCode)
        return takeStep(rewriteStepRows()[static_cast<std::size_t>(code - firstStepCode)], argc, argv);
    if (code >= firstCode)
        return takeOption(optionRows[static_cast<std::size_t>(code - firstCode)]);
    for (const OptionRow& row : optionRows)
        if (row.name[0] == code && row.name[1] == '\0')
            return takeOption(row);
    return std::nullopt;
}

std::optional<Answer> Reader::takeOption(const OptionRow& row)
{
    if (row.apply == nullptr)
        return Answer{helpOf(m_subcommand), false};
    if (!row.apply(m_options, optarg))
        return wrongHere(withDashes(row) + " does not take " + (row.isSecret ? "this" : optarg));
    return std::nullopt;
}

std::optional<Answer> Reader::takeStep(const RewriteStepRow& row, int argc, char** argv)
{
    const std::string name = "--" + std::string(row.name);
    RewriteStep step{row.kind, row.first != nullptr ? optarg : "", {}};
    if (row.second != nullptr) {
        if (optind >= argc)
            return wrongHere(name + " needs " + row.first + " and " + row.second + " behind it");
        step.second = argv[optind++];
    }
    if (!row.read(step))
        return wrongHere(name + " does not take " + optarg);
    m_options.steps.push_back(std::move(step));
    return std::nullopt;
}

std::optional<Answer> Reader::findContradiction() const
{
    if (m_options.files.empty())
        return wrongHere(m_options.subcommand == Subcommand::Scan ? "PATH is missing" : "FILE is missing");
    if (m_options.subcommand == Subcommand::Convert)
        return findContradictionInConvert();
    const bool takesMany =
        m_options.subcommand == Subcommand::Info || m_options.subcommand == Subcommand::Scan;
    if (m_options.files.size() > 1 && !takesMany)
        return wrongHere("One FILE only, not also " + m_options.files[1]);
    if (m_options.beside && m_options.output)
        return wrongHere("Either -o or --beside");
    const bool needsOutput =
        m_options.subcommand == Subcommand::Save || m_options.subcommand == Subcommand::Rewrite;
    if (needsOutput && !m_options.output)
        return wrongHere("-o is missing");
    if (m_options.output && m_options.output == m_options.metadataOutput)
        return wrongHere("-o and --meta-out name the same file");
    return std::nullopt;
}

std::optional<Answer> Reader::findContradictionInConvert() const
{
    if (m_options.files.size() < 2)
        return wrongHere("OUT is missing");
    if (m_options.files.size() > 2)
        return wrongHere("One FILE and one OUT only, not also " + m_options.files[2]);
    if (!m_options.hasFormat)
        return wrongHere("--format is missing");
    return std::nullopt;
}

OptionDescription descriptionOf(std::string name, const char* first, const char* second,
                                std::string_view help)
{
    OptionDescription described{std::move(name), {}, std::string(help)};
    for (const char* argument : {first, second}) {
        if (argument != nullptr)
            described.arguments.emplace_back(argument);
    }
    return described;
}

SubcommandDescription descriptionOf(const SubcommandRow& subcommand)
{
    SubcommandDescription described{
        std::string(subcommand.name), std::string(subcommand.usage), std::string(subcommand.summary), {}, {}};
    for (const OptionRow& row : optionRows) {
        if ((row.takers & taker(subcommand.subcommand)) != 0)
            described.options.push_back(descriptionOf(withDashes(row), row.argument, nullptr, row.help));
    }
    if (subcommand.subcommand == Subcommand::Rewrite) {
        for (const RewriteStepRow& row : rewriteStepRows())
            described.steps.push_back(
                descriptionOf("--" + std::string(row.name), row.first, row.second, row.help));
    }
    return described;
}

} // namespace

std::vector<SubcommandDescription> describeCommandLine()
{
    std::vector<SubcommandDescription> described;
    for (const SubcommandRow& row : subcommandRows)
        described.push_back(descriptionOf(row));
    return described;
}

std::string_view commandLineHelp()
{
    return helpText;
}

std::variant<Options, Answer> readCommandLine(int argc, char** argv)
{
    if (argc < 2)
        return Answer{std::string(helpText), true};
    const std::string_view first = argv[1];
    for (const SubcommandRow& row : subcommandRows)
        if (first == row.name)
            return Reader(row).read(argc - 1, argv + 1);
    if (argc > 2 && (first == "--help" || first == "--version"))
        return wrong(std::string(first) + " stands alone", {});
    if (first == "--help")
        return Answer{std::string(helpText), false};
    if (first == "--version")
        return Answer{"jobparser " JOBPARSER_VERSION "\n", false};
    return wrong("There is no subcommand " + std::string(first), {});
}

} // namespace JobParser::Tool
