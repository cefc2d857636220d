// The lines up to an empty one are steps of rewriting, what follows is a job. A step is a letter and up to
// three texts with `|` between them, as in `s|QTY|3`.
//
// The steps are done twice: as they stand on that job, which may be anything, and with printable texts on a
// well-formed job, which has to say afterwards what it was told.

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"
#include "JobParser/languages/ChunkPjlCmd.h"
#include "JobParser/languages/ChunkPrescribe.h"
#include "JobParser/model/ChunkText.h"
#include "JobParser/model/ChunkUel.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogNull.h"
#include "Torv/Text.h"

namespace
{

using JobParser::ChunkPjlCmd;
using JobParser::Job;
using JobParser::Pdl;

constexpr std::size_t maxSteps = 64;
constexpr std::size_t maxTextSize = 199;

struct Step {
    char kind = 0;
    std::array<std::string, 3> texts;
};

std::vector<Step> takeSteps(std::string_view& input)
{
    std::vector<Step> steps;
    while (!input.empty() && steps.size() < maxSteps) {
        const std::string_view line = input.substr(0, input.find('\n'));
        input.remove_prefix(std::min(line.size() + 1, input.size()));
        if (line.empty())
            break;
        Step& step = steps.emplace_back();
        step.kind = line.front();
        const auto texts = Torv::explode(line.substr(1), "|", step.texts.size() + 1, false);
        for (std::size_t i = 1; i < texts.size(); ++i)
            step.texts[i - 1] = texts[i];
    }
    return steps;
}

void apply(Job& job, const Step& step, Pdl pdl)
{
    const auto& [first, second, third] = step.texts;
    switch (step.kind) {
    case 'w': job.wrapIntoPjlJob(pdl, first); break;
    case 'p': job.setPjlJobParam(first, second); break;
    case 's': job.insertPjlCmd("SET", first.c_str(), second, false, false); break;
    case 'q': job.insertPjlCmd("SET", first.c_str(), second, false, true); break;
    case 'a': job.insertPjlCmd("SET", first.c_str(), second, true, false); break;
    case 'b': job.insertPjlCmd("SET", first.c_str(), second, true, true); break;
    case 'n': job.insertPjlCmd("SET", first.c_str(), static_cast<int>(second.size()), false, false); break;
    case 'c': job.insertPjlCmd(first.c_str(), second.c_str(), third, false, false); break;
    case 'f': job.insertHpPjlProcessingAction(first.c_str(), second.c_str()); break;
    case 't': job.insertPjlCode(first); break;
    case 'u': job.removePjlSetCmd(first.c_str(), second.c_str()); break;
    case '1': job.removePjlSetCmd(first.c_str(), false); break;
    case '*': job.removePjlSetCmd(first.c_str(), true); break;
    case 'x': job.removePjl(); break;
    case 'y': job.removePrescribe(); break;
    case 'j': job.setJobName(first); break;
    default: break;
    }
}

const ChunkPjlCmd* asPjl(const std::shared_ptr<JobParser::IChunk>& chunk)
{
    return dynamic_cast<const ChunkPjlCmd*>(chunk.get());
}

bool isCommand(const ChunkPjlCmd* cmd, std::string_view word)
{
    return cmd != nullptr && Torv::iequals(cmd->cmd, word);
}

/// Up to the first ENTER.
std::size_t enterOf(const Job& job)
{
    const auto enter =
        std::ranges::find_if(job.chunks, [](const auto& chunk) { return isCommand(asPjl(chunk), "ENTER"); });
    return static_cast<std::size_t>(enter - job.chunks.begin());
}

std::string saved(const Job& job, JobParser::JobFile& file)
{
    Torv::IO::StringStream stream;
    job.save(file, stream);
    return stream.str();
}

std::shared_ptr<JobParser::JobParserResult> parse(JobParser::JobFile& file)
{
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    return parser.parse(file, {Pdl::Detect, true, true});
}

void applyAndCheckModified(Job& job, const Step& step, Pdl pdl)
{
    const auto before = job.chunks;
    job.modified = false;
    apply(job, step, pdl);
    Fuzz::require(job.modified || job.chunks == before, "a changed list is modified");
    Fuzz::require(step.kind != 'p' || !job.modified, "a parameter that is set modifies no list");
}

void rewriteAnything(const std::vector<Step>& steps, std::string_view bytes)
{
    const Fuzz::MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    std::shared_ptr<JobParser::JobParserResult> result;
    if (!Fuzz::survives([&] { result = parse(file); }))
        return;
    Job& job = *result->job;
    for (const Step& step : steps) {
        const Pdl pdl = static_cast<Pdl>(static_cast<int>(step.texts[1].size()) - 1);
        applyAndCheckModified(job, step, pdl);
    }
    const bool checked = Fuzz::survives([&] {
        job.checkChunkSizes(file);
        const std::string text = saved(job, file);
        Fuzz::require(static_cast<std::int64_t>(text.size()) == job.size(), "a job saves as it says");
        const Job again(Torv::Json::parse(job.toJson()));
        Fuzz::require(saved(again, file) == text, "a changed job comes back from its metadata");
    });
    Fuzz::require(checked, "a changed job can be saved");
}

struct Body {
    Pdl pdl;
    std::string_view bytes;
};

constexpr std::array bodies{
    Body{Pdl::Pcl5, "\x1B"
                    "Etext\x0C\x1B"
                    "E"},
    Body{Pdl::PostScript, "%!PS-Adobe-3.0\n%%Pages: 1\nshowpage\n"},
    Body{Pdl::Prescribe, "!R! UNIT C; EXIT;"},
    Body{Pdl::Jpeg, "\xFF\xD8\xFF\xE0"},
};

// What is read behind these never makes a job malformed, whatever the value.
constexpr std::array<std::string_view, 8> settings{"QTY",    "COPIES", "HOLDKEY", "JOBATTR",
                                                   "DUPLEX", "STAPLE", "BINDING", "RENDERMODE"};
constexpr std::array<std::string_view, 3> parameters{"NAME", "DISPLAY", "PASSWORD"};
constexpr std::array<std::string_view, 3> types{"\"STAPLING\"", "\"PUNCH\"", "\"BOOKLET_MAKER\""};

template <typename Row> const Row& pick(std::span<const Row> table, std::string_view text)
{
    return table[(text.empty() ? 0 : static_cast<std::uint8_t>(text.back())) % table.size()];
}

std::string picked(std::span<const std::string_view> table, std::string_view text)
{
    return std::string(pick(table, text));
}

std::string printable(std::string_view text)
{
    std::string out(text.substr(0, maxTextSize));
    for (char& byte : out)
        byte = byte >= ' ' && byte <= '~' ? byte : '~';
    for (std::size_t place; (place = out.find("@PJL ")) != std::string::npos;)
        out[place] = '.';
    return out;
}

/// A printable text in quotation marks, without any inside.
std::string quoted(std::string_view text)
{
    std::string out = printable(text);
    std::ranges::replace(out, '"', '\'');
    return '"' + out + '"';
}

/// The step with what a host would pass to it.
Step wellFormed(const Step& step)
{
    Step out = step;
    auto& [first, second, third] = out.texts;
    switch (step.kind) {
    case 'w':
    case 'j': first = printable(first); break;
    case 'p':
        first = picked(parameters, first);
        second = quoted(second);
        break;
    case 'f':
        first = picked(types, first);
        second = quoted(second);
        break;
    case 't': first = "@PJL SET HOLDKEY=" + printable(first) + "\r\n"; break;
    case '1':
    case '*': first = picked(settings, first); break;
    case 'c': out.kind = 's'; [[fallthrough]];
    default: first = picked(settings, first); second = printable(second);
    }
    return out;
}

/// How many settings before ENTER have this name and, unless it is null, this value.
int countSettings(const Job& job, std::string_view name, const std::string* value)
{
    int count = 0;
    for (std::size_t i = 0; i < enterOf(job); ++i) {
        const ChunkPjlCmd* const cmd = asPjl(job.chunks[i]);
        std::string foundName;
        std::string foundValue;
        if (isCommand(cmd, "SET") && cmd->parseParamEqValue(foundName, foundValue) &&
            Torv::iequals(foundName, name) && (value == nullptr || Torv::iequals(foundValue, *value)))
            ++count;
    }
    return count;
}

/// Requires that these settings stand directly before ENTER, if there is one.
void requireBeforeEnter(const Job& job, const std::vector<std::string>& params)
{
    const std::size_t enter = enterOf(job);
    if (enter == job.chunks.size())
        return;
    Fuzz::require(enter >= params.size(), "what is inserted stands before ENTER");
    for (std::size_t i = 0; i < params.size(); ++i) {
        const ChunkPjlCmd* const cmd = asPjl(job.chunks[enter - params.size() + i]);
        Fuzz::require(isCommand(cmd, "SET") && cmd->param == params[i], "chunks say what was asked");
    }
}

void requireDone(const Job& job, const Step& step)
{
    const auto& [first, second, third] = step.texts;
    const int hasEnter = enterOf(job) < job.chunks.size() ? 1 : 0;
    switch (step.kind) {
    case 's':
        requireBeforeEnter(job, {first + '=' + second});
        Fuzz::require(countSettings(job, first, nullptr) == hasEnter, "a setting stands there once");
        break;
    case 'q': requireBeforeEnter(job, {first + "=\"" + second + '"'}); break;
    case 'a': requireBeforeEnter(job, {first + '=' + second}); break;
    case 'n': requireBeforeEnter(job, {first + '=' + std::to_string(second.size())}); break;
    case 'f':
        requireBeforeEnter(job, {"PROCESSINGACTION=APPEND", "PROCESSINGTYPE=" + first,
                                 "PROCESSINGOPTION=" + second, "PROCESSINGBOUNDARY=MOPY"});
        break;
    case 'u':
        Fuzz::require(countSettings(job, first, &second) == 0, "a setting that is unset is gone");
        break;
    case 'x':
        for (const auto& chunk : job.chunks)
            Fuzz::require(asPjl(chunk) == nullptr, "stripped jobs have no PJL");
        break;
    case 'j':
        for (const auto& chunk : job.chunks)
            Fuzz::require(!isCommand(asPjl(chunk), "JOB") || asPjl(chunk)->param == "NAME=\"" + first + '"',
                          "every JOB has the new name");
        break;
    default: break;
    }
}

/// The PJL lines of a job, with the white space that reading drops dropped. Inserted text stays in a job
/// whose PJL was stripped, and is none there.
std::vector<std::string> pjlLines(const Job& job)
{
    const bool hasPjl = enterOf(job) < job.chunks.size();
    std::vector<std::string> lines;
    for (const auto& chunk : job.chunks) {
        if (const ChunkPjlCmd* const cmd = asPjl(chunk))
            lines.push_back("@PJL " + cmd->cmd + ' ' + std::string(Torv::trim(cmd->param)));
        else if (const auto* const text = dynamic_cast<const JobParser::ChunkText*>(chunk.get());
                 text && hasPjl)
            lines.emplace_back(Torv::trim(text->text));
    }
    return lines;
}

void rewriteWellFormed(const std::vector<Step>& steps, std::string_view choice)
{
    const Body& body = pick<Body>(bodies, choice);
    const bool hasPjl = choice.size() % 2 == 1;
    std::string bytes(body.bytes);
    if (hasPjl)
        bytes = "\x1B%-12345X@PJL JOB NAME=\"a\"\r\n@PJL SET QTY=1\r\n@PJL ENTER LANGUAGE=" +
                JobParser::PdlUtils::toPjlEnterLang(body.pdl) + "\r\n" + bytes +
                "\x1B%-12345X@PJL EOJ NAME=\"a\"\r\n\x1B%-12345X";
    const Fuzz::MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    const auto result = parse(file);
    Job& job = *result->job;
    for (const Step& step : steps) {
        // PRESCRIBE that is announced and does not come is malformed.
        if (step.kind == 'y' && body.pdl == Pdl::Prescribe)
            continue;
        const Step meant = wellFormed(step);
        applyAndCheckModified(job, meant, body.pdl);
        requireDone(job, meant);
    }
    job.checkChunkSizes(file);

    const Fuzz::MemoryFile written(saved(job, file));
    JobParser::JobFile writtenFile;
    writtenFile.open(written.path());
    const auto again = parse(writtenFile);
    Fuzz::require(again->parsed, "a rewritten job parses");
    Fuzz::require(pjlLines(*again->job) == pjlLines(job), "a rewritten job says what was asked");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    std::string_view job = Fuzz::asText({data, size});
    const std::vector<Step> steps = takeSteps(job);
    rewriteAnything(steps, job);
    const bool rewritten = Fuzz::survives([&] { rewriteWellFormed(steps, job.substr(0, 3)); });
    Fuzz::require(rewritten, "well-formed jobs are rewritten without a failure");
    return 0;
}
