#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "JobParser/JobFile.h"
#include "worker/BodyFinder.h"
#include "worker/FitzContext.h"

namespace JobParser::Worker
{

class BodyReader;

/// The pages of all bodies of a job, one after the other, as MuPDF has them.
class PageSource
{
public:
    /// Temporary files are made below `folder`. `file` and `context` outlive the object.
    PageSource(fz_context* context, JobFile& file, std::string folder);
    ~PageSource();

    /// Adds a body; what is not PDF or XPS is made PDF. Throws WorkerException.
    void add(const Body& body);

    /// Calls `take` with each of the first `limit` pages (0 for all) and its document. Gives how many there
    /// were. Throws WorkerException and what `take` throws.
    int forEach(std::uint32_t limit,
                const std::function<void(fz_document*, fz_page*, int index)>& take) const;

private:
    struct Source;

    void addFile(const std::string& path);
    std::string renderPcl(BodyReader& reader);
    std::string nextPath(const char* suffix);

    fz_context* m_context;
    JobFile& m_file;
    std::string m_folder;
    int m_files = 0;
    std::vector<std::unique_ptr<Source>> m_sources;
};

} // namespace JobParser::Worker
