#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "JobParser/Export.h"

#include "Torv/Security/Endecryptor/Options.h"

namespace JobParser
{

/// What is set up once for the whole process.
class JOBPARSER_EXPORT Library
{
public:
    /// How worker processes are run.
    struct Options {
        std::string directory;               ///< Of the worker executable.
        std::int32_t processCount = 0;       ///< Worker processes; 0 starts none.
        std::int32_t poolLimit = 0;          ///< Requests that one worker serves before it is replaced.
        std::int32_t grayscaleTolerance = 0; ///< Sent with every request to parse.
        std::int64_t poolDeadline = 0;       ///< Milliseconds that a request may take; 0 for no limit.
        std::string executable;              ///< File name of the worker.
        std::string arguments;               ///< Command line of the worker.
        /// How job files are encrypted; absent if they are not.
        std::optional<Torv::Security::Endecryptor::Options> decryptor;
    };

    /// Registers the chunk classes, at the first call. To be finished before the first parse, and before
    /// metadata is written or read, on any thread. Throws Torv::GenericException if a class of the same name
    /// is registered already.
    static void init(const Options& options);

private:
    static bool m_inited;
};

} // namespace JobParser
