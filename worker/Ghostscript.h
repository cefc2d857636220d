#pragma once

#include <memory>
#include <string>
#include <vector>

#include "worker/JobFacts.h"

namespace JobParser::Worker
{

class BodyReader;

/// The PostScript interpreter of Ghostscript, kept from files, programs and the network (-dSAFER).
///
/// It runs one job and is not to be used again: a job may change whatever it likes in it. What is wanted for
/// each job is a copy of a process in which it was started. There is one in a process, whose environment it
/// changes.
class Ghostscript
{
public:
    Ghostscript();
    ~Ghostscript();
    Ghostscript(const Ghostscript&) = delete;
    Ghostscript& operator=(const Ghostscript&) = delete;

    /// Gets the interpreter ready to look at pages. Does nothing if it is. Throws WorkerException.
    void start();

    /// Runs a job and looks at the pixels of its pages. Throws WorkerException if the job fails before its
    /// first page: a job that fails later prints what it has.
    JobFacts analyze(BodyReader& reader, int tolerance);

    /// Runs a job into a file of another format, in an interpreter of its own. Throws WorkerException.
    ///
    /// `options` are those of the command line, such as the device. Jobs may read and write all files in the
    /// folder of `outPath`.
    void convert(BodyReader& reader, const std::vector<std::string>& options, const std::string& outPath);
    /// The same with a file, which may be PDF, too.
    void convertFile(const std::string& inPath, const std::vector<std::string>& options,
                     const std::string& outPath);

private:
    class Pages;

    void open(const std::vector<std::string>& options, const std::string& temporaryFolder);
    int run();
    int finish();
    [[noreturn]] void fail(int code) const;

    void* m_instance = nullptr;
    std::unique_ptr<Pages> m_pages;
};

} // namespace JobParser::Worker
