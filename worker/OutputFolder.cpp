#include "worker/OutputFolder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "worker/WorkerException.h"

#include "Torv/SystemError.h"

namespace JobParser::Worker
{
namespace
{

[[noreturn]] void fail(const std::string& path, int error)
{
    throw WorkerException(ErrorCode::NoFile,
                          "Cannot write file | path=" + path + " | error=" + Torv::systemError(error));
}

} // namespace

OutputFolder::OutputFolder(const std::string& outPath)
    : m_path(outPath.substr(0, outPath.rfind('/') + 1) + ".zemjob-XXXXXX")
{
    if (::mkdtemp(m_path.data()) == nullptr) {
        const int error = errno;
        m_path.clear();
        fail(outPath, error);
    }
    m_path += '/';
}

OutputFolder::~OutputFolder()
{
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

void OutputFolder::publish(const std::string& outPath, int count) const
{
    if (count == 0) {
        if (std::rename((m_path + outputName).c_str(), outPath.c_str()) != 0)
            fail(outPath, errno);
        return;
    }
    std::vector<std::string> published;
    for (int number = 1; number <= count; ++number) {
        const std::string target = numberedPath(outPath, number);
        if (std::rename(numberedPath(m_path + outputName, number).c_str(), target.c_str()) != 0) {
            const int error = errno;
            for (const std::string& path : published)
                ::unlink(path.c_str());
            fail(target, error);
        }
        published.push_back(target);
    }
}

std::string numberedPath(const std::string& path, int number)
{
    const std::size_t name = path.rfind('/') + 1;
    const std::size_t dot = path.rfind('.');
    const std::size_t place = dot == std::string::npos || dot <= name ? path.size() : dot;
    return path.substr(0, place) + '-' + std::to_string(number) + path.substr(place);
}

} // namespace JobParser::Worker
