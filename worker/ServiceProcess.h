#pragma once

#include <string>
#include <sys/types.h>

#include "worker/Descriptor.h"

namespace JobParser::Worker
{

struct ServiceOptions;

/// A process that keeps Ghostscript warm and answers requests as a Service. It is started when it is first
/// asked, and again if it went away; it ends with this object and with this process.
class ServiceProcess
{
public:
    /// `options` outlives the object.
    explicit ServiceProcess(const ServiceOptions& options) : m_options(options) {}
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    /// The answer to the text of a request. Throws WorkerException if the process cannot answer.
    std::string ask(const std::string& request);

private:
    void start();
    void stop();
    [[noreturn]] void serve(int socket) const;

    const ServiceOptions& m_options;
    Descriptor m_socket;
    pid_t m_process = -1;
};

} // namespace JobParser::Worker
