#pragma once

#include <memory>
#include <string>

#include "JobParser/JobFile.h"
#include "JobParser/Parser.h"
#include "tools/CommandLine.h"

namespace JobParser
{
class PaperSizeManager;
}

namespace Torv::IO
{
class MappingGroup;
}

namespace JobParser::Tool
{

/// Whether worker processes are started.
enum class Workers { Started, None };

/// Sets the library up as the options say. Throws what Library::init throws.
void initLibrary(const Options& options, Workers workers);

/// Reads the names of papers from the file of the options, or from the one beside the tool if that is there.
/// Throws Torv::GenericException if the file of the options cannot be read.
void configure(PaperSizeManager& papers, const Options& options);

/// Opens a job as the options say, an unencrypted one within the group, which may be null. Throws as
/// JobFile::open and JobFile::openEncrypted do.
void openJob(JobFile& file, const std::string& path, const Options& options,
             std::shared_ptr<Torv::IO::MappingGroup> group = nullptr);

Parser::ParseOptions parseOptionsOf(const Options& options);

/// What went wrong, for people: some exceptions of a parse say nothing, or only the name of a function.
std::string messageOf(const std::exception& error);

/// Tells on standard error that a file failed.
void reportFailure(const std::string& file, const std::exception& error);

} // namespace JobParser::Tool
