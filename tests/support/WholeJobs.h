#pragma once

#include <memory>
#include <string>
#include <utility>

#include "JobParser/Job.h"
#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"
#include "tests/support/OpenJob.h"

#include "Torv/IO/StringStream.h"
#include "Torv/Log/LogNull.h"
#include "Torv/Log/LogString.h"

/// Jobs as the driver parses them, and the forms that they take: bytes, lines of the log.
namespace WholeJobs
{

constexpr JobParser::Parser::ParseOptions detectAll{JobParser::Pdl::Detect, true, true};

inline std::shared_ptr<JobParser::JobParserResult>
parse(OpenJob& job, const JobParser::Parser::ParseOptions& options = detectAll,
      std::shared_ptr<Torv::Log::ILog> log = std::make_shared<Torv::Log::LogNull>())
{
    return JobParser::Parser(std::move(log), job.papers, false).parse(job.file, options);
}

inline std::string saved(const JobParser::Job& job, JobParser::JobFile& file)
{
    Torv::IO::StringStream stream;
    job.save(file, stream);
    return stream.str();
}

inline std::string dumped(const JobParser::Job& job)
{
    Torv::Log::LogString log;
    job.dump(log);
    return log.getAndClear();
}

} // namespace WholeJobs
