#include "tests/corpus/RealJobs.h"

#include <array>
#include <cstdlib>
#include <filesystem>

#include "Torv/Data/FileReader.h"
#include "Torv/Json/Json.h"
#include "Torv/Text.h"

namespace Corpus
{
namespace
{

constexpr std::array variables{"JOBPARSER_CORPUS", "JOBPARSER_DEFAULT_CORPUS"};

std::string listOf(const std::string& folder)
{
    return folder + "/manifest.jsonl";
}

std::vector<RealJob> load()
{
    std::vector<RealJob> loaded;
    const std::string list = Torv::Data::FileReader::load(listOf(folder()));
    for (const std::string& line : Torv::explode(list, "\n", list.size() + 1, true)) {
        const Torv::Variant entry = Torv::Json::parse(line);
        RealJob job;
        job.name = entry["file"].toString();
        job.path = folder() + '/' + job.name;
        job.bytes = Torv::Data::FileReader::load(job.path);
        job.expect = entry["expect"];
        job.size = entry["size"].toInt64();
        loaded.push_back(std::move(job));
    }
    return loaded;
}

} // namespace

std::string folder()
{
    for (const char* variable : variables) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return std::filesystem::exists(listOf(value)) ? value : "";
    }
    return "";
}

const std::vector<RealJob>& jobs()
{
    static const std::vector<RealJob> loaded = load();
    return loaded;
}

} // namespace Corpus
