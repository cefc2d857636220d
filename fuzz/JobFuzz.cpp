// Any bytes are a job: it is parsed, saved, stored as metadata and made again from them.

#include <memory>

#include "FuzzSupport.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"
#include "PdfSummaryCheck.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"

namespace
{

std::string saved(const JobParser::Job& job, JobParser::JobFile& file)
{
    Torv::IO::StringStream stream;
    job.save(file, stream);
    return stream.str();
}

// What was parsed has only one way: nothing from here on may throw at all.
void checkParsed(const JobParser::JobParserResult& result, JobParser::JobFile& file, std::string_view bytes)
{
    const JobParser::Job& job = *result.job;
    const std::string text = saved(job, file);
    Fuzz::require(static_cast<std::int64_t>(text.size()) == job.size(),
                  "a job saves as many bytes as it says");
    Fuzz::require(result.parsed || text == bytes, "a job that failed to parse saves byte for byte");
    job.checkChunkSizes(file);

    if (!Fuzz::hasReloadableSummaries(job))
        return;
    const std::string json = job.toJson();
    const JobParser::Job again(Torv::Json::parse(json));
    Fuzz::require(again.toJson() == json, "metadata read and written again stays the same");
    Fuzz::require(saved(again, file) == text, "a job made from its metadata saves the same bytes");

    Torv::Log::LogString log;
    job.dump(log);
    Fuzz::require(!log.getAndClear().empty(), "a dump says something");
}

void parseAndCheck(std::string_view bytes)
{
    const Fuzz::MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    JobParser::Parser parser(std::make_shared<Torv::Log::LogString>(), JobParser::paperList, false);
    std::shared_ptr<JobParser::JobParserResult> result;
    if (!Fuzz::survives([&] { result = parser.parse(file, {JobParser::Pdl::Detect, true, true}); }))
        return;
    const bool checked = Fuzz::survives([&] { checkParsed(*result, file, bytes); });
    Fuzz::require(checked, "a parsed job can be saved, stored and made again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    parseAndCheck(Fuzz::asText({data, size}));
    return 0;
}
