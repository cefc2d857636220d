#include "tools/Session.h"

#include <exception>
#include <filesystem>
#include <stdexcept>

#include "JobParser/Library.h"
#include "JobParser/paper/PaperSizeManager.h"
#include "tools/StandardErrorLog.h"

#include "Torv/Data/IniFile.h"
#include "Torv/GenericException.h"
#include "Torv/Security/Endecryptor/Decryptor.h"

namespace JobParser::Tool
{
namespace
{

constexpr const char* usualWorker = "ZemJobProcessor";
constexpr std::int32_t workerLimit = 500; // Requests, as in lazyInit.

std::filesystem::path toolFolder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

} // namespace

void initLibrary(const Options& options, Workers workers)
{
    const WorkerOptions& asked = options.worker;
    const std::filesystem::path worker =
        asked.path ? std::filesystem::path(*asked.path) : toolFolder() / usualWorker;
    Library::Options library;
    library.directory = worker.parent_path().string();
    library.executable = worker.filename().string();
    library.arguments = asked.arguments;
    library.processCount = workers == Workers::Started && asked.isUsed ? asked.processCount : 0;
    library.poolLimit = workerLimit;
    library.poolDeadline = asked.deadline;
    library.grayscaleTolerance = asked.tolerance;
    library.decryptor = options.decryption;
    Library::init(library);
}

void configure(PaperSizeManager& papers, const Options& options)
{
    const std::string path =
        options.config ? *options.config : (toolFolder() / "ParserConfig" / "config.ini").string();
    Torv::Data::IniFile ini;
    if (ini.open(path))
        papers.loadConfig(ini);
    else if (options.config)
        throw Torv::GenericException("Cannot read the configuration | path=" + path);
}

void openJob(JobFile& file, const std::string& path, const Options& options,
             std::shared_ptr<Torv::IO::MappingGroup> group)
{
    using Torv::Security::Endecryptor::Decryptor;
    if (options.decryption)
        file.openEncrypted(path, std::make_unique<Decryptor>(*options.decryption));
    else
        file.open(path, std::move(group));
}

Parser::ParseOptions parseOptionsOf(const Options& options)
{
    return {static_cast<Pdl>(options.pdl), options.collectJobInfo, options.allowRestrictedPdf};
}

std::string messageOf(const std::exception& error)
{
    const std::string text = error.what();
    const bool isNumber = dynamic_cast<const std::invalid_argument*>(&error) != nullptr ||
                          dynamic_cast<const std::out_of_range*>(&error) != nullptr;
    if (isNumber)
        return "A number cannot be read | error=" + text;
    return text.empty() ? "The job ends too early" : text;
}

void reportFailure(const std::string& file, const std::exception& error)
{
    printError("jobparser: " + file + ": " + messageOf(error));
}

} // namespace JobParser::Tool
