#pragma once

#include <string>

namespace JobParser
{
class Job;
class JobFile;
} // namespace JobParser

namespace Fuzz
{

/// How a job may come back when it is saved.
enum class SavedForm {
    Rewritten,  ///< Commands that were understood may be written anew.
    ByteForByte ///< Every byte of it is as it was.
};

/// Parses the bytes as a job, saves it, makes it again from its metadata and saves that. Ends the process if
/// one of them breaks its promise.
void parseAndCheck(const std::string& bytes, SavedForm form);

/// Ends the process unless the job saves as many bytes as it says; byte for byte, if it has no PJL lines.
void checkSaved(const JobParser::Job& job, JobParser::JobFile& file, const std::string& bytes);

} // namespace Fuzz
