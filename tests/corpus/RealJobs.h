#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Torv/Variant.h"

namespace Corpus
{

/// A job that a driver, a filter or a generator wrote, with what is known of it from how it was made.
struct RealJob {
    std::string name;     ///< Of the file, without its folder.
    std::string path;     ///< Of the file.
    std::string bytes;    ///< The whole file.
    Torv::Variant expect; ///< The facts by name.
    std::int64_t size;    ///< Bytes that the file had when it was collected.
};

/// The folder of the jobs: JOBPARSER_CORPUS of the environment, or JOBPARSER_DEFAULT_CORPUS. Empty if it
/// holds no list of jobs.
std::string folder();

/// The jobs in the folder's list, in its order; read once.
const std::vector<RealJob>& jobs();

} // namespace Corpus
