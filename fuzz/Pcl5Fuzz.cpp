// Any bytes are a PCL 5 body, bare and behind PJL.

#include <memory>
#include <string>

#include "FuzzSupport.h"
#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogNull.h"

namespace
{

std::string saved(const JobParser::Job& job, JobParser::JobFile& file)
{
    Torv::IO::StringStream stream;
    job.save(file, stream);
    return stream.str();
}

void checkParsed(const JobParser::JobParserResult& result, JobParser::JobFile& file, const std::string& bytes)
{
    const JobParser::Job& job = *result.job;
    const std::string text = saved(job, file);
    Fuzz::require(static_cast<std::int64_t>(text.size()) == job.size(),
                  "a job saves as many bytes as it says");
    Fuzz::require(result.parsed || text == bytes, "a job that failed to parse saves byte for byte");
    const JobParser::Job again(Torv::Json::parse(job.toJson()));
    Fuzz::require(saved(again, file) == text, "a job made from its metadata saves the same bytes");
}

void parseAndCheck(const std::string& bytes)
{
    const Fuzz::MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    const bool checked = Fuzz::survives([&] {
        const auto result = parser.parse(file, {JobParser::Pdl::Detect, true, true});
        checkParsed(*result, file, bytes);
    });
    Fuzz::require(checked, "any body gives a job that can be saved and made again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string body(Fuzz::asText({data, size}));
    parseAndCheck("\x1B"
                  "E" +
                  body);
    parseAndCheck("\x1B%-12345X@PJL ENTER LANGUAGE=PCL\r\n" + body + "\x1B%-12345X");
    return 0;
}
