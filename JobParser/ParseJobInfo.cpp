#include "JobParser/ParseJobInfo.h"

#include <atomic>
#include <filesystem>

#include "JobParser/JobFile.h"
#include "JobParser/Library.h"
#include "JobParser/Parser.h"

#include "Torv/Data/IniFile.h"
#include "Torv/FileSystem/Path.h"
#include "Torv/Log/LogNull.h"

namespace JobParser
{
namespace
{

// The directory with its trailing separator. A path without a separator stays as it is.
std::string cutFileName(const std::string& path)
{
    const std::size_t separator = path.rfind('/');
    return separator == std::string::npos ? path : path.substr(0, separator + 1);
}

Library::Options defaultOptions(const std::string& directory)
{
    Library::Options options;
    options.directory = directory;
    options.processCount = 2;
    options.poolLimit = 500;
    options.grayscaleTolerance = 0;
    options.poolDeadline = 300000;
    options.executable = "ZemJobProcessor";
    return options;
}

struct KeptText {
    std::string text;
    const KeptText* next;
};

std::atomic<const KeptText*> keptTexts{nullptr};

// The text belongs to the host for the life of the process, so that nothing ever frees it. The chain tells
// leak detectors that this is meant.
const char* keepForever(std::string text)
{
    auto* kept = new KeptText{std::move(text), keptTexts.load()};
    while (!keptTexts.compare_exchange_weak(kept->next, kept)) {
    }
    return kept->text.c_str();
}

void loadConfigIfThere(const std::string& directory)
{
    const auto path = std::filesystem::path(directory) / "ParserConfig" / "config.ini";
    std::error_code ignored;
    if (std::filesystem::status(path, ignored).type() == std::filesystem::file_type::not_found)
        return;
    Torv::Data::IniFile ini;
    ini.open(path.string());
    paperList.loadConfig(ini);
}

} // namespace

PaperSizeManager paperList;
Parser parser(std::make_shared<Torv::Log::LogNull>(), paperList, true);

bool lazyInit()
{
    static std::atomic<int> done{0};
    if (done.exchange(1) != 0)
        return false;
    const std::string directory = cutFileName(Torv::FileSystem::Path::stdExePath());
    Library::init(defaultOptions(directory));
    loadConfigIfThere(directory);
    return true;
}

std::string parseJobInfo(std::string path)
{
    lazyInit();
    JobFile file;
    file.open(path);
    const auto result = parser.parse(file, {Pdl::Detect, true, true});
    return result->job->jobInfo.toJson();
}

} // namespace JobParser

const char* ParseJobInfo(const char* path)
{
    return JobParser::keepForever(JobParser::parseJobInfo(path));
}
