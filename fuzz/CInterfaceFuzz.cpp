// A letter says what the rest is: `j` a job, `r` one that is refused if it is a malformed PDF, anything else
// metadata of a small job. Lines in front of it, up
// to an empty one, are steps: a digit or letter for the number, and two texts with `|` between them.
//
// Fuzz::setUp is left out: nothing but the interface itself may keep a failed assertion from ending the
// process.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "JobParser/JobParserC.h"

#include "Torv/Text.h"

namespace
{

constexpr std::size_t maxSteps = 16;
constexpr std::size_t chunksAtATime = 64;

struct StepTexts {
    std::int32_t kind;
    std::string first;
    std::string second;
};

std::vector<StepTexts> takeSteps(std::string_view& input)
{
    std::vector<StepTexts> steps;
    while (!input.empty() && steps.size() < maxSteps) {
        const std::string_view line = input.substr(0, input.find('\n'));
        input.remove_prefix(std::min(line.size() + 1, input.size()));
        if (line.empty())
            break;
        const auto texts = Torv::explode(line.substr(1), "|", 2, false);
        steps.push_back(
            {line.front() - '0', texts.empty() ? "" : texts.front(), texts.size() > 1 ? texts.back() : ""});
    }
    return steps;
}

/// A folder for metadata, whose file has to have its suffix.
class Folder
{
public:
    Folder()
    {
        if (::mkdtemp(m_path.data()) == nullptr)
            std::abort();
    }
    ~Folder() { std::filesystem::remove_all(m_path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string write(std::string_view content) const
    {
        const std::string path = m_path + "/x.meta.json";
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file) != content.size())
            std::abort();
        std::fclose(file);
        return path;
    }

private:
    std::string m_path = (std::filesystem::temp_directory_path() / "fuzz-XXXXXX").string();
};

/// A status comes with a text, and success with none.
template <typename Call> void take(Call call)
{
    char* error = nullptr;
    const JobParserStatus status = call(&error);
    Fuzz::require((status == JOBPARSER_OK) == (error == nullptr), "a failure has a text");
    Fuzz::require(error == nullptr || *error != '\0', "the text of a failure says something");
    Fuzz::require(status >= JOBPARSER_OK && status <= JOBPARSER_FAILED, "a status is known");
    jobParserFreeText(error);
}

void look(JobParserJob* job)
{
    char* text = nullptr;
    std::size_t count = 0;
    std::int32_t parsed = -1;
    std::array<JobParserChunk, chunksAtATime> chunks{};
    take([&](char** error) { return jobParserParsed(job, &parsed, &text, error); });
    Fuzz::require((parsed == 0) == (text != nullptr), "a malformed job has a cause");
    jobParserFreeText(text);
    take([&](char** error) { return jobParserMetadata(job, &text, nullptr, error); });
    jobParserFreeText(text);
    take([&](char** error) { return jobParserRecord(job, 1, &text, nullptr, error); });
    jobParserFreeText(text);
    take([&](char** error) { return jobParserChunkCount(job, &count, error); });
    take([&](char** error) {
        return jobParserChunks(job, 0, std::min(count, chunks.size()), chunks.data(), sizeof(JobParserChunk),
                               error);
    });
    take([&](char** error) { return jobParserSave(job, "/dev/null", error); });
}

void change(JobParserJob* job, const std::vector<StepTexts>& texts)
{
    std::vector<JobParserStep> steps;
    for (const StepTexts& step : texts)
        steps.push_back({step.kind, step.first.c_str(), step.second.c_str()});
    take([&](char** error) {
        return jobParserChange(job, steps.data(), steps.size(), sizeof(JobParserStep), error);
    });
    take([&](char** error) {
        return jobParserRewrite(job, steps.data(), steps.size(), sizeof(JobParserStep), "/dev/full", error);
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Folder folder;
    std::string_view input = Fuzz::asText({data, size});
    const std::vector<StepTexts> steps = takeSteps(input);
    const bool isRefused = input.starts_with('r');
    const bool isJob = isRefused || input.starts_with('j');
    input.remove_prefix(std::min<std::size_t>(1, input.size()));
    const Fuzz::MemoryFile file(isJob ? input : "\x1B%-12345X@PJL SET A=1\r\n some bytes of a job");
    const std::uint32_t refusal = isRefused ? JOBPARSER_PARSE_REFUSE_RESTRICTED : 0;
    const JobParserParseOptions options{sizeof options, JOBPARSER_LANGUAGE_DETECT,
                                        JOBPARSER_PARSE_NO_WORKER | refusal};
    JobParserJob* job = nullptr;
    const std::string path = file.path();
    take([&](char** error) {
        return isJob ? jobParserParse(path.c_str(), &options, &job, error)
                     : jobParserLoad(path.c_str(), folder.write(input).c_str(), &job, error);
    });
    if (job != nullptr) {
        look(job);
        change(job, steps);
        look(job);
    }
    jobParserFreeJob(job);
    return 0;
}
