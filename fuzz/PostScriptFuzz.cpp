// Any bytes are a PostScript body: bare, behind PJL, as the body of a feature and as a first page.

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

// Behind a UEL there may be PJL and PCL, which may be written anew.
bool mayBeRewritten(std::string_view body)
{
    return body.find("\x1B%-12345X") != body.npos;
}

void checkSaved(const JobParser::Job& job, JobParser::JobFile& file, const std::string& bytes, bool exactly)
{
    const std::string text = saved(job, file);
    Fuzz::require(!exactly || text == bytes, "a body saves byte for byte");
    Fuzz::require(static_cast<std::size_t>(job.size()) == text.size(),
                  "a job saves as many bytes as it says");
    const JobParser::Job again(Torv::Json::parse(job.toJson()));
    Fuzz::require(saved(again, file) == text, "a job made from its metadata saves the same bytes");
}

// A matrix of words that are no numbers leaves the parser as a standard exception; then there is no job.
void parseAndCheck(const std::string& bytes, bool exactly)
{
    const Fuzz::MemoryFile memoryFile(bytes);
    JobParser::JobFile file;
    file.open(memoryFile.path());
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    std::shared_ptr<JobParser::JobParserResult> result;
    if (!Fuzz::survives([&] { result = parser.parse(file, {JobParser::Pdl::PostScript, true, true}); }))
        return;
    const bool checked = Fuzz::survives([&] { checkSaved(*result->job, file, bytes, exactly); });
    Fuzz::require(checked, "a parsed job can be saved and made again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string body(Fuzz::asText({data, size}));
    const bool exactly = !mayBeRewritten(body);
    parseAndCheck(body, exactly);
    parseAndCheck("\x1B%-12345X@PJL ENTER LANGUAGE=POSTSCRIPT\r\n" + body + "\n\x1B%-12345X", exactly);
    parseAndCheck("%%BeginFeature: *Staple 1\n" + body + "\n%%BeginFeature: *Punching x\n" + body +
                      "\n%%EndFeature\n",
                  exactly);
    parseAndCheck(body + "\n%%EndPageSetup\n" + body + "\n%%Page: 2 2\n", exactly);
    return 0;
}
