#include "tools/FileFinder.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

#include "Torv/GenericException.h"

namespace JobParser::Tool
{
namespace
{

bool isFolder(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// What the folder says of the entry, if it does; otherwise the file itself.
unsigned char typeOf(const dirent& entry, const std::string& path)
{
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type;
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        return DT_UNKNOWN;
    return static_cast<unsigned char>(IFTODT(status.st_mode));
}

bool isRegularBehindLink(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

FileFinder::FileFinder(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths)
        m_pending.push_back({path, isFolder(path) ? Kind::Folder : Kind::File});
    std::ranges::reverse(m_pending);
}

std::optional<FileFinder::Found> FileFinder::next()
{
    while (!m_pending.empty()) {
        const Entry entry = std::move(m_pending.back());
        m_pending.pop_back();
        if (entry.kind == Kind::File)
            return Found{entry.path, {}};
        try {
            std::vector<Entry> entries = entriesOf(entry.path);
            m_pending.insert(m_pending.end(), std::make_move_iterator(entries.rbegin()),
                             std::make_move_iterator(entries.rend()));
        } catch (const Torv::GenericException& error) {
            return Found{entry.path, error.what()};
        }
    }
    return std::nullopt;
}

std::vector<FileFinder::Entry> FileFinder::entriesOf(const std::string& folder)
{
    const auto fail = [&](int error) {
        throw Torv::GenericException("Cannot read folder | path=" + folder +
                                     " | error=" + std::generic_category().message(error));
    };
    const std::unique_ptr<DIR, int (*)(DIR*)> opened(::opendir(folder.c_str()), ::closedir);
    if (opened == nullptr)
        fail(errno);
    const std::string start = folder.ends_with('/') ? folder : folder + '/';
    std::vector<Entry> entries;
    while (true) {
        errno = 0;
        const dirent* const entry = ::readdir(opened.get());
        if (entry == nullptr)
            break;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        std::string path = start + std::string(name);
        const unsigned char type = typeOf(*entry, path);
        if (type == DT_DIR)
            entries.push_back({std::move(path), Kind::Folder});
        else if (type == DT_REG || (type == DT_LNK && isRegularBehindLink(path)))
            entries.push_back({std::move(path), Kind::File});
    }
    if (errno != 0)
        fail(errno);
    std::ranges::sort(entries, {}, &Entry::path);
    return entries;
}

} // namespace JobParser::Tool
