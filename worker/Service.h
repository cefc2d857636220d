#pragma once

#include <memory>
#include <optional>
#include <string>

#include "worker/FitzContext.h"
#include "worker/Ghostscript.h"
#include "worker/JobAnalyzer.h"
#include "worker/Request.h"
#include "worker/Sandbox.h"

namespace JobParser::Worker
{

class ServiceProcess;

/// What a worker process was started with.
struct ServiceOptions {
    Limits limits;
    Encryption encryption; ///< Of all job files.
};

/// Answers requests, each one in a child process of its own.
///
/// Engines stay warm: MuPDF in this process, and Ghostscript, which takes longer to start, in another one
/// that lives from the first PostScript job on. A process belongs to one thread.
class Service
{
public:
    explicit Service(const ServiceOptions& options);
    ~Service();

    /// The answer to a request as one line of JSON, without its end; nothing if the request is to end.
    std::optional<std::string> answer(const std::string& request);

    /// Gets ready for the next request while nobody waits.
    void prepare();

    /// Starts Ghostscript in this process, which answers requests for PostScript itself from then on. Throws
    /// WorkerException.
    void warmUp();

private:
    std::string parse(const ParseRequest& request, const std::string& text);
    std::string convert(const ConvertRequest& request, const std::string& text);
    std::string work(const std::string& message);

    ServiceOptions m_options;
    FitzContext m_fitz;
    Ghostscript m_ghostscript;
    bool m_isWarm = false;
    std::unique_ptr<ServiceProcess> m_postScript;
    Sandbox m_sandbox;
    std::optional<std::string> m_tidied; ///< The folder of output where remains were looked for last.
};

} // namespace JobParser::Worker
