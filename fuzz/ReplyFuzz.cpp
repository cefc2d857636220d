// What a worker process answers is any text. It may cost the facts of a job, and nothing else.

#include <memory>

#include "FuzzSupport.h"
#include "JobParser/JobInfo.h"
#include "JobParser/Parser.h"

#include "Torv/Async/ProcessPool/Arguments.h"
#include "Torv/Json/Json.h"
#include "Torv/Log/LogString.h"
#include "Torv/Variant.h"

namespace
{

void checkRecord(const JobParser::JobInfo& info)
{
    using JobParser::JobInfo;
    const int known = info.flags(JobInfo::AllFlags);
    const int possible =
        JobInfo::FlagPageCount | JobInfo::FlagCopies | JobInfo::FlagPaper | JobInfo::FlagOrientation;
    Fuzz::require((known & ~possible) == 0, "a reply tells of pages, copies, paper and orientation only");
    Fuzz::require(known == 0 || info.copies >= 1, "there is a copy at least");
    Fuzz::require(Torv::Json::parse(info.toJson()).isObject(), "the record is JSON");
}

void checkArguments(std::string_view text)
{
    std::size_t size = 0;
    for (const std::string& word : Torv::Async::ProcessPool::splitArguments(text))
        size += word.size();
    Fuzz::require(size <= text.size(), "a command line does not grow by splitting it");
    const std::string quoted = Torv::Json::_encodeString("a\\b\"c");
    Fuzz::require(Torv::Async::ProcessPool::splitArguments(quoted) == std::vector<std::string>{"a\\b\"c"},
                  "a JSON string is one word");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::setUp();
    const std::string_view text = Fuzz::asText({data, size});
    checkArguments(text);
    JobParser::JobInfo info;
    JobParser::Parser parser(std::make_shared<Torv::Log::LogString>(), JobParser::paperList, false);
    Fuzz::survives([&] { parser.processExternalParserResult(Torv::Json::parse(std::string(text)), info); });
    checkRecord(info);
    return 0;
}
