#pragma once

#include <map>
#include <string>

#include "JobParser/JobInfo.h"

#include "Torv/Variant.h"

namespace Corpus
{

/// Facts by their names in the list of jobs, each as plain text: "2", "yes", "long".
using Facts = std::map<std::string, std::string>;

/// The facts that are known from how a job was made, as far as a record can hold them.
Facts trueFacts(const Torv::Variant& expect);

/// The facts that a record knows. What it does not know is absent; a language that was not found is "".
Facts recordFacts(const JobParser::JobInfo& info);

} // namespace Corpus
