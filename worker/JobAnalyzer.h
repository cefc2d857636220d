#pragma once

#include <optional>
#include <string>
#include <vector>

#include "worker/BodyFinder.h"
#include "worker/Ghostscript.h"
#include "worker/JobFacts.h"

#include "Torv/Security/Endecryptor/Options.h"

struct fz_context;

namespace JobParser::Worker
{

class BodyReader;
struct ParseRequest;

/// How job files are encrypted; nothing if they are not.
using Encryption = std::optional<Torv::Security::Endecryptor::Options>;

/// Opens a job file. Throws WorkerException if it cannot be read.
void openJob(JobFile& file, const std::string& path, const Encryption& encryption);

/// Learns what a job is: finds its bodies, has each one read by the engine of its language, and adds up.
class JobAnalyzer
{
public:
    /// The engines outlive the analyzer.
    JobAnalyzer(fz_context* context, Ghostscript& ghostscript)
        : m_context(context), m_ghostscript(ghostscript)
    {
    }

    /// Throws WorkerException if the file cannot be read, has no body or a malformed one.
    JobFacts analyze(const ParseRequest& request, const Encryption& encryption);

private:
    JobFacts analyzeBody(BodyReader& reader, Pdl pdl, int tolerance);

    fz_context* m_context;
    Ghostscript& m_ghostscript;
};

} // namespace JobParser::Worker
