#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "JobParser/Export.h"

#include "Torv/Security/Endecryptor/Options.h"

namespace JobParser
{

class ExtJobProcessor;

/// What is set up once for the whole process: the chunk classes, and the worker processes. Any thread may
/// call any operation at any time.
class JOBPARSER_EXPORT Library
{
public:
    /// How worker processes are run.
    struct Options {
        std::string directory;               ///< Of the worker executable.
        std::int32_t processCount = 0;       ///< Worker processes; 0 starts none.
        std::int32_t poolLimit = 0;          ///< Requests that one worker serves; 0 for no limit.
        std::int32_t grayscaleTolerance = 0; ///< Sent with every request to parse.
        std::int64_t poolDeadline = 0;       ///< Milliseconds that a request may take; 0 for no limit.
        std::string executable;              ///< File name of the worker.
        std::string arguments;               ///< Command line of the worker, split at blanks outside quotes.
        /// How job files are encrypted, which the worker is told on its command line; absent if they are not.
        std::optional<Torv::Security::Endecryptor::Options> decryptor;
    };

    /// Registers the chunk classes, at the first call, and starts the worker processes. A later call replaces
    /// them: the former ones end when nobody asks them any more.
    ///
    /// To be finished before metadata is written or read, on any thread. That workers do not start shows when
    /// one is asked. Throws Torv::GenericException if a class of the same name is registered already, and
    /// what ProcessPool::start throws.
    static void init(const Options& options);

    /// The worker processes, which stay until init is called again. Throws Torv::GenericException before the
    /// first init.
    static ExtJobProcessor& extJobProcessor();

    /// The same, for as long as the caller wishes. Null before the first init.
    static std::shared_ptr<ExtJobProcessor> currentExtJobProcessor();

private:
    static bool m_inited;
    static std::shared_ptr<ExtJobProcessor> m_extJobProcessor;
};

} // namespace JobParser
