#include "worker/PageSource.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

#include "worker/BodyReader.h"
#include "worker/Descriptor.h"
#include "worker/DocumentAnalyzer.h"
#include "worker/Ghostscript.h"
#include "worker/ParentDeath.h"
#include "worker/WorkerException.h"

namespace JobParser::Worker
{
namespace
{

constexpr const char* pclRenderer = "gpcl6";

/// The path of a program, looked for as the shell does; empty if there is none.
std::string findProgram(std::string_view name)
{
    const char* path = std::getenv("PATH");
    std::string_view folders = path == nullptr ? "" : path;
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        std::string program = std::string(folder).append("/").append(name);
        if (!folder.empty() && ::access(program.c_str(), X_OK) == 0)
            return program;
    }
    return {};
}

/// Runs a program to its end, or to that of this process. False if it failed.
bool runProgram(const std::string& program, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), program);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const pid_t self = ::getpid();
    const pid_t process = ::fork();
    if (process < 0)
        return false;
    if (process == 0) {
        endWithParent(self);
        ::execv(program.c_str(), pointers.data());
        ::_exit(EXIT_FAILURE);
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void copyBody(BodyReader& reader, const std::string& path)
{
    constexpr std::int64_t part = 1 << 20;
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    while (file.isOpen() && !reader.atEnd()) {
        const auto bytes = reader.take(part);
        if (!writeAll(file.get(), {reinterpret_cast<const char*>(bytes.data()), bytes.size()}))
            break;
    }
    if (!file.isOpen() || !reader.atEnd())
        throw WorkerException(ErrorCode::NoFile, "Cannot write file | path=" + path);
}

} // namespace

/// A document, and what it is read from.
struct PageSource::Source {
    Body body;
    std::unique_ptr<JobFile> file; ///< Null if the document stands in the job file.
    std::unique_ptr<BodyReader> reader;
    std::unique_ptr<FitzDocument> document;
};

PageSource::PageSource(fz_context* context, JobFile& file, std::string folder)
    : m_context(context), m_file(file), m_folder(std::move(folder))
{
}

PageSource::~PageSource() = default;

std::string PageSource::nextPath(const char* suffix)
{
    return m_folder + "part-" + std::to_string(++m_files) + suffix;
}

void PageSource::add(const Body& body)
{
    if (body.pdl == Pdl::Pdf || body.pdl == Pdl::Xps) {
        auto source = std::make_unique<Source>();
        source->body = body;
        source->reader = std::make_unique<BodyReader>(m_file, source->body);
        source->document = std::make_unique<FitzDocument>(openDocument(m_context, *source->reader, body.pdl));
        m_sources.push_back(std::move(source));
        return;
    }
    BodyReader reader(m_file, body);
    if (body.pdl == Pdl::PostScript) {
        const std::string path = nextPath(".pdf");
        Ghostscript().convert(reader, {"-sDEVICE=pdfwrite"}, path);
        addFile(path);
    } else {
        addFile(renderPcl(reader));
    }
}

void PageSource::addFile(const std::string& path)
{
    auto source = std::make_unique<Source>();
    source->file = std::make_unique<JobFile>();
    source->file->open(path);
    source->body = {Pdl::Pdf, {{0, source->file->m_realDataSize}}};
    source->reader = std::make_unique<BodyReader>(*source->file, source->body);
    source->document = std::make_unique<FitzDocument>(openDocument(m_context, *source->reader, Pdl::Pdf));
    m_sources.push_back(std::move(source));
}

std::string PageSource::renderPcl(BodyReader& reader)
{
    const std::string program = findProgram(pclRenderer);
    if (program.empty())
        throw WorkerException(ErrorCode::Missing, std::string("PCL is converted by the program ") +
                                                      pclRenderer + ", which is not installed");
    const std::string input = nextPath(".pcl");
    const std::string output = nextPath(".pdf");
    copyBody(reader, input);
    if (!runProgram(program, {"-dSAFER", "-dNOPAUSE", "-dBATCH", "-sDEVICE=pdfwrite",
                              "-sOutputFile=" + output, input}))
        throw WorkerException(ErrorCode::BadDocument, std::string("The program failed: ") + pclRenderer);
    return output;
}

int PageSource::forEach(std::uint32_t limit,
                        const std::function<void(fz_document*, fz_page*, int index)>& take) const
{
    int taken = 0;
    for (const auto& source : m_sources) {
        const int count = countPages(m_context, *source->document);
        for (int i = 0; i < count && (limit == 0 || static_cast<std::uint32_t>(taken) < limit); ++i) {
            const FitzPage page = loadPage(m_context, *source->document, i);
            take(source->document->get(), page.get(), i);
            ++taken;
        }
    }
    return taken;
}

} // namespace JobParser::Worker
