#include "worker/OutputFolder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "worker/WorkerException.h"

#include "Torv/SystemError.h"

namespace JobParser::Worker
{
namespace
{

constexpr const char* prefix = ".zemjob-";
constexpr const char* placeholder = "XXXXXX"; // As many characters as mkdtemp replaces.
// A folder that was just made may not be locked yet.
constexpr std::time_t longestWithoutLock = 60;

std::string folderOf(const std::string& outPath)
{
    return outPath.substr(0, outPath.rfind('/') + 1);
}

/// The folder, locked; not open if somebody else has it.
Descriptor lock(const std::string& path)
{
    Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder.isOpen() && ::flock(folder.get(), LOCK_EX | LOCK_NB) != 0)
        folder.close();
    return folder;
}

bool isOld(const Descriptor& folder)
{
    struct stat facts {
    };
    return ::fstat(folder.get(), &facts) == 0 && facts.st_uid == ::geteuid() &&
           facts.st_mtime < std::time(nullptr) - longestWithoutLock;
}

[[noreturn]] void fail(const std::string& path, const std::string& reason)
{
    throw WorkerException(ErrorCode::NoFile, "Cannot write file | path=" + path + " | error=" + reason);
}

[[noreturn]] void fail(const std::string& path, int error)
{
    fail(path, Torv::systemError(error));
}

/// A file that is moved to the path of a device or a pipe would take its place.
void requireReplaceable(const std::string& outPath)
{
    struct stat facts {
    };
    if (::stat(outPath.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode))
        fail(outPath, "Not a regular file");
}

} // namespace

OutputFolder::OutputFolder(const std::string& outPath) : m_path(folderOf(outPath) + prefix + placeholder)
{
    requireReplaceable(outPath);
    if (::mkdtemp(m_path.data()) == nullptr)
        fail(outPath, errno);
    m_lock = lock(m_path);
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

void removeRemains(const std::string& outPath)
{
    const std::string folder = folderOf(outPath);
    const std::size_t length = std::string_view(prefix).size() + std::string_view(placeholder).size();
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error), end;
         !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.size() != length || !name.starts_with(prefix))
            continue;
        const Descriptor remains = lock(entry->path().string());
        std::error_code ignored;
        if (remains.isOpen() && isOld(remains))
            std::filesystem::remove_all(entry->path(), ignored);
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
