#include "JobCheck.h"

#include <memory>

#include "FuzzSupport.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"
#include "PdfSummaryCheck.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogNull.h"

namespace Fuzz
{
namespace
{

std::string saved(const JobParser::Job& job, JobParser::JobFile& file)
{
    Torv::IO::StringStream stream;
    job.save(file, stream);
    return stream.str();
}

void checkParsed(const JobParser::JobParserResult& result, JobParser::JobFile& file, const std::string& bytes,
                 SavedForm form)
{
    const JobParser::Job& job = *result.job;
    const std::string text = saved(job, file);
    require(static_cast<std::int64_t>(text.size()) == job.size(), "a job saves as many bytes as it says");
    require((result.parsed && form == SavedForm::Rewritten) || text == bytes,
            "what is not understood saves byte for byte");
    if (!hasReloadableSummaries(job))
        return;
    const JobParser::Job again(Torv::Json::parse(job.toJson()));
    require(saved(again, file) == text, "a job made from its metadata saves the same bytes");
}

} // namespace

void checkSaved(const JobParser::Job& job, JobParser::JobFile& file, const std::string& bytes)
{
    const std::string text = saved(job, file);
    require(static_cast<std::int64_t>(text.size()) == job.size(), "a job saves as many bytes as it says");
    job.checkChunkSizes(file);
    if (bytes.find("@PJL") == std::string::npos)
        require(text == bytes, "a job without PJL saves byte for byte");
}

void parseAndCheck(const std::string& bytes, SavedForm form)
{
    const MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    const bool checked = survives([&] {
        const auto result = parser.parse(file, {JobParser::Pdl::Detect, true, true});
        checkParsed(*result, file, bytes, form);
    });
    require(checked, "any body gives a job that can be saved and made again");
}

} // namespace Fuzz
