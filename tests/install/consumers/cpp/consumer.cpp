#include <JobParser/JobFile.h>
#include <JobParser/Library.h>
#include <JobParser/Parser.h>
#include <Torv/Log/LogNull.h>
#include <cstdio>
#include <memory>

int main(int, char** argv)
{
    JobParser::Library::init({});
    JobParser::JobFile file;
    file.open(argv[1]);
    JobParser::Parser parser(std::make_shared<Torv::Log::LogNull>(), JobParser::paperList, false);
    const auto result = parser.parse(file, {JobParser::Pdl::Detect, true, true});
    std::puts(result->job->jobInfo.toJson().c_str());
}
